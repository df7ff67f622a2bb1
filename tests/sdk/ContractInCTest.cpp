/// The contract as C sees it is that of C++.

#include "registry/VQMModuleC.h"
#include "registry/VQMModuleContract.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

#define SAME_FIELD(Record, field)                                                                            \
    static_assert(offsetof(Record, field) == offsetof(Orvia::Record, field) &&                               \
                  sizeof(Record::field) == sizeof(Orvia::Record::field))
// Fields that are pointers are meant. NOLINTBEGIN(bugprone-sizeof-expression)
SAME_FIELD(VQMModuleInfo, own);
SAME_FIELD(VQMModuleInfo, major);
SAME_FIELD(VQMModuleInfo, minor);
SAME_FIELD(VQMModuleInfo, build);
SAME_FIELD(VQMModuleInfo, name);
SAME_FIELD(VQMModuleInfo, defaultId);
SAME_FIELD(VQMModuleInfo, moduleType);
SAME_FIELD(VQMModuleInfo, parts);
SAME_FIELD(VQMModuleInfo, targetMask);
SAME_FIELD(VQMAnchorInterface, creator);
SAME_FIELD(VQMAnchorInterface, guiModule);
SAME_FIELD(VQMAnchorInterface, scpiModule);
SAME_FIELD(VQMAnchorInterface, databaseModule);
SAME_FIELD(VQMAnchorInterface, stageListener);
SAME_FIELD(VQMAnchorInterface, plugInInterfaces);
// NOLINTEND(bugprone-sizeof-expression)
static_assert(sizeof(VQMModuleInfo) == sizeof(Orvia::VQMModuleInfo));
static_assert(sizeof(VQMAnchorInterface) == sizeof(Orvia::VQMAnchorInterface));
static_assert(sizeof(VQMModuleObject) == sizeof(Orvia::VQMModuleInterface));
static_assert(sizeof(VQMModuleVersion) == sizeof(Orvia::VQMModuleVersion));
static_assert(VQM_CONTRACT_VERSION == Orvia::contractVersion);
static_assert(VQM_MODULE_NOTE_TYPE == Orvia::moduleNoteType);
static_assert(std::string_view(VQM_MODULE_NOTE_OWNER) == Orvia::moduleNoteOwner);
static_assert(int(VQMDatabasePart) == int(Orvia::VQMDatabasePart) &&
              int(VQMScpiPart) == int(Orvia::VQMScpiPart) && int(VQMGuiPart) == int(Orvia::VQMGuiPart));

std::vector<int> called; ///< positions in the table, and the parts that came along

template <int position>
void plain(VQMModuleObject * /*self*/)
{
    called.push_back(position);
}
template <int position>
void withParts(VQMModuleObject * /*self*/, int parts)
{
    called.insert(called.end(), {position, parts});
}
template <int position>
void withAnchor(VQMModuleObject * /*self*/, VQMAnchorInterface *anchor)
{
    called.push_back(anchor != nullptr ? position : -1);
}

VQMModuleVersion version = {nullptr, 1, 2, 3};

constexpr VQMModuleOperations operations = {
    .destroy = plain<0>,
    .destroyAndFree = plain<1>,
    .getInterfaceVersion = [](VQMModuleObject *) { return &version; },
    .getModuleName = [](VQMModuleObject *) { return "in C"; },
    .getModuleId = [](VQMModuleObject *) { return 4; },
    .initialize = [](VQMModuleObject *, VQMAnchorInterface *anchor, int parts) { return anchor ? parts : 0; },
    .terminate = withAnchor<6>,
    .modulesFinished = plain<7>,
    .loadablesFinished = withParts<8>,
    .pluginsFinished = withParts<9>,
    .pluginLoadablesFinished = withParts<10>,
    .completeFinished = plain<11>,
    .terminateModules = plain<12>,
    .terminateLoadables = plain<13>,
    .terminatePlugins = plain<14>,
    .terminatePluginLoadables = plain<15>,
    .reserved16 = plain<16>,
    .reserved17 = plain<17>,
    .getMainWidget = [](VQMModuleObject *self) -> void * { return self; },
    .reserved19 = plain<19>,
    .reserved20 = plain<20>,
    .startGui = withAnchor<21>,
};

} // namespace

TEST(ContractInC, CallsOfCppArriveInC)
{
    VQMModuleObject object = {&operations};
    auto *module = reinterpret_cast<Orvia::VQMDllModuleInterface *>(&object);
    Orvia::VQMAnchorInterface anchor = {};

    EXPECT_EQ(module->getInterfaceVersion()->build, 3);
    EXPECT_STREQ(module->getModuleName(), "in C");
    EXPECT_EQ(module->getModuleId(), 4);
    EXPECT_EQ(module->initialize(&anchor, 5), 5);
    EXPECT_EQ(static_cast<void *>(module->getMainWidget()), &object);
    module->terminate(&anchor);
    module->modulesFinished();
    module->loadablesFinished(108);
    module->pluginsFinished(109);
    module->pluginLoadablesFinished(110);
    module->completeFinished();
    module->terminateModules();
    module->terminateLoadables();
    module->terminatePlugins();
    module->terminatePluginLoadables();
    module->reserved16();
    module->reserved17();
    module->reserved19();
    module->reserved20();
    module->startGui(&anchor);
    delete module;
    EXPECT_EQ(called,
              (std::vector{6, 7, 8, 108, 9, 109, 10, 110, 11, 12, 13, 14, 15, 16, 17, 19, 20, 21, 1}));
}
