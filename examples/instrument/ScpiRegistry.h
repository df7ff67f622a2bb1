#pragma once

#include "examples/instrument/SourceSettings.h"
#include "registry/VQMModuleContract.h"

#include <string>
#include <vector>

namespace Orvia {

/// What a number stands for: the units that it may be sent with. Settings hold the base unit, named first.
enum class ScpiQuantity
{
    Switch,    ///< ON, OFF, 1, 0; stored as 1 or 0
    Count,     ///< whole numbers without a unit
    Frequency, ///< HZ, KHZ, MHZ, MAHZ, GHZ
    Level,     ///< DBM
    Ratio,     ///< DB
    Time,      ///< S, MS, US, NS
    Percent,   ///< PCT
};

/// A setting under remote control: with a parameter "[:SOURce]:AM:DEPTh" sets it, "[:SOURce]:AM:DEPTh?"
/// answers it. Mnemonics in brackets may be left out. *RST sets the default.
struct ScpiSetting
{
    const char *header;
    NumberSetting setting;
    ScpiQuantity quantity;
};

/// A query that is worked out from the settings. The header ends in "?".
struct ScpiQuery
{
    const char *header;
    double (*answer)(const SettingsDatabase &settings);
};

struct ScpiTable
{
    std::vector<ScpiSetting> settings;
    std::vector<ScpiQuery> queries;
};

/// What the ScpiDll module (id 6) offers to other modules: commands of their own under remote control. The
/// operations follow the positions of the contract and pass C++ types, so that the modules of one instrument
/// are built with one compiler. All of them may be called on any thread.
class ScpiRegistry : public VQMDllModuleInterface
{
public:
    /// First number of the interface version; raised with every change that old callers do not survive.
    static constexpr int interfaceMajor = 2;

    /// The registry of this instrument, not owned; null when there is none, or one with another interface.
    static ScpiRegistry *of(const VQMAnchorInterface *anchor)
    {
        VQMModuleInterface *module = anchor->scpiModule;
        if (module == nullptr || module->getInterfaceVersion()->major != interfaceMajor)
            return nullptr;
        return static_cast<ScpiRegistry *>(module);
    }

    /// Adds the commands to those there are; where headers are alike the earlier one counts. `owner` is only
    /// compared; the texts in the table stay valid until it is removed. Commands run on the thread of the
    /// remote control.
    virtual void addCommands(const void *owner, ScpiTable table) = 0; // 22
    /// Takes out all that `owner` has added. Waits for a command of its that is being carried out; none runs
    /// afterwards. Not from inside a settings listener or rule.
    virtual void removeCommands(const void *owner) = 0; // 23
};

} // namespace Orvia
