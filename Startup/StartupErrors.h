#pragma once

namespace Orvia {

/// Codes of the start-up error table that this library signals itself.
enum StartupErrorCode : int
{
    StartupModuleNotFound = 10001,
    StartupInterfaceMethodNotFound = 10004,
    StartupUnknownOption = 10008,
};

/// Registers the start-up error table (10000 to 10009) with the error manager, once per process.
void registerStartupErrors();

} // namespace Orvia
