#include "launcher/CommandLine.h"

#include "Startup/Version.h"
#include "launcher/Report.h"

#include <QCommandLineParser>

#include <cstdio>

namespace Orvia {

namespace {

/// The stages that start-up can reach.
constexpr ESuStage reachableStages[] = {SuModulesFinished, SuLoadablesFinished, SuPluginsFinished,
                                        SuPluginLoadablesFinished, SuCompleteFinished};

QString listedStageNames()
{
    QStringList names;
    for (const ESuStage stage : reachableStages)
        names.append('"' + QString(stageText(stage)) + '"');
    return names.join(", ");
}

std::optional<ESuStage> stageNamed(const QString &name)
{
    for (const ESuStage stage : reachableStages) {
        if (name == QLatin1String(stageText(stage)))
            return stage;
    }
    return std::nullopt;
}

/// Takes out what VQMMainStartupImplementation::setProgArgument() reads, by its rule.
QStringList takeLoadList(int argc, char **argv, const char **loadList)
{
    QStringList others{"mainstartup"};
    for (int i = 1; i < argc; ++i) {
        const char *option = argv[i];
        if (i + 1 < argc && option[0] == '-' && (option[1] == 'l' || option[1] == 'L'))
            *loadList = argv[++i];
        else
            others.append(QString::fromLocal8Bit(option));
    }
    return others;
}

void declareOptions(QCommandLineParser *parser)
{
    parser->setApplicationDescription("Brings an instrument up from its module libraries; SIGINT or SIGTERM "
                                      "takes it down again.");
    // "l" never reaches the parser with its argument; declared for the help text.
    parser->addOptions({
        {"l", "The configuration: lists the module libraries to load. Required, but for --check.", "file"},
        {"properties", "Properties. Default: the configuration's name ending in .ini, if there is one.",
         "file"},
        {"family", "Instrument family, decimal or 0x... Default: property Instrument/Family.", "bits"},
        {"offscreen", "Everything runs, on a display that nobody sees."},
        {"headless", "No GUI: the Gui module stays down, alerts go to standard error."},
        {"until", "Shut down once start-up has reached this stage: " + listedStageNames() + '.', "stage"},
        {"screenshot", "Save a picture (PNG) of the main window once start-up is over.", "file"},
        {"skip", "Leave out this module file of the list; may be given several times.", "name"},
        {"strict",
         "Start-up that is not complete shows in the exit code: a module is missing or could not be "
         "opened, or the configuration is damaged."},
        {"trace", "Write a trace to this file.", "file"},
        {"check", "Start nothing: say what a start-up with this configuration would skip, refuse or fail at.",
         "file"},
        {"probe", "With --check: run each module for a moment, too, and print what start-up will do."},
        {"json", "With --check: print one JSON document."},
        {"version", "Print the version."},
        {"help", "Print this help."},
    });
}

void printHelp(const QCommandLineParser &parser)
{
    QString text = parser.helpText();
    text.replace("<executable_name>", "mainstartup"); // no application object exists yet
    text += "\nExit codes:\n";
    for (const ExitCodeMeaning &row : exitCodes)
        text += QString("  %1  %2\n").arg(static_cast<int>(row.code)).arg(row.text);
    text += "\nExit codes of --check:\n";
    for (const CheckExitCodeMeaning &row : checkExitCodes)
        text += QString("  %1  %2\n").arg(static_cast<int>(row.code)).arg(row.text);
    std::fputs(text.toLocal8Bit().constData(), stdout);
}

/// Fills in what belongs to --check; returns what is wrong with it, empty when nothing is.
QString readCheckOptions(const QCommandLineParser &parser, CommandLine *commandLine)
{
    const bool isCheck = parser.isSet("check");
    commandLine->check = parser.value("check");
    commandLine->probe = parser.isSet("probe");
    commandLine->json = parser.isSet("json");
    if (isCheck && commandLine->check.isEmpty())
        return "--check needs a configuration";
    if (isCheck && commandLine->loadList != nullptr)
        return "--check starts nothing: -l does not go with it";
    for (const char *option : {"offscreen", "headless", "until", "screenshot", "trace", "skip", "strict"}) {
        if (isCheck && parser.isSet(option))
            return QString("--check starts nothing: --") + option + " does not go with it";
    }
    for (const char *option : {"probe", "json"}) {
        if (!isCheck && parser.isSet(option))
            return QString("--") + option + " goes with --check only";
    }
    return QString();
}

/// Fills in the options; returns what is wrong with them, empty when nothing is.
QString readOptions(const QCommandLineParser &parser, CommandLine *commandLine)
{
    if (!parser.positionalArguments().isEmpty())
        return "unexpected argument '" + parser.positionalArguments().first() + '\'';
    if (QString problem = readCheckOptions(parser, commandLine); !problem.isEmpty())
        return problem;
    if (commandLine->check.isEmpty() && commandLine->loadList == nullptr)
        return "no configuration given: -l FILE is required";
    commandLine->properties = parser.value("properties");
    commandLine->trace = parser.value("trace");
    commandLine->screenshot = parser.value("screenshot");
    commandLine->skipped = parser.values("skip");
    commandLine->strict = parser.isSet("strict");
    commandLine->offscreen = parser.isSet("offscreen");
    commandLine->headless = parser.isSet("headless");
    if (parser.isSet("family")) {
        commandLine->family = parseFamily(parser.value("family"));
        if (!commandLine->family)
            return "--family " + parser.value("family") + ": not a bit set (decimal or 0x..., not 0)";
    }
    if (parser.isSet("until")) {
        commandLine->until = stageNamed(parser.value("until"));
        if (!commandLine->until)
            return "--until " + parser.value("until") + ": the stages are " + listedStageNames();
    }
    return QString();
}

} // namespace

std::optional<CommandLine> parseCommandLine(int argc, char **argv, ExitCode *exitCode)
{
    CommandLine commandLine;
    QCommandLineParser parser;
    declareOptions(&parser);
    QString problem;
    if (!parser.parse(takeLoadList(argc, argv, &commandLine.loadList)))
        problem = parser.errorText();
    else if (parser.isSet("help") || parser.isSet("version")) {
        if (parser.isSet("help"))
            printHelp(parser);
        else
            std::printf("mainstartup %s, built %s %s\n", VersionVersMain, VersionDateMain, VersionTimeMain);
        *exitCode = ExitCode::AllWell;
        return std::nullopt;
    } else
        problem = readOptions(parser, &commandLine);
    if (problem.isEmpty())
        return commandLine;
    report(problem + " (--help tells more)");
    *exitCode = ExitCode::Usage;
    return std::nullopt;
}

std::optional<HwESigGenFamily> parseFamily(const QString &text)
{
    bool isNumber = false;
    const bool hexadecimal = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const HwESigGenFamily family = text.toUInt(&isNumber, hexadecimal ? 16 : 10);
    if (!isNumber || family == 0)
        return std::nullopt;
    return family;
}

} // namespace Orvia
