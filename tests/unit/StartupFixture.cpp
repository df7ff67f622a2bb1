#include "tests/unit/StartupFixture.h"

#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>

namespace Orvia {

OpenStartup::~OpenStartup()
{
    for (int i = 0; i < moduleTable->count; ++i) {
        VQMLoadedModuleInformation *record = moduleTable->entries[i].value;
        if (record->moduleLoaded())
            delete record->moduleInterface;
        delete record;
    }
}

std::vector<int> OpenStartup::keys() const
{
    std::vector<int> found;
    found.reserve(moduleTable->count);
    for (int i = 0; i < moduleTable->count; ++i)
        found.push_back(moduleTable->entries[i].key);
    return found;
}

StartupTest::StartupTest()
{
    resetFakes();
    anchor.plugInInterfaces = &plugIns;
    OpenStartup::anchorInterface = &anchor;
    OpenStartup::platform = false;
    std::memset(OpenStartup::exceptionLocation, ' ', sizeof OpenStartup::exceptionLocation - 1);
    OpenStartup::setAbortFlag(false);
    startup.setTargetId(0x8);
    startup.showProgress = true;
}

StartupTest::~StartupTest()
{
    resetFakes();
}

int StartupTest::discover(const std::vector<std::string> &files, OpenStartup *with)
{
    m_loadList = folder.filePath("list.xml").toStdString();
    std::ofstream list(m_loadList);
    list << "<ModuleLoadList>\n";
    for (const std::string &file : files) {
        const std::filesystem::path whole = path(file);
        list << "<Directory nameLinux='" << whole.parent_path().string() << "'><File name='"
             << whole.filename().string() << "'/></Directory>\n";
    }
    list << "</ModuleLoadList>\n";
    list.close();
    return (with != nullptr ? with : &startup)->findModules(m_loadList.c_str());
}

void StartupTest::load(const std::vector<std::string> &files)
{
    ASSERT_EQ(discover(files), 0);
    ASSERT_EQ(startup.moduleTable->count, static_cast<int>(files.size()));
    calls.clear();
}

std::string StartupTest::path(const std::string &file)
{
    return file.find('/') != std::string::npos ? file : TEST_MODULE_DIR "/" + file + ".so";
}

std::vector<std::string> StartupTest::copies(const std::vector<int> &ids)
{
    std::vector<std::string> files;
    for (int id : ids) {
        files.push_back(
            folder.filePath(QString::asprintf("module%05d-%zu.so", id, files.size())).toStdString());
        std::filesystem::copy_file(path("numbered"), files.back());
    }
    return files;
}

bool StartupTest::isMapped(const std::string &file)
{
    void *library = ::dlopen(path(file).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr)
        ::dlclose(library);
    return library != nullptr;
}

} // namespace Orvia
