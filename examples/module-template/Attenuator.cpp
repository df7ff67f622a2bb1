#include "registry/VQMModule.h"

#include <cstdio>

namespace {

/// The module object: one is made when the library has been opened, and deleted before it is closed.
///
/// VQMModule answers name and id, which are said in CMakeLists.txt. A loadable or plug-in derives from
/// Orvia::VQMModule<Orvia::VQMPlugInDllModuleInterface> instead.
class Attenuator final : public Orvia::VQMModule<>
{
public:
    using VQMModule::VQMModule; // or a constructor that takes the id; keep it short, the hardware is not up
                                // yet

    /// Brings the module up. Modules with smaller ids are up already; `anchor` has those with a fixed role.
    /// 0 is success; any other value is reported as the error code.
    int initialize(Orvia::VQMAnchorInterface *anchor, int /*parts*/) override
    {
        std::fprintf(stderr, "Attenuator: up, %s settings database\n",
                     anchor->databaseModule != nullptr ? "there is a" : "without");
        return 0;
    }

    /// Takes the module down, in reverse order.
    void terminate(Orvia::VQMAnchorInterface * /*anchor*/) override
    {
        std::fputs("Attenuator: down\n", stderr);
    }

    /// One of the stages that are announced to every module; the contract has the others.
    void completeFinished() override { std::fputs("Attenuator: start-up is complete\n", stderr); }
};

} // namespace

/// The entry points of the library.
VQM_MODULE(Attenuator)
