/// Modules that do what no module should, each in one way: FAULT.

#include "registry/VQMModule.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

enum class Fault
{
    None,
    HangsWhenOpened,
    HangsInCreate,
    StopsInName,
    DiesInDelete,
    DiesInId,
    AbortsInVersion,
    DiesWhenClosed,
    ExitsInInfo,
    ForksAndDies,
    ClosesResults,
    OtherId,
    NotFreed,
    NoTypeInformation,
    OpensItself,
    Slow,
    NoPlugIn,
    TwoViews,
};

constexpr Fault fault = Fault::FAULT;

template <int>
struct __attribute__((visibility("default"))) Counter
{
    static inline int value = 0; // unique in the process when compiled so
};

static void dieIf(Fault when, int signal)
{
    if (fault == when)
        raise(signal);
}

static void sleepIfSlow()
{
    if (fault == Fault::Slow)
        usleep(500'000);
}

/// Gives the object a table as C would: with anything before it.
static void dropTypeInformation(void *object)
{
    alignas(void *) static const char anything[] = "anything, and readable";
    static const void *table[2 + 22] = {nullptr, anything};
    const void **own;
    memcpy(&own, object, sizeof own);
    memcpy(table + 2, own, 22 * sizeof *own);
    own = table + 2;
    memcpy(object, &own, sizeof own);
}

/// A child that outlives its parent and holds its descriptors; writes its id to the file VQM_TEST_PID_FILE.
static void forkAndDie()
{
    const pid_t child = fork();
    if (child == 0) {
        for (;;)
            pause();
    }
    if (FILE *file = fopen(getenv("VQM_TEST_PID_FILE"), "w")) {
        fprintf(file, "%d", child);
        fclose(file);
    }
    raise(SIGKILL);
}

class FaultyModule : public MODULE_INTERFACE
{
public:
    explicit FaultyModule(int id) : m_id(id) {}
    ~FaultyModule() override { dieIf(Fault::DiesInDelete, SIGSEGV); }
    static void operator delete(void *memory)
    {
        if (fault != Fault::NotFreed)
            ::operator delete(memory);
    }

    Orvia::VQMModuleVersion *getInterfaceVersion() override
    {
        dieIf(Fault::AbortsInVersion, SIGABRT);
        sleepIfSlow();
        static Orvia::VQMModuleVersion version(1, 2, 345);
        return &version;
    }
    const char *getModuleName() override
    {
        dieIf(Fault::StopsInName, SIGSTOP);
        sleepIfSlow();
        return "two\nlines % ";
    }
    int getModuleId() override
    {
        dieIf(Fault::DiesInId, SIGFPE);
        sleepIfSlow();
        return fault == Fault::OtherId ? m_id + 1 : m_id;
    }
    int initialize(Orvia::VQMAnchorInterface *, int) override { return 0; }
    void terminate(Orvia::VQMAnchorInterface *) override {}

private:
    const int m_id;
};

/// Its first view is not the one that the plug-in host gets.
struct OtherView : Orvia::VQMModuleInterface
{
    Orvia::VQMModuleVersion *getInterfaceVersion() override
    {
        static Orvia::VQMModuleVersion version(1, 2, 345);
        return &version;
    }
    const char *getModuleName() override { return "other view"; }
    int getModuleId() override { return 20; }
};
struct TwoViews : OtherView, FaultyModule
{
    explicit TwoViews(int id) : FaultyModule(id) {}
    using FaultyModule::operator delete;
    Orvia::VQMModuleVersion *getInterfaceVersion() override { return OtherView::getInterfaceVersion(); }
    const char *getModuleName() override { return OtherView::getModuleName(); }
    int getModuleId() override { return OtherView::getModuleId(); }
};

__attribute__((constructor)) static void opened()
{
    printf("noise on standard output\n");
    fprintf(stderr, "noise on standard error\n");
    fflush(stdout);
    if (fault == Fault::HangsWhenOpened)
        pause();
}

__attribute__((destructor)) static void closed()
{
    dieIf(Fault::DiesWhenClosed, SIGBUS);
}

extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    if (fault == Fault::ExitsInInfo)
        _exit(3);
    if (fault == Fault::ClosesResults)
        close(3);
    static Orvia::VQMModuleInfo info = VQM_MODULE_INFO;
    Dl_info self;
    if (fault == Fault::OpensItself && dladdr(&info, &self) != 0)
        dlopen(self.dli_fname, RTLD_LAZY); // cppcheck-suppress leakReturnValNotUsed ; the fault itself
    info.major = Counter<0>::value;
    return &info;
}

extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)
{
    sleepIfSlow();
    if (fault == Fault::ForksAndDies)
        forkAndDie();
    while (fault == Fault::HangsInCreate) {
    }
    if constexpr (fault == Fault::TwoViews)
        return static_cast<OtherView *>(new TwoViews(id));
    auto *object = new FaultyModule(id);
    if (fault == Fault::NoTypeInformation)
        dropTypeInformation(object);
    return object;
}
