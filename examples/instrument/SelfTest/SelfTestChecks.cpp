#include "examples/instrument/SelfTest/SelfTestChecks.h"

#include "platform/VQMProperties.h"

#include <QFileInfo>

#include <filesystem>

namespace Orvia {

namespace {

constexpr std::uintmax_t requiredDiskBytes = 1 << 20;
constexpr auto earliestDate = std::chrono::sys_days(std::chrono::year(2020) / 1 / 1);

void fail(SelfTestResult *result, SelfTestFault fault, const QString &reason)
{
    result->faults |= fault;
    result->reasons.append(reason);
}

void checkDatabase(SettingsDatabase &settings, const SelfTestSubject &subject, SelfTestResult *result)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(subject.now.time_since_epoch());
    if (!settings.set({{"selftest/last", std::to_string(seconds.count())}}))
        fail(result, DatabaseFault, "settings cannot be written");
}

void checkDisk(const SelfTestSubject &subject, SelfTestResult *result)
{
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(subject.folder, error);
    if (error)
        fail(result, DiskFault, QString::fromStdString(subject.folder + ": " + error.message()));
    else if (space.available < subject.requiredBytes)
        fail(result, DiskFault, QString("%1 bytes left on the disk").arg(space.available));
}

void checkClock(const SelfTestSubject &subject, SelfTestResult *result)
{
    if (subject.now < earliestDate)
        fail(result, ClockFault, "the date is before 2020");
}

} // namespace

SelfTestSubject SelfTestSubject::thisInstrument()
{
    return {VQMProperties::directory().toStdString(), std::chrono::system_clock::now(), requiredDiskBytes};
}

SelfTestResult runSelfTest(SettingsDatabase &settings, const SelfTestSubject &subject)
{
    SelfTestResult result;
    checkDatabase(settings, subject, &result);
    checkDisk(subject, &result);
    checkClock(subject, &result);
    return result;
}

} // namespace Orvia
