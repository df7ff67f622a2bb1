/// The work of bare-start's discovery done by way of others: other-loops qlibrary|qpluginloader|boost FILE...
/// prints the nanoseconds. Libraries stay open.

#include "benchmarks/GeneratedModule.h"

#include "registry/VQMModuleContract.h"

#include <QLibrary>
#include <QPluginLoader>

#include <boost/dll/shared_library.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using Describe = const Orvia::VQMModuleInfo *();
using Create = Orvia::VQMModuleInterface *(int);

[[noreturn]] void fail(const std::string &reason)
{
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

void create(Describe *describe, Create *createInstance, const char *path)
{
    if (describe == nullptr || createInstance == nullptr || createInstance(describe()->defaultId) == nullptr)
        fail(path);
}

void withQLibrary(const char *path)
{
    QLibrary library(QString::fromLatin1(path));
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    create(reinterpret_cast<Describe *>(library.resolve(Orvia::moduleInfoSymbol)),
           reinterpret_cast<Create *>(library.resolve(Orvia::createInstanceSymbol)), path);
}

void withQPluginLoader(const char *path)
{
    QPluginLoader loader(QString::fromLatin1(path));
    loader.setLoadHints(loader.loadHints() | QLibrary::ResolveAllSymbolsHint);
    auto *plugin = qobject_cast<GeneratedPluginInterface *>(loader.instance());
    if (plugin == nullptr)
        fail(loader.errorString().toStdString());
    const auto *info = static_cast<const Orvia::VQMModuleInfo *>(plugin->describe());
    if (plugin->create(info->defaultId) == nullptr)
        fail(path);
}

void withBoost(const char *path)
{
    auto *library = new boost::dll::shared_library(path, boost::dll::load_mode::rtld_now);
    create(&library->get<Describe>(Orvia::moduleInfoSymbol),
           &library->get<Create>(Orvia::createInstanceSymbol), path);
}

} // namespace

int main(int argc, char **argv)
{
    const std::string kind = argc > 1 ? argv[1] : "";
    const auto open = kind == "qlibrary"        ? withQLibrary
                      : kind == "qpluginloader" ? withQPluginLoader
                      : kind == "boost"         ? withBoost
                                                : nullptr;
    if (open == nullptr)
        return 2;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 2; i < argc; ++i)
        open(argv[i]);
    const auto time = std::chrono::steady_clock::now() - begin;
    std::printf("%lld\n", static_cast<long long>(std::chrono::nanoseconds(time).count()));
    return 0;
}
