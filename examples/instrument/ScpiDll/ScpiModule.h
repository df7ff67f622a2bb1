#pragma once

#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/ScpiDll/ScpiExtensions.h"
#include "examples/instrument/ScpiDll/ScpiServer.h"
#include "examples/instrument/ScpiRegistry.h"

#include <memory>
#include <optional>

namespace Orvia {

/// The ScpiDll module: remote control over TCP. Address and port are the properties "Scpi"/"address" and
/// "Scpi"/"port"; 0 picks a free port, the log tells which.
///
/// initialize() and terminate() run on one thread, whose event loop serves the clients in between.
class ScpiModule final : public ModuleBase<ScpiRegistry, ScpiRegistry::interfaceMajor>
{
public:
    explicit ScpiModule(int id);
    ~ScpiModule() override;

    int initialize(VQMAnchorInterface *anchor, int parts) override;
    void terminate(VQMAnchorInterface *anchor) override;

    void addCommands(const void *owner, ScpiTable table) override;
    void removeCommands(const void *owner) override;

private:
    int listen();

    ScpiExtensions m_extensions;
    std::optional<ScpiInstrument> m_instrument;
    std::unique_ptr<ScpiServer> m_server;
};

} // namespace Orvia
