#include "launcher/ExitCodes.h"

#include <cstdio>
#include <dlfcn.h>

// Without Qt: the launcher library is opened locally, which keeps Qt's libraries out of the process's global
// scope, through which the loader looks up every symbol of every module library.
int main(int argc, char **argv)
{
    using Entry = int (*)(int, char **);
    void *library = dlopen("libvqmlauncher.so", RTLD_NOW | RTLD_LOCAL);
    const auto entry =
        library != nullptr ? reinterpret_cast<Entry>(dlsym(library, "vqmLauncherMain")) : nullptr;
    if (entry == nullptr) {
        std::fprintf(stderr, "mainstartup: %s\n", dlerror());
        // cppcheck-suppress resourceLeak ; the process ends
        return static_cast<int>(Orvia::ExitCode::Configuration);
    }
    // cppcheck-suppress resourceLeak ; open as long as the process lives
    return entry(argc, argv);
}
