#pragma once

/// @file
/// The contract between the start-up library and every module library. Needs neither Qt nor any library of
/// this project. Authors of modules start from registry/VQMModule.h (in C: registry/VQMModuleC.h), which is
/// made on top of it, and the function vqm_add_module() of CMake.
///
/// A module library is a shared library that exports two functions:
///
///     extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo();
///     extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id);
///
/// Libraries are built separately, possibly by other compilers or in C, so that the field order of the
/// records and the order of the virtual operations are a binary interface: never reorder, only append.

#include <cstddef>
#include <cstdint>
#include <vector>

class QWidget;

namespace Orvia {

/// Version of all that stands here: grows with every change that a module can tell.
inline constexpr std::int32_t contractVersion = 1;

/// Instrument families as a bit set; a module serves an instrument when their sets share a bit.
using HwESigGenFamily = std::uint32_t;

/// Module types, the values of VQMModuleInfo::moduleType.
enum VQMModuleType : std::int32_t
{
    VQMBaseModule = 0x1,
    VQMLoadable = 0x10,
    VQMLoadable2 = 0x20,
    VQMPlugIn = 0x40,
    VQMPlugInLoadable = 0x80,
    VQMPlugInLoadable2 = 0x100,
};

/// Parts of a loadable or plug-in, the bits of VQMModuleInfo::parts and of the parts mask of initialize().
enum VQMModulePart : std::int32_t
{
    VQMDatabasePart = 0x1,
    VQMScpiPart = 0x2,
    VQMGuiPart = 0x4,
};

/// Ids of the base modules with a fixed role; their objects are published in the anchor record.
enum VQMFixedModuleId : std::int32_t
{
    VQMDatabaseId = 4,
    VQMScpiId = 6,
    VQMGuiId = 7,
};

/// A version as a module's object answers it.
class VQMModuleVersion
{
public:
    VQMModuleVersion(std::int32_t majorNumber, std::int32_t minorNumber, std::int32_t buildNumber)
        : major(majorNumber), minor(minorNumber), build(buildNumber)
    {
    }
    virtual ~VQMModuleVersion() = default;

    std::int32_t major;
    std::int32_t minor;
    std::int32_t build;
};

/// A module library's description of itself. Stays valid while the library is loaded.
struct VQMModuleInfo
{
    std::int32_t own[2]; ///< the module's own; never read by the start-up library
    std::int32_t major;
    std::int32_t minor;
    std::int32_t build;
    const char *name;
    std::int32_t defaultId;     ///< id handed to VQMCreateModuleInterfaceInstance, except for plug-ins
    std::int32_t moduleType;    ///< one VQMModuleType
    std::int32_t parts;         ///< VQMModulePart bits
    HwESigGenFamily targetMask; ///< instrument families served
};

struct VQMAnchorInterface;

/// What every object that stands beside the modules answers; the startup object is one too.
class VQMModuleInterface
{
public:
    /// Objects are destroyed through this by the start-up library once their module is terminated.
    virtual ~VQMModuleInterface() = default;

    /// Not owned by the caller; valid while the library is loaded.
    virtual VQMModuleVersion *getInterfaceVersion() = 0;
    /// At most 31 characters; longer names are cut.
    virtual const char *getModuleName() = 0;
    virtual int getModuleId() = 0;
};

/// A module object. The comments give the positions in the virtual table, the destructors being 0 and 1.
///
/// initialize() and terminate() of base modules run on the launcher's thread (of the Gui module, initialize()
/// on the GUI thread); those of the Scpi and Gui parts of plug-ins and loadables on the GUI thread. Stages
/// are announced on whichever thread reaches them.
class VQMDllModuleInterface : public VQMModuleInterface
{
public:
    /// 5: brings the module up. `parts` is -1 for a base module, else a mask of VQMModulePart bits.
    /// 0 is success, any other value is reported as the error code.
    virtual int initialize(VQMAnchorInterface *anchor, int parts) = 0;
    /// 6: takes the module down; called only after initialize().
    virtual void terminate(VQMAnchorInterface *anchor) = 0;

    // 7 to 15: stages reached by the start-up and the shutdown as a whole.
    virtual void modulesFinished() {}
    virtual void loadablesFinished(int /*parts*/) {}
    virtual void pluginsFinished(int /*parts*/) {}
    virtual void pluginLoadablesFinished(int /*parts*/) {}
    virtual void completeFinished() {}
    virtual void terminateModules() {}
    virtual void terminateLoadables() {}
    virtual void terminatePlugins() {}
    virtual void terminatePluginLoadables() {}

