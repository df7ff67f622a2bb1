#include "launcher/CheckCommand.h"

#include "diagnosis/ConfigurationCheck.h"
#include "launcher/InstrumentSettings.h"
#include "launcher/Report.h"
#include "platform/HwAbstractionLayer.h"
#include "platform/VQMUtility.h"

#include <QJsonDocument>

#include <cstdio>
#include <unistd.h>

namespace Orvia {

namespace {

/// One line that is overwritten all the time; for people who wait.
void showProgress(int number, int count, const QString &module)
{
    std::fputs(QString("\x1b[K%1 of %2: %3\r").arg(number).arg(count).arg(module).toLocal8Bit().constData(),
               stderr);
}

void print(const CheckReport &report, bool asJson, bool withPlan)
{
    QByteArray text;
    if (asJson) {
        text = QJsonDocument(toJson(report)).toJson();
    } else {
        for (const Finding &finding : report.findings)
            text += toText(finding).toLocal8Bit() + '\n';
        if (report.plan && withPlan)
            text += toText(*report.plan).toLocal8Bit();
        if (report.failure.isEmpty())
            text += summary(report).toLocal8Bit() + '\n';
    }
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
}

CheckReport check(const CommandLine &commandLine)
{
    CheckRequest request;
    request.file = commandLine.check;
    request.probe = commandLine.probe;
    CheckReport failed;
    failed.file = request.file;
    failed.failure = loadProperties(commandLine, request.file);
    QString familyError;
    request.family = instrumentFamily(commandLine, &familyError);
    if (failed.failure.isEmpty() && request.probe)
        failed.failure = familyError;
    if (!failed.failure.isEmpty())
        return failed;
    HwAbstractionLayer::createHostRepository();
    request.gui = VQMUtility::isGuiEnabled();
    const bool hasViewer = request.probe && isatty(STDERR_FILENO) != 0;
    if (hasViewer)
        request.progress = showProgress;
    CheckReport report = checkConfiguration(request);
    if (hasViewer)
        std::fputs("\x1b[K", stderr);
    return report;
}

} // namespace

int runCheck(const CommandLine &commandLine)
{
    const CheckReport result = check(commandLine);
    print(result, commandLine.json, commandLine.probe);
    if (!result.failure.isEmpty()) {
        report(result.failure);
        return static_cast<int>(CheckExitCode::NotChecked);
    }
    return static_cast<int>(countDefects(result.findings) == 0 ? CheckExitCode::Clean
                                                               : CheckExitCode::Defects);
}

} // namespace Orvia
