#pragma once

namespace Orvia {

/// Steps that VQMMainStartupImplementation::initializeSwpRemote() takes. Values beyond these are passed on.
enum ESwpStartupStep : int
{
    SwpRegisterCallback = 0,
    SwpPlugInsInitialized = 2,
};

} // namespace Orvia
