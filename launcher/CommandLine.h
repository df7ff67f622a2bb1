#pragma once

#include "Startup/ESuStage.h"
#include "launcher/ExitCodes.h"
#include "registry/VQMModuleContract.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace Orvia {

/// The program arguments, understood.
struct CommandLine
{
    const char *loadList = nullptr; ///< the argument of "-l", inside argv; null with check
    QString properties;             ///< empty for the file beside the load list
    std::optional<HwESigGenFamily> family;
    bool offscreen = false;
    bool headless = false;
    std::optional<ESuStage> until;
    QString trace;       ///< empty for none
    QString screenshot;  ///< empty for none
    QStringList skipped; ///< module files to leave out
    bool strict = false; ///< start-up that is not complete shows in the exit code
    QString check;       ///< configuration to check instead of starting; empty for none
    bool probe = false;  ///< with check
    bool json = false;   ///< with check
};

/// Reads the arguments as the startup object and this launcher share them. No value when there is nothing
/// more to do: help or version was printed, or a usage error was reported; `exitCode` then says which.
std::optional<CommandLine> parseCommandLine(int argc, char **argv, ExitCode *exitCode);

/// An instrument family: bits in decimal or, after 0x, in hexadecimal, at least one.
std::optional<HwESigGenFamily> parseFamily(const QString &text);

} // namespace Orvia
