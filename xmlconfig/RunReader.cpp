#include "xmlconfig/RunReader.h"

#include "platform/CUtilXmlEvntHdlr.h"

#include <QFile>
#include <QXmlInputSource>

namespace Orvia {

bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName)
{
    try {
        QFile file((QString(fileName)));
        const QXmlInputSource source(&file);
        reader->setModuleName("MainStartup");
        reader->setFileName(file.fileName());
        return reader->parse(&source);
    } catch (...) {
        return false;
    }
}

} // namespace Orvia
