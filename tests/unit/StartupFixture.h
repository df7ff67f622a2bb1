#pragma once

#include "Startup/VQMIntegrationStartup.h"
#include "tests/fakes/Fakes.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace Orvia {

/// The startup object with its fields in the open. Deletes the records that it made, with what is left of
/// their modules.
class OpenStartup : public VQMIntegrationStartup
{
public:
    using VQMIntegrationStartup::VQMIntegrationStartup;
    ~OpenStartup() override;

    using VQMIntegrationStartup::baseModuleCount;
    using VQMIntegrationStartup::baseModulesInitialized;
    using VQMIntegrationStartup::baseProgressBarId;
    using VQMIntegrationStartup::groupCounters;
    using VQMIntegrationStartup::loadListFiles;
    using VQMIntegrationStartup::loadListName;
    using VQMIntegrationStartup::loadProgressBarId;
    using VQMIntegrationStartup::moduleTable;
    using VQMIntegrationStartup::plugInProgressBarId;
    using VQMIntegrationStartup::showProgress;

    std::vector<int> keys() const;
    VQMLoadedModuleInformation *record(int key) const { return moduleTable->find(key); }
};

/// A startup object for an instrument of family 0x8, which requires "Database" alone, with an anchor record
/// and a load list on real module libraries.
class StartupTest : public testing::Test
{
protected:
    StartupTest();
    ~StartupTest() override;

    /// Writes a load list with these files and runs discovery on it. A name without "/" is a test module's.
    int discover(const std::vector<std::string> &files, OpenStartup *with = nullptr);
    /// The same with nothing to be seen of it in `calls` afterwards.
    void load(const std::vector<std::string> &files);
    /// The test module as discovery names it.
    static std::string path(const std::string &file);
    /// Copies of the module "numbered" with these ids.
    std::vector<std::string> copies(const std::vector<int> &ids);
    static bool isMapped(const std::string &file);

    QTemporaryDir folder;
    std::vector<VQMPlugInDllModuleInterface *> plugIns;
    VQMAnchorInterface anchor = {};
    OpenStartup startup{1};

private:
    std::string m_loadList;
};

} // namespace Orvia
