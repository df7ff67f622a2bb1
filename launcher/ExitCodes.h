#pragma once

#include <atomic>

namespace Orvia {

/// How mainstartup ends.
enum class ExitCode : int
{
    AllWell = 0,
    OutOfMemory = 1,
    Usage = 2,
    Configuration = 3,
    AnotherInstance = 4,
    ModuleFailed = 5,
    StageNotReached = 6,
    NoScreenshot = 7,
    Incomplete = 8,
};

struct ExitCodeMeaning
{
    ExitCode code;
    const char *text;
};

/// What --help prints.
inline constexpr ExitCodeMeaning exitCodes[] = {
    {ExitCode::AllWell, "all well"},
    {ExitCode::OutOfMemory, "not enough memory to start"},
    {ExitCode::Usage, "wrong command line"},
    {ExitCode::Configuration,
     "configuration: properties unreadable, no module listed, or the installation is "
     "incomplete"},
    {ExitCode::AnotherInstance, "another instance is running with the same configuration"},
    {ExitCode::ModuleFailed, "a module failed or threw"},
    {ExitCode::StageNotReached, "start-up was over without the stage given with --until"},
    {ExitCode::NoScreenshot, "the picture asked for with --screenshot could not be taken"},
    {ExitCode::Incomplete, "with --strict: start-up was not complete"},
};

/// How "mainstartup --check" ends.
enum class CheckExitCode : int
{
    Clean = 0,
    Defects = 1,
    NotChecked = 2,
};

struct CheckExitCodeMeaning
{
    CheckExitCode code;
    const char *text;
};

/// What --help prints.
inline constexpr CheckExitCodeMeaning checkExitCodes[] = {
    {CheckExitCode::Clean, "clean, notes at most"},
    {CheckExitCode::Defects, "defects found"},
    {CheckExitCode::NotChecked,
     "could not check: wrong command line, configuration or properties unreadable, "
     "or no family to plan for"},
};

/// The exit code of a run: the first problem noted. Any thread.
class ExitStatus
{
public:
    void note(ExitCode problem)
    {
        int none = 0;
        m_code.compare_exchange_strong(none, static_cast<int>(problem));
    }
    int code() const { return m_code; }

private:
    std::atomic<int> m_code = 0;
};

} // namespace Orvia