    // 16 to 21: 18 and 21 are asked of the Gui module only, the others of nobody.
    virtual void reserved16() {}
    virtual void reserved17() {}
    /// 18: the widget that becomes the application's main widget, owned by the module; null for none.
    virtual QWidget *getMainWidget() { return nullptr; }
    virtual void reserved19() {}
    virtual void reserved20() {}
    /// 21: all modules are up, the user interface may start.
    virtual void startGui(VQMAnchorInterface * /*anchor*/) {}
};

/// The view of a loadable or plug-in that is handed to the plug-in host. Starts at the same address as the
/// object's VQMModuleInterface view: derive from this class alone, or name it first.
class VQMPlugInDllModuleInterface : public VQMDllModuleInterface
{
};

/// The record that every module receives. Belongs to the launcher and outlives all modules.
struct VQMAnchorInterface
{
    void *creator[3];                     ///< the launcher's own; never read by the start-up library
    VQMModuleInterface *guiModule;        ///< object of base module 7 while it is loaded and not terminated
    VQMModuleInterface *scpiModule;       ///< the same for base module 6
    VQMModuleInterface *databaseModule;   ///< the same for base module 4
    VQMDllModuleInterface *stageListener; ///< null, or told every stage after the modules (positions 7 to 15)
    std::vector<VQMPlugInDllModuleInterface *> *plugInInterfaces; ///< null, or all live non-base modules
};

/// Symbol names of the two entry points and their types.
inline constexpr const char *moduleInfoSymbol = "VQMGetModuleInfo";
inline constexpr const char *createInstanceSymbol = "VQMCreateModuleInterfaceInstance";
using GetModuleInfoFunction = const VQMModuleInfo *(*)();
using CreateInstanceFunction = VQMModuleInterface *(*)(int id);

/// A module library's description of itself for those who do not load it: an ELF note (section .note.vqm),
/// which vqm_add_module() puts into the file. Its contents are eight words of 32 bits, the same on 32 and 64
/// bit, in the byte order of the machine:
///
///     contractVersion, of the contract that it was built with
///     major, minor, build, defaultId, moduleType, parts, targetMask, as in its VQMModuleInfo
///
/// and then the name, with a zero at its end; behind it, later versions may append. Libraries without this
/// note are modules as well.
inline constexpr const char *moduleNoteOwner = "VQM";
inline constexpr std::uint32_t moduleNoteType = 1;

// The binary layout. On 32 bit every field is one word; on 64 bit the fields and their order are the same.
namespace layout {
constexpr std::size_t pointer = sizeof(void *);
static_assert(offsetof(VQMModuleInfo, major) == 8);
static_assert(offsetof(VQMModuleInfo, minor) == 12);
static_assert(offsetof(VQMModuleInfo, build) == 16);
static_assert(offsetof(VQMModuleInfo, name) == (pointer == 4 ? 20 : 24));
static_assert(offsetof(VQMModuleInfo, defaultId) == offsetof(VQMModuleInfo, name) + pointer);
static_assert(offsetof(VQMModuleInfo, moduleType) == offsetof(VQMModuleInfo, defaultId) + 4);
static_assert(offsetof(VQMModuleInfo, parts) == offsetof(VQMModuleInfo, defaultId) + 8);
static_assert(offsetof(VQMModuleInfo, targetMask) == offsetof(VQMModuleInfo, defaultId) + 12);
static_assert(sizeof(VQMModuleInfo) == (pointer == 4 ? 40 : 48));
static_assert(offsetof(VQMAnchorInterface, guiModule) == 3 * pointer);
static_assert(offsetof(VQMAnchorInterface, scpiModule) == 4 * pointer);
static_assert(offsetof(VQMAnchorInterface, databaseModule) == 5 * pointer);
static_assert(offsetof(VQMAnchorInterface, stageListener) == 6 * pointer);
static_assert(offsetof(VQMAnchorInterface, plugInInterfaces) == 7 * pointer);
static_assert(sizeof(VQMAnchorInterface) == 8 * pointer);
static_assert(sizeof(VQMModuleInterface) == pointer);
static_assert(sizeof(VQMPlugInDllModuleInterface) == pointer);
static_assert(sizeof(VQMModuleVersion) == (pointer == 4 ? 16 : 24));
} // namespace layout

} // namespace Orvia
