#pragma once

#include "examples/instrument/SettingsDatabase.h"

#include <QStringList>

#include <chrono>
#include <string>

namespace Orvia {

/// Bits of the self-test's result.
enum SelfTestFault
{
    DatabaseFault = 1,
    DiskFault = 2,
    ClockFault = 4,
};

struct SelfTestResult
{
    int faults = 0;      ///< SelfTestFault bits, 0 is all well
    QStringList reasons; ///< one for each fault
};

/// What a run of the self-test looks at; the defaults are the instrument itself.
struct SelfTestSubject
{
    std::string folder; ///< where the database lies
    std::chrono::system_clock::time_point now;
    std::uintmax_t requiredBytes;

    static SelfTestSubject thisInstrument();
};

/// Checks that settings can be written, that there is room left on their disk and that the clock is set.
/// Takes as long as one transaction. Any thread.
SelfTestResult runSelfTest(SettingsDatabase &settings,
                           const SelfTestSubject &subject = SelfTestSubject::thisInstrument());

} // namespace Orvia
