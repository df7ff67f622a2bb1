#include "diagnosis/ModuleInspection.h"
#include "diagnosis/ProbeProcess.h"
#include "diagnosis/ProbeProtocol.h"
#include "diagnosis/RecordChecks.h"

#include <cstring>

namespace Orvia {

namespace {

using probe::Step;

/// Where the process was when it ended before its time, by step.
constexpr const char *places[] = {
    "while it is opened",
    "in VQMGetModuleInfo()",
    "in VQMCreateModuleInterfaceInstance()",
    "in getInterfaceVersion()",
    "in getModuleName()",
    "in getModuleId()",
    "while its object's type is read",
    "in its object's deleting destructor",
    "while it is closed",
};
static_assert(std::size(places) == std::size_t(Step::Count));

/// The words of a line after the first; absent ones read as nothing.
class Words
{
public:
    explicit Words(const QByteArray &line) : m_words(line.split(' ')) {}
    QByteArray at(int index) const { return m_words.value(index); }
    int number(int index) const { return at(index).toInt(); }
    /// Never null.
    QString text(int index) const
    {
        return "" + QString::fromLocal8Bit(QByteArray::fromPercentEncoding(at(index)));
    }
    ModuleProbe::Version version(int index) const
    {
        return {number(index), number(index + 1), number(index + 2)};
    }

private:
    const QList<QByteArray> m_words;
};

/// Puts together what the probe's lines say.
class ProbeReader
{
public:
    explicit ProbeReader(const QString &path) : m_path(path) {}

    void take(const Words &words);
    void add(Finding::Severity severity, const QString &rule, const QString &text)
    {
        m_result.findings.append({severity, rule, m_path, 0, 0, text});
    }
    /// The finding of a process that ended before it said so; no `end`: it did not end.
    void addEnd(const std::optional<ProbeProcess::End> &end, std::chrono::milliseconds limit);
    ModuleProbe result();

    int step() const { return m_step; }
    bool atEnd() const { return m_atEnd; }

private:
    QString m_path;
    ModuleProbe m_result;
    int m_step = -1;
    bool m_answersId = false;
    bool m_atEnd = false;
};

void ProbeReader::take(const Words &words)
{
    const QByteArray what = words.at(0);
    std::optional<ModuleProbe::Object> &object = m_result.object;
    if (what == "step" && words.number(1) > m_step && words.number(1) < int(Step::Count))
        m_step = words.number(1);
    else if (what == "record")
        m_result.record = {words.version(1), QString(),       words.number(4),
                           words.number(5),  words.number(6), words.at(7).toUInt()};
    else if (what == "record-name" && m_result.record)
        m_result.record->name = words.text(1);
    else if (what == "handed")
        object = {words.number(1), 0, QString(), std::nullopt};
    else if (what == "version" && object)
        object->interfaceVersion = words.version(1);
    else if (what == "name" && object)
        object->name = words.text(1);
    else if (what == "id" && object) {
        object->id = words.number(1);
        m_answersId = true;
    } else if (what == "defect" || what == "note")
        add(what == "note" ? Finding::Severity::Note : Finding::Severity::Defect, words.at(1), words.text(2));
    else if (what == "end")
        m_atEnd = true;
}

void ProbeReader::addEnd(const std::optional<ProbeProcess::End> &end, std::chrono::milliseconds limit)
{
    const QString place = places[std::max(m_step, 0)];
    const auto addDefect = [&](const char *rule, const QString &text) {
        add(Finding::Severity::Defect, rule, text + ' ' + place);
    };
    if (!end) {
        addDefect("hang", QString("is not done after %1 s").arg(double(limit.count()) / 1000));
    } else if (end->signal != 0) {
        const char *name = ::sigabbrev_np(end->signal);
        addDefect("crash", name != nullptr ? QString("dies of SIG") + name
                                           : QString("dies of signal %1").arg(end->signal));
    } else {
        addDefect("exit", QString("ends the process with exit code %1").arg(end->exitCode));
    }
}

ModuleProbe ProbeReader::result()
{
    Findings ofValues;
    if (m_result.record)
        ofValues += checkRecord(m_path, *m_result.record);
    if (m_answersId)
        ofValues += checkObject(m_path, *m_result.object);
    m_result.findings = ofValues + m_result.findings;
    m_result.complete = m_atEnd && m_result.object.has_value();
    return m_result;
}

} // namespace

ModuleProbe probeModule(const QString &path, std::chrono::milliseconds limit)
{
    ProbeReader reader(path);
    ProbeProcess process(path);
    if (!process.startError().isEmpty()) {
        reader.add(Finding::Severity::Defect, notProbedRule, process.startError());
        return reader.result();
    }
    auto deadline = ProbeProcess::Clock::now() + limit;
    while (!reader.atEnd()) {
        const std::optional<QByteArray> line = process.nextLine(deadline);
        if (!line)
            break;
        const int before = reader.step();
        reader.take(Words(*line));
        if (reader.step() != before)
            deadline = ProbeProcess::Clock::now() + limit;
    }
    const auto end = process.finish();
    if (!reader.atEnd())
        reader.addEnd(end, limit);
    return reader.result();
}

} // namespace Orvia
