#include "xmlconfig/RunReader.h"

#include "platform/CUtilXmlEvntHdlr.h"
#include "platform/TraceSpan.h"

#include <QFile>
#include <QXmlInputSource>

namespace Orvia {

namespace {

/// The document is read whole: a source that reads piece by piece takes bytes that are no text for others
/// where two pieces meet.
bool parse(CUtilXmlEvntHdlr *reader, QFile *file)
{
    qint64 size = file->size(); // 0 of a pipe, which may have no end
    QXmlInputSource source;
    if (size <= maxDocumentSize) {
        const QByteArray document = file->read(size > 0 ? size : maxDocumentSize + 1);
        size = document.size();
        source.setData(document);
    }
    if (size > maxDocumentSize) {
        const QString tooLong = QStringLiteral("the document has %1 bytes, %2 at most are read");
        reader->fatalError(QXmlParseException(tooLong.arg(size).arg(maxDocumentSize), 1, 1));
        return false;
    }
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
