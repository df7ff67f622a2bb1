#include "registry/VQMModuleContract.h"

#include <cstdio>

namespace {

constexpr Orvia::VQMModuleInfo info = {{0, 0}, 1, 0, 0, "Consumer", 9, Orvia::VQMBaseModule, 0, 0x2};
Orvia::VQMModuleVersion version(1, 0, 0);

} // namespace

class ConsumerModule final : public Orvia::VQMDllModuleInterface
{
public:
    Orvia::VQMModuleVersion *getInterfaceVersion() override { return &version; }
    const char *getModuleName() override { return info.name; }
    int getModuleId() override { return info.defaultId; }
    int initialize(Orvia::VQMAnchorInterface *, int) override
    {
        return std::fputs("consumer module: up\n", stderr) < 0;
    }
    void terminate(Orvia::VQMAnchorInterface *) override { std::fputs("consumer module: down\n", stderr); }
};

extern "C" __attribute__((visibility("default"))) const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    return &info;
}

extern "C" __attribute__((visibility("default"))) Orvia::VQMModuleInterface *
VQMCreateModuleInterfaceInstance(int)
{
    return new ConsumerModule;
}
