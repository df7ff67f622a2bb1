#include "xmlconfig/CXmlParseMasterRegKeys.h"

#include "xmlconfig/RegKeyElement.h"
#include "xmlconfig/RunReader.h"

#include <iterator>

namespace Orvia {

namespace {

using Reader = CXmlParseMasterRegKeys;
using Frame = CUtilXmlEvntHdlr;

const Frame::TableEntry masterKeyElements[] = {
    {"Instrument", &Frame::elemRclInstrument},
    {"Module", &Frame::elemRclModule},
    {"RegKey", static_cast<Frame::Handler>(&Reader::elemRclRegKey)},
    {"Root", &Frame::elemRclRoot},
    {"Startup", static_cast<Frame::Handler>(&Reader::elemRclStartup)},
};

} // namespace

CXmlParseMasterRegKeys::CXmlParseMasterRegKeys() = default;
CXmlParseMasterRegKeys::~CXmlParseMasterRegKeys() = default;

bool CXmlParseMasterRegKeys::parseProperties(const char *fileName)
{
    CXmlParseMasterRegKeys reader;
    reader.useElementTable();
    return runReader(&reader, fileName);
}

void CXmlParseMasterRegKeys::useElementTable()
{
    setElemTbl(std::size(masterKeyElements), masterKeyElements);
}

int CXmlParseMasterRegKeys::elemRclStartup(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("Startup", start);
}

int CXmlParseMasterRegKeys::elemRclRegKey(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (!start)
        decrLevel();
    else if (incrLevel("RegKey") && hasReadableAttributes(attributes) && isLevel(-1, "Startup"))
        applyRegKey(attributes);
    return 0;
}

} // namespace Orvia
