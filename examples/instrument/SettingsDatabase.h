#pragma once

#include "registry/VQMModuleContract.h"

#include <functional>
#include <map>
#include <string>

namespace Orvia {

/// Settings by key, both text in UTF-8. Keys are "group/name".
using SettingsMap = std::map<std::string, std::string>;

/// What the Database module (id 4) offers to other modules: the settings that outlive a power cycle.
///
/// The operations follow the positions of the contract. Unlike those they pass C++ types, so that the modules
/// of one instrument are built with one compiler. All operations may be called on any thread while the
/// Database module is up, which is from before the other modules come up until they are down again.
class SettingsDatabase : public VQMDllModuleInterface
{
public:
    /// First number of the interface version; raised with every change that old callers do not survive.
    static constexpr int interfaceMajor = 2;

    using Listener = std::function<void(const SettingsMap &changed)>;
    /// Judges what is about to be set: false refuses all of it. May add to `changed` what has to follow.
    using Rule = std::function<bool(SettingsMap *changed)>;

    /// The database of this instrument, not owned; null when there is none, or one with another interface.
    static SettingsDatabase *of(const VQMAnchorInterface *anchor)
    {
        VQMModuleInterface *module = anchor->databaseModule;
        if (module == nullptr || module->getInterfaceVersion()->major != interfaceMajor)
            return nullptr;
        return static_cast<SettingsDatabase *>(module);
    }

    /// The value, or `defaultValue` when the key was never set. Answered from memory.
    virtual std::string value(const std::string &key, const std::string &defaultValue) const = 0; // 22

    /// Sets all values in one transaction and returns once they are on the disk. False, with the error
    /// signalled and nothing changed, when a rule refuses them (`refused`, if given, is then true) or they
    /// could not be written.
    virtual bool set(const SettingsMap &values, bool *refused = nullptr) = 0; // 23

    /// Calls `listener` after every set(), in the order of the transactions, on the thread that called set()
    /// and before that returns. A listener may read but not set, subscribe or unsubscribe. Returns the
    /// subscription.
    virtual int subscribe(Listener listener) = 0; // 24
    /// Once this has returned the listener is called no more.
    virtual void unsubscribe(int subscription) = 0; // 25

    /// Asks `rule` before every set(), on the thread that called set(). Rules added later are asked first, so
    /// that the earlier ones judge what they have added. A rule may read but do nothing else here. Returns a
    /// number for removeRule().
    virtual int addRule(Rule rule) = 0; // 26
    /// Once this has returned the rule is asked no more.
    virtual void removeRule(int number) = 0; // 27
};

} // namespace Orvia
