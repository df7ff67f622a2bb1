#include "diagnosis/ModuleInspection.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Orvia {

namespace {

constexpr int exitClean = 0;
constexpr int exitDefects = 1;
constexpr int exitNotChecked = 2;
constexpr const char *exitCodes = "\nExit codes:\n"
                                  "  0  no defects\n"
                                  "  1  defects found\n"
                                  "  2  wrong command line, or a module could not be run\n";
constexpr double maxTimeout = 3600; // seconds

struct Options
{
    QStringList files;
    bool run = false;
    bool json = false;
    std::chrono::milliseconds timeout{};
};

/// All that is known of one file.
struct Inspection
{
    QString path;
    FileInspection file;
    std::optional<ModuleProbe> probe;
    Findings findings; ///< of both
};

bool isSaid(const Findings &findings, const QString &rule)
{
    return std::any_of(findings.begin(), findings.end(),
                       [&](const Finding &finding) { return finding.rule == rule; });
}

Inspection inspect(const QString &path, const Options &options)
{
    Inspection inspection{path, inspectModuleFile(path), std::nullopt, {}};
    inspection.findings = inspection.file.findings;
    if (!options.run || !inspection.file.isLibrary)
        return inspection;
    inspection.probe = probeModule(path, options.timeout);
    for (const Finding &finding : std::as_const(inspection.probe->findings)) {
        if (!isSaid(inspection.file.findings, finding.rule))
            inspection.findings.append(finding);
    }
    if (inspection.file.note && inspection.probe->record)
        inspection.findings += compareWithNote(path, *inspection.file.note, *inspection.probe->record);
    return inspection;
}

QString versionText(const ModuleProbe::Version &version)
{
    return QString("%1.%2.%3").arg(version.major).arg(version.minor).arg(version.build);
}

QString hexadecimal(std::uint32_t bits)
{
    return "0x" + QString::number(bits, 16);
}

QString nameText(const QString &name)
{
    return name.isNull() ? "without a name" : '"' + name + '"';
}

void print(const QString &line)
{
    std::fputs((line + '\n').toLocal8Bit().constData(), stdout);
}

QString inWords(const ModuleProbe::Record &record)
{
    return nameText(record.name) + ", type " + hexadecimal(static_cast<std::uint32_t>(record.moduleType)) +
           QString(", id %1, version ").arg(record.defaultId) + versionText(record.version) + ", parts " +
           hexadecimal(static_cast<std::uint32_t>(record.parts)) + ", families " +
           hexadecimal(record.families);
}

void printText(const Inspection &inspection)
{
    const FileInspection &file = inspection.file;
    if (!file.kind.isEmpty())
        print(inspection.path + ": " + file.kind +
              (file.needed.isEmpty() ? QString() : ", needs " + file.needed.join(' ')));
    if (file.note)
        print(inspection.path + ": module note: contract " + QString::number(file.note->contractVersion) +
              ", " + inWords(file.note->record));
    else if (file.isLibrary)
        print(inspection.path + ": no note");
    if (inspection.probe && inspection.probe->record)
        print(inspection.path + ": record: " + inWords(*inspection.probe->record));
    for (const Finding &finding : inspection.findings)
        print(toText(finding));
}

QJsonValue jsonName(const QString &name)
{
    return name.isNull() ? QJsonValue() : QJsonValue(name);
}

QJsonObject toJson(const ModuleProbe::Record &record)
{
    return {{"name", jsonName(record.name)}, {"version", versionText(record.version)},
            {"id", record.defaultId},        {"type", record.moduleType},
            {"parts", record.parts},         {"families", static_cast<qint64>(record.families)}};
}

QJsonValue toJson(const std::optional<ModuleNote> &note)
{
    if (!note)
        return QJsonValue();
    QJsonObject json = toJson(note->record);
    json["contract"] = note->contractVersion;
    return json;
}

QJsonObject toJson(const ModuleProbe &probe)
{
    QJsonObject json{{"complete", probe.complete}};
    if (probe.record)
        json["record"] = toJson(*probe.record);
    if (const auto &object = probe.object) {
        const auto &version = object->interfaceVersion;
        json["object"] =
            QJsonObject{{"name", jsonName(object->name)},
                        {"handedId", object->handedId},
                        {"id", object->id},
                        {"interfaceVersion", version ? QJsonValue(versionText(*version)) : QJsonValue()}};
    }
    return json;
}

QJsonObject toJson(const Inspection &inspection)
{
    QJsonArray findings;
    for (const Finding &finding : inspection.findings)
        findings.append(toJson(finding));
    QJsonObject json{{"file", inspection.path},
                     {"isLibrary", inspection.file.isLibrary},
                     {"kind", inspection.file.kind},
                     {"needed", QJsonArray::fromStringList(inspection.file.needed)},
                     {"note", toJson(inspection.file.note)},
                     {"findings", findings}};
    if (inspection.probe)
        json["run"] = toJson(*inspection.probe);
    return json;
}

/// Fills in the options; returns what is wrong with them, empty when nothing is.
QString readOptions(const QCommandLineParser &parser, Options *options)
{
    options->files = parser.positionalArguments();
    options->run = parser.isSet("run");
    options->json = parser.isSet("json");
    if (options->files.isEmpty())
        return "no file given";
    bool isNumber = false;
    const double seconds = parser.value("timeout").toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0.001 && seconds <= maxTimeout))
        return QString("--timeout %1: not a number of seconds from 0.001 to %2")
            .arg(parser.value("timeout"))
            .arg(maxTimeout);
    options->timeout = std::chrono::milliseconds(std::lround(seconds * 1000));
    return QString();
}

int inspectAll(const Options &options)
{
    Findings all;
    QJsonArray files;
    for (const QString &path : options.files) {
        const Inspection inspection = inspect(path, options);
        all += inspection.findings;
        if (options.json)
            files.append(toJson(inspection));
        else
            printText(inspection);
    }
    const int defects = countDefects(all);
    const int notes = static_cast<int>(all.size()) - defects;
    if (options.json)
        print(QJsonDocument(QJsonObject{{"files", files}, {"defects", defects}, {"notes", notes}}).toJson());
    else
        print(QString("vqm-modinfo: files: %1, defects: %2, notes: %3")
                  .arg(options.files.size())
                  .arg(defects)
                  .arg(notes));
    return isSaid(all, notProbedRule) ? exitNotChecked : defects > 0 ? exitDefects : exitClean;
}

int run(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Tells what module libraries are and what is wrong with them.");
    parser.addPositionalArgument("file", "Module libraries.", "FILE...");
    parser.addOptions({
        {"run", "Also load each in a process of its own, ask it, and close it."},
        {"timeout", "With --run: how long one step may take. Default: 10.", "seconds", "10"},
        {"json", "Print one JSON document."},
        {"help", "Print this help."},
    });
    Options options;
    QString problem;
    if (!parser.parse(arguments))
        problem = parser.errorText();
    else if (parser.isSet("help"))
        return std::fputs((parser.helpText() + exitCodes).toLocal8Bit().constData(), stdout), exitClean;
    else
        problem = readOptions(parser, &options);
    if (problem.isEmpty())
        return inspectAll(options);
    std::fputs(("vqm-modinfo: " + problem + " (--help tells more)\n").toLocal8Bit().constData(), stderr);
    return exitNotChecked;
}

} // namespace

} // namespace Orvia

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return Orvia::run(QCoreApplication::arguments());
}
