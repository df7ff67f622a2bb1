#pragma once

#include "Startup/ESuStage.h"
#include "registry/VQMModuleContract.h"

#include <QString>

namespace Orvia {

/// The rules by which modules are kept, numbered, grouped and brought up: here once, for the start-up, which
/// acts on them, and for the configuration check, which foretells what it will do.

inline constexpr int validModuleTypes = 0x1f1;
inline constexpr int firstPlugInId = 10000;
/// A file with this base name in the load list is never opened.
inline constexpr const char *skippedBaseName = "GlueGPIBDll";
/// The base module that is brought up in a pass of its own.
inline constexpr const char *guiModuleName = "GuiDll";
inline constexpr int allModuleParts = VQMDatabasePart | VQMScpiPart | VQMGuiPart;

/// Why discovery drops a module that describes itself.
enum class Refusal
{
    None,
    Family, ///< it serves other instrument families
    Type,   ///< no bit of its type is known
};

constexpr Refusal refusalOf(int moduleType, HwESigGenFamily moduleFamilies, HwESigGenFamily family)
{
    if ((moduleFamilies & family) == 0)
        return Refusal::Family;
    return (moduleType & validModuleTypes) == 0 ? Refusal::Type : Refusal::None;
}

/// The id that a module is entered with: plug-ins are numbered in the order of the load list.
constexpr int moduleIdOf(int moduleType, int defaultId, int *plugInCounter)
{
    return moduleType == VQMPlugIn ? firstPlugInId + (*plugInCounter)++ : defaultId;
}

/// Base modules without which the families of `families` are incomplete; the first row that matches counts.
struct RequiredModules
{
    /// A module that has to be there.
    struct Slot
    {
        int id; ///< 0: empty
        const char *name;
    };
    HwESigGenFamily families;
    Slot modules[3];
};

inline constexpr RequiredModules requiredModules[] = {
    {0xFFFFFFF7, {{VQMDatabaseId, "Database"}, {VQMScpiId, "ScpiDll"}, {VQMGuiId, "GuiDll"}}},
    {0x8, {{VQMDatabaseId, "Database"}, {0, ""}, {0, ""}}},
};

/// One module type: the order of the rows is the order of initialization, termination goes backwards.
struct PlugInType
{
    int type;
    const char *text;
    int group; ///< 0 loadables, 1 plug-ins, 2 plug-in loadables
    ESuStage finished;
    ESuStage terminating;
};

inline constexpr PlugInType plugInTypes[] = {
    {VQMLoadable, "Loadable ", 0, SuInvalid, SuInvalid},
    {VQMLoadable2, "Loadable ", 0, SuLoadablesFinished, SuTerminateLoadables},
    {VQMPlugIn, "Plugin ", 1, SuPluginsFinished, SuTerminatePlugins},
    {VQMPlugInLoadable, "Plugin Loadable ", 2, SuInvalid, SuInvalid},
    {VQMPlugInLoadable2, "Plugin Loadable ", 2, SuPluginLoadablesFinished, SuTerminatePluginLoadables},
};

/// -1 for a type that has no group.
constexpr int groupOf(int moduleType)
{
    for (const PlugInType &row : plugInTypes) {
        if (row.type == moduleType)
            return row.group;
    }
    return -1;
}

/// "Database Scpi Gui ", each part of the mask with a blank behind it.
inline QString partsText(int parts)
{
    constexpr const char *texts[] = {"Database ", "Scpi ", "Gui "};
    QString text;
    for (int part = 0; part < 3; ++part) {
        if ((parts & (1 << part)) != 0)
            text += QLatin1String(texts[part]);
    }
    return text;
}

} // namespace Orvia
