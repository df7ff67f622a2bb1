#pragma once

#include "diagnosis/ModuleInspection.h"

namespace Orvia {

struct ElfLibrary;

/// The note of a module library; none when it has none, or none that can be read, which is a finding. `file`
/// is what findings are about.
std::optional<ModuleNote> readModuleNote(const QString &file, const ElfLibrary &library, Findings *findings);

} // namespace Orvia
