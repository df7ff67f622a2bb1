#pragma once

#include "examples/instrument/ScpiRegistry.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Orvia {

class ScpiSession;
struct ScpiUnit;

/// The commands that other modules have added, see ScpiRegistry. Any thread.
class ScpiExtensions
{
public:
    void add(const void *owner, ScpiTable table);
    /// Waits for the command that is being carried out.
    void remove(const void *owner);

    /// Carries out the unit; false when no module has such a command. Throws ScpiError.
    bool run(ScpiSession *session, const ScpiUnit &unit, std::string *response) const;

    /// What *RST sets.
    SettingsMap defaults() const;

private:
    mutable std::mutex m_mutex; ///< held while a command runs
    std::vector<std::pair<const void *, ScpiTable>> m_tables;
};

} // namespace Orvia
