#include "xmlconfig/RunReader.h"

#include "platform/CUtilXmlEvntHdlr.h"
#include "platform/TraceSpan.h"

#include <QFile>
#include <QXmlInputSource>

namespace Orvia {

namespace {

bool parse(CUtilXmlEvntHdlr *reader, QFile *file)
{
    if (file->size() > maxDocumentSize) {
        const QString tooLong = QStringLiteral("the document has %1 bytes, %2 at most are read");
        reader->fatalError(QXmlParseException(tooLong.arg(file->size()).arg(maxDocumentSize), 1, 1));
        return false;
    }
    const QXmlInputSource source(file);
    return reader->parse(&source);
}

} // namespace

bool runReader(CUtilXmlEvntHdlr *reader, const char *fileName)
{
    TraceSpan span("read", fileName != nullptr ? fileName : "");
    try {
        QFile file((QString(fileName)));
        if (!file.open(QIODevice::ReadOnly)) {
            span.setOutcome(file.errorString().toStdString());
            return false;
        }
        reader->setModuleName("MainStartup");
        reader->setFileName(file.fileName());
        if (parse(reader, &file))
            return true;
        span.setOutcome("failed");
    } catch (...) {
        span.setThrown(std::current_exception());
    }
    return false;
}

} // namespace Orvia
