#include "xmlconfig/RunReader.h"

#include "platform/CUtilXmlEvntHdlr.h"
#include "platform/VQMUtility.h"

#include <QFile>
#include <QXmlInputSource>

namespace Orvia {

bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName)
{
    try {
        QFile file((QString(fileName)));
        if (!file.open(QIODevice::ReadOnly)) {
            VQMUtility::traceMessage((file.fileName() + ": " + file.errorString()).toLatin1().constData());
            return false;
        }
        const QXmlInputSource source(&file);
        reader->setModuleName("MainStartup");
        reader->setFileName(file.fileName());
        return reader->parse(&source);
    } catch (...) {
        return false;
    }
}

} // namespace Orvia
