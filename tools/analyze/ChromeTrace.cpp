#include "tools/analyze/Reports.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace Orvia {

namespace {

constexpr int process = 1;

/// The trace has the local encoding of the instrument; what is not UTF-8 in it is replaced.
QString text(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

QJsonObject event(const char *phase, int thread, const QString &name)
{
    return {{"ph", phase}, {"pid", process}, {"tid", thread}, {"name", name}};
}

QJsonObject nameEvent(const char *kind, int thread, const QString &name)
{
    QJsonObject object = event("M", thread, kind);
    object["args"] = QJsonObject{{"name", name}};
    return object;
}

QJsonObject spanEvent(const StartupRecord &record, const StartupRecord::Span &span)
{
    QJsonObject object =
        event(span.isOpen() ? "B" : "X", record.threads()[span.thread].id, text(inWords(span)));
    const std::string_view operation = operationName(span.operation);
    object["cat"] = operation.empty() ? QStringLiteral("module") : text(operation);
    object["ts"] = static_cast<qint64>(span.begin);
    if (!span.isOpen())
        object["dur"] = static_cast<qint64>(span.end - span.begin);
    QJsonObject arguments;
    if (span.module >= 0)
        arguments["path"] = text(record.modules()[span.module].path);
    if (!span.result.empty())
        arguments["result"] = text(span.result);
    object["args"] = arguments;
    return object;
}

} // namespace

QByteArray chromeTrace(const StartupRecord &record)
{
    QJsonArray events{nameEvent("process_name", 0, "start-up")};
    for (const StartupRecord::Thread &thread : record.threads())
        events.append(nameEvent("thread_name", thread.id, text(thread.name)));
    for (const StartupRecord::Span &span : record.spans())
        events.append(spanEvent(record, span));
    for (const StartupRecord::Stage &stage : record.stages()) {
        QJsonObject object = event("i", record.threads()[stage.thread].id, text("stage " + stage.name));
        object["ts"] = static_cast<qint64>(stage.time);
        object["s"] = "p"; // across all threads
        object["args"] = QJsonObject{{"parts", text(stage.parts)}};
        events.append(object);
    }
    return QJsonDocument(QJsonObject{{"displayTimeUnit", "ms"}, {"traceEvents", events}}).toJson();
}

} // namespace Orvia
