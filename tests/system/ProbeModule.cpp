/// A module that does one thing out of the ordinary, chosen by the environment variable VQM_TEST_PROBE.

#include "registry/VQMModuleContract.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

namespace {

bool isAskedTo(std::string_view what)
{
    const char *chosen = std::getenv("VQM_TEST_PROBE");
    return chosen != nullptr && what == chosen;
}

/// Says that it waits, until the test has opened and closed the pipe that VQM_TEST_GATE names.
void passGate()
{
    std::fputs("at the gate\n", stderr);
    const int gate = open(std::getenv("VQM_TEST_GATE"), O_RDONLY);
    char byte;
    while (read(gate, &byte, 1) > 0)
        ;
    close(gate);
}

class ProbeModule : public Orvia::VQMDllModuleInterface
{
public:
    Orvia::VQMModuleVersion *getInterfaceVersion() override
    {
        static Orvia::VQMModuleVersion version(0, 0, 1);
        return &version;
    }
    const char *getModuleName() override { return "Probe"; }
    int getModuleId() override { return 5; }
    int initialize(Orvia::VQMAnchorInterface *, int) override
    {
        if (isAskedTo("wait in initialize"))
            passGate();
        else if (isAskedTo("throw later"))
            QTimer::singleShot(0, [] { throw std::runtime_error("too late"); });
        return 0;
    }
    void modulesFinished() override
    {
        if (isAskedTo("quit"))
            QTimer::singleShot(0, &QCoreApplication::quit);
        else if (isAskedTo("throw later on the GUI thread"))
            QTimer::singleShot(0, [] { throw 5; });
    }
    void terminate(Orvia::VQMAnchorInterface *) override
    {
        if (isAskedTo("call the GUI thread"))
            QMetaObject::invokeMethod(
                qApp, [] {}, Qt::BlockingQueuedConnection);
    }
};

} // namespace

extern "C" __attribute__((visibility("default"))) const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    static const Orvia::VQMModuleInfo info = {{}, 0, 0, 1, "Probe", 5, Orvia::VQMBaseModule, 0, 0xFFFFFFFF};
    if (isAskedTo("wait in discovery"))
        passGate();
    return &info;
}

extern "C" __attribute__((visibility("default"))) Orvia::VQMModuleInterface *
VQMCreateModuleInterfaceInstance(int)
{
    return new ProbeModule;
}
