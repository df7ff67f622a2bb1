#include "examples/instrument/SelfTest/SelfTestChecks.h"
#include "tests/instrument/FakeSettings.h"

#include <gmock/gmock.h>

#include <limits>

namespace Orvia {

TEST(SelfTest, EveryFaultHasItsBitAndReason)
{
    using namespace std::chrono;
    const auto firstDay = sys_days(year(2020) / 1 / 1);
    const SelfTestSubject healthy = {"/tmp", firstDay, 1};
    FakeSettings settings;
    EXPECT_EQ(runSelfTest(settings, healthy).faults, 0);
    EXPECT_EQ(settings.values.at("selftest/last"), "1577836800");

    SelfTestSubject subject = healthy;
    subject.now -= seconds(1);
    EXPECT_EQ(runSelfTest(settings, subject).faults, ClockFault);

    subject = healthy;
    subject.requiredBytes = std::numeric_limits<std::uintmax_t>::max();
    EXPECT_EQ(runSelfTest(settings, subject).faults, DiskFault);

    settings.diskFails = true;
    subject = {"/no/such/folder", firstDay - days(1), 1};
    const SelfTestResult result = runSelfTest(settings, subject);
    EXPECT_EQ(result.faults, DatabaseFault | DiskFault | ClockFault);
    EXPECT_EQ(result.reasons.size(), 3);
}

} // namespace Orvia
