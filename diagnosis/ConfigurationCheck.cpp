#include "diagnosis/ConfigurationCheck.h"

#include "diagnosis/ConfigurationReaders.h"
#include "diagnosis/ConfigurationScanner.h"
#include "diagnosis/RecordChecks.h"
#include "xmlconfig/RunReader.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <utility>

namespace Orvia {

namespace {

constexpr std::chrono::seconds probeLimit(10);

/// Empty when the file can be read, else why not.
QString readDocument(const QString &fileName, QByteArray *document)
{
    QFile file(fileName);
    if (file.exists() && !QFileInfo(fileName).isFile())
        return QStringLiteral("is no regular file");
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    if (file.size() > maxDocumentSize)
        return QStringLiteral("has %1 bytes, %2 at most are read").arg(file.size()).arg(maxDocumentSize);
    *document = file.readAll();
    return file.error() == QFileDevice::NoError ? QString() : file.errorString();
}

/// The findings about a module file, at its place in the configuration.
void addModuleFindings(CheckReport *report, const Findings &findings,
                       const ConfigurationSections::ModuleFile &file)
{
    for (Finding finding : findings) {
        const QString name = QFileInfo(file.path).fileName();
        finding.text = (name.isEmpty() ? file.path : name) + ": " + finding.text;
        finding.file = report->file;
        finding.line = file.line;
        finding.column = file.column;
        if (finding.rule == unknownTypeRule) // dropped without an error, as one of another family is
            finding.severity = Finding::Severity::Note;
        report->findings.append(finding);
    }
}

/// What the module's note says, as the probe would say it if the note is true.
ModuleProbe foretold(const ModuleNote &note, const QString &path)
{
    ModuleProbe probe;
    probe.record = note.record;
    probe.object = ModuleProbe::Object{note.record.defaultId, note.record.defaultId, note.record.name, {}};
    probe.findings = checkRecord(path, note.record);
    return probe;
}

void checkModules(const CheckRequest &request, const QList<ConfigurationSections::ModuleFile> &files,
                  CheckReport *report)
{
    QList<PlanCandidate> candidates;
    bool canPlan = request.family && (request.probe || !files.isEmpty());
    int number = 0;
    for (const ConfigurationSections::ModuleFile &file : files) {
        const QFileInfo info(file.path);
        if (request.progress)
            request.progress(++number, static_cast<int>(files.size()), info.fileName());
        if (!info.exists() || info.baseName() == skippedBaseName)
            continue;
        CheckReport::Module module{file.path, inspectModuleFile(file.path), std::nullopt};
        addModuleFindings(report, module.inspection.findings, file);
        const std::optional<ModuleNote> &note = module.inspection.note;
        ModuleProbe known;
        if (request.probe && module.inspection.isLibrary) {
            module.probe = known = probeModule(file.path, probeLimit);
            if (note && known.record)
                known.findings += compareWithNote(file.path, *note, *known.record);
            for (const Finding &finding : std::as_const(known.findings)) {
                if (finding.rule == notProbedRule)
                    report->failure = finding.text;
            }
        } else if (note) {
            known = foretold(*note, file.path);
        } else if (module.inspection.isLibrary) {
            canPlan = false; // nobody knows what it is
        }
        addModuleFindings(report, known.findings, file);
        candidates.append({file.path, file.line, file.column, known});
        report->modules.append(module);
    }
    if (canPlan && report->failure.isEmpty())
        report->plan =
            makeStartPlan(report->file, candidates, *request.family, request.gui, &report->findings);
}

QJsonArray versionNumbers(const ModuleProbe::Version &version)
{
    return {version.major, version.minor, version.build};
}

QJsonObject toJson(const ModuleProbe &probe)
{
    QJsonObject object{{"complete", probe.complete}};
    if (probe.record)
        object["record"] = QJsonObject{{"version", versionNumbers(probe.record->version)},
                                       {"name", probe.record->name},
                                       {"defaultId", probe.record->defaultId},
                                       {"moduleType", probe.record->moduleType},
                                       {"parts", probe.record->parts},
                                       {"families", static_cast<qint64>(probe.record->families)}};
    if (probe.object) {
        QJsonObject answers{
            {"handedId", probe.object->handedId}, {"id", probe.object->id}, {"name", probe.object->name}};
        if (probe.object->interfaceVersion)
            answers["interfaceVersion"] = versionNumbers(*probe.object->interfaceVersion);
        object["object"] = answers;
    }
    return object;
}

QJsonObject toJson(const std::map<QString, QString> &values)
{
    QJsonObject object;
    for (const auto &[key, value] : values)
        object[key] = value;
    return object;
}

QJsonArray toJson(const QList<CheckReport::Module> &modules)
{
    QJsonArray array;
    for (const CheckReport::Module &module : modules) {
        QJsonObject object{{"path", module.path},
                           {"isLibrary", module.inspection.isLibrary},
                           {"needed", QJsonArray::fromStringList(module.inspection.needed)}};
        if (module.probe)
            object["probe"] = toJson(*module.probe);
        array.append(object);
    }
    return array;
}

qsizetype countNotes(const CheckReport &report)
{
    return report.findings.size() - countDefects(report.findings);
}

/// "1 note", "2 notes".
QString counted(qsizetype number, const char *what)
{
    return QString::number(number) + ' ' + what + (number == 1 ? "" : "s");
}

} // namespace

CheckReport checkConfiguration(const CheckRequest &request)
{
    CheckReport report;
    report.file = request.file;
    QByteArray document;
    if (const QString reason = readDocument(request.file, &document); !reason.isEmpty()) {
        report.failure = request.file + ": " + reason;
        report.findings.append({Finding::Severity::Defect, "unreadable", request.file, 0, 0, reason});
        return report;
    }
    ConfigurationScanner scanner(request.file);
    scanner.scan(document);
    report.findings = scanner.findings();
    report.contents = scanner.expected();
    const QString difference = firstDifference(report.contents, readConfiguration(request.file));
    if (!difference.isEmpty()) {
        report.failure = "the check and the readers disagree: " + difference;
        return report;
    }
    if (request.probe && !request.family)
        report.failure = "no plan can be made: the instrument family is not known";
    else
        checkModules(request, scanner.moduleFiles(), &report);
    std::stable_sort(report.findings.begin(), report.findings.end(),
                     [](const Finding &left, const Finding &right) {
                         return std::pair(left.line, left.column) < std::pair(right.line, right.column);
                     });
    return report;
}

QString summary(const CheckReport &report)
{
    const int defects = countDefects(report.findings);
    return QFileInfo(report.file).fileName() + ": " + (defects == 0 ? "clean" : counted(defects, "defect")) +
           ", " + counted(report.contents.files.size(), "file") + ", " + counted(countNotes(report), "note");
}

QJsonObject toJson(const CheckReport &report)
{
    QJsonArray findings;
    for (const Finding &finding : report.findings)
        findings.append(toJson(finding));
    QJsonObject object{{"file", report.file},
                       {"findings", findings},
                       {"files", QJsonArray::fromStringList(report.contents.files)},
                       {"languages", toJson(report.contents.languages)},
                       {"menu", toJson(report.contents.menu)},
                       {"modules", toJson(report.modules)},
                       {"plan", report.plan ? QJsonValue(toJson(*report.plan)) : QJsonValue()},
                       {"defects", countDefects(report.findings)},
                       {"notes", countNotes(report)}};
    if (!report.failure.isEmpty())
        object["failure"] = report.failure;
    return object;
}

} // namespace Orvia
