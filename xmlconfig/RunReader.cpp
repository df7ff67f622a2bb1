#include "xmlconfig/RunReader.h"

#include "platform/CUtilXmlEvntHdlr.h"
#include "platform/TraceSpan.h"

#include <QFile>
#include <QXmlInputSource>

namespace Orvia {

bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName)
{
    TraceSpan span("read", fileName != nullptr ? fileName : "");
    try {
        QFile file((QString(fileName)));
        if (!file.open(QIODevice::ReadOnly)) {
            span.setOutcome(file.errorString().toStdString());
            return false;
        }
        const QXmlInputSource source(&file);
        reader->setModuleName("MainStartup");
        reader->setFileName(file.fileName());
        if (reader->parse(&source))
            return true;
        span.setOutcome("failed");
    } catch (...) {
        span.setThrown(std::current_exception());
    }
    return false;
}

} // namespace Orvia
