#include "xmlconfig/CXmlParseLanguages.h"

#include "platform/VQMUtility.h"
#include "xmlconfig/RunReader.h"

#include <QFileInfo>

#include <iterator>

namespace Orvia {

namespace {

using Reader = CXmlParseLanguages;
using Frame = CUtilXmlEvntHdlr;

const Frame::TableEntry languageElements[] = {
    {"Directory", static_cast<Frame::Handler>(&Reader::elemRclDirectory)},
    {"Instrument", &Frame::elemRclInstrument},
    {"Language", static_cast<Frame::Handler>(&Reader::elemRclLanguage)},
    {"Languages", static_cast<Frame::Handler>(&Reader::elemRclLanguages)},
    {"Module", &Frame::elemRclModule},
    {"Root", &Frame::elemRclRoot},
    {"Startup", static_cast<Frame::Handler>(&Reader::elemRclStartup)},
};

} // namespace

const QString fileExtension = "qm";
const QString languageDir = "Languages";

CXmlParseLanguages::CXmlParseLanguages() = default;
CXmlParseLanguages::~CXmlParseLanguages() = default;

bool CXmlParseLanguages::parseProperties(const char *fileName)
{
    CXmlParseLanguages reader;
    reader.useElementTable();
    return runReader(&reader, fileName);
}

void CXmlParseLanguages::useElementTable()
{
    setElemTbl(std::size(languageElements), languageElements);
}

int CXmlParseLanguages::elemRclStartup(const QString &, const QXmlAttributes &, bool start)
{
    return levelOnly("Startup", start);
}

int CXmlParseLanguages::elemRclLanguages(const QString &, const QXmlAttributes &, bool start)
{
    if (start)
        return incrLevel("Languages") ? startLanguages() : 0;
    decrLevel();
    return 0;
}

int CXmlParseLanguages::elemRclDirectory(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (start)
        return incrLevel("Directory") ? startDirectory(attributes) : 0;
    decrLevel();
    return 0;
}

int CXmlParseLanguages::elemRclLanguage(const QString &, const QXmlAttributes &attributes, bool start)
{
    if (start)
        return incrLevel("Language") ? startLanguage(attributes) : 0;
    decrLevel();
    return 0;
}

int CXmlParseLanguages::startLanguages()
{
    if (!isLevel(-1, "Startup"))
        return 1;
    m_languages = new std::map<QString, QString>;
    VQMUtility::setLanguageList(m_languages);
    return 0;
}

int CXmlParseLanguages::startDirectory(const QXmlAttributes &attributes)
{
    if (!isLevel(-1, "Languages"))
        return 1;
    const int directory = attributes.index(QStringLiteral("nameLinux"));
    if (directory >= 0)
        m_directory = attributes.value(directory);
    return 0;
}

int CXmlParseLanguages::startLanguage(const QXmlAttributes &attributes)
{
    if (m_languages == nullptr || !isLevel(-1, "Directory"))
        return 1;
    const int name = attributes.index(QStringLiteral("name"));
    const QString path = attributes.value("path");
    if (name < 0 || path.isEmpty())
        return 0;
    const QString separator = m_directory.endsWith('/') ? "" : "/";
    const QFileInfo file(m_directory + separator + path);
    if (file.isFile() && file.suffix() == fileExtension)
        (*m_languages)[attributes.value(name)] = file.absoluteFilePath();
    return 0;
}

} // namespace Orvia
