#include "tools/analyze/Reports.h"
#include "tools/analyze/TraceFile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace {

using namespace Orvia;

enum ExitCode
{
    WentWell = 0,
    DidNotGoWell = 1,
    Unusable = 2,
};

enum class Command
{
    Summary,
    Blame,
    CriticalPath,
    Svg,
    Json,
};

struct CommandName
{
    Command command;
    const char *name;
    const char *help;
};

constexpr CommandName commands[] = {
    {Command::Summary, "summary",
     "how many modules are up, what became of the others, how the run ended; the default"},
    {Command::Blame, "blame", "the modules, slowest first, with the time in each operation"},
    {Command::CriticalPath, "critical-path",
     "what decided when start-up was over, and which thread waited for which"},
    {Command::Svg, "svg", "a chart"},
    {Command::Json, "json", "for viewers of Chrome's trace event format, such as Perfetto"},
};

int fail(const QString &problem)
{
    std::fputs(("vqm-startup-analyze: " + problem + '\n').toLocal8Bit().constData(), stderr);
    return Unusable;
}

void declareOptions(QCommandLineParser *parser)
{
    parser->setApplicationDescription(
        "Tells from the trace of a start-up (mainstartup --trace FILE) what it did.");
    parser->addOptions({
        {"output", "Write to this file instead of standard output.", "file"},
        {"all", "svg: the shutdown too."},
        {"help", "Print this help."},
    });
    QString help;
    for (const CommandName &row : commands)
        help += QStringLiteral("%1: %2\n").arg(row.name, row.help);
    parser->addPositionalArgument("command", help.trimmed(), "[command]");
    parser->addPositionalArgument("file", "The trace.");
}

const CommandName *commandNamed(const QString &name)
{
    for (const CommandName &row : commands) {
        if (name == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

QByteArray reportOf(const StartupRecord &record, Command command, bool all)
{
    switch (command) {
    case Command::Summary:
        return QByteArray::fromStdString(runSummary(record));
    case Command::Blame:
        return QByteArray::fromStdString(blame(record));
    case Command::CriticalPath:
        return QByteArray::fromStdString(criticalPath(record));
    case Command::Svg:
        return chart(record, all);
    case Command::Json:
        break;
    }
    return chromeTrace(record);
}

/// Returns what went wrong, empty when nothing did.
QString write(const QByteArray &report, const QString &fileName)
{
    if (!fileName.isEmpty()) {
        QSaveFile file(fileName);
        const bool written =
            file.open(QIODevice::WriteOnly) && file.write(report) == report.size() && file.commit();
        return written ? QString() : fileName + ": " + file.errorString();
    }
    QFile output;
    const bool written =
        output.open(stdout, QIODevice::WriteOnly) && output.write(report) == report.size() && output.flush();
    return written ? QString() : "standard output: " + output.errorString();
}

int run(const QStringList &arguments)
{
    QCommandLineParser parser;
    declareOptions(&parser);
    if (!parser.parse(arguments))
        return fail(parser.errorText() + " (--help tells more)");
    if (parser.isSet("help")) {
        const QString help =
            parser.helpText() +
            "\nExit codes:\n  0  the start-up went well\n  1  it did not, or did not end in order\n"
            "  2  wrong command line, file unreadable or no trace\n";
        std::fputs(help.toLocal8Bit().constData(), stdout);
        return WentWell;
    }
    QStringList positional = parser.positionalArguments();
    const CommandName *command = commands;
    if (positional.size() == 2 || (positional.size() == 1 && !QFileInfo::exists(positional.first()) &&
                                   commandNamed(positional.first()) != nullptr)) {
        command = commandNamed(positional.first());
        if (command == nullptr)
            return fail("unknown command '" + positional.first() + "' (--help tells more)");
        positional.removeFirst();
    }
    if (positional.size() != 1)
        return fail(QString(positional.isEmpty() ? "no trace given" : "too many arguments") +
                    " (--help tells more)");
    if (parser.isSet("output") && parser.value("output").isEmpty())
        return fail("--output: the name is empty");

    StartupRecord record(StartupRecord::OwnSpans::Keep);
    QString problem = readTrace(positional.first(), &record);
    if (problem.isEmpty())
        problem = write(reportOf(record, command->command, parser.isSet("all")), parser.value("output"));
    if (!problem.isEmpty())
        return fail(problem);
    return record.wentWell() && record.exitCode() ? WentWell : DidNotGoWell;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return run(QCoreApplication::arguments());
}
