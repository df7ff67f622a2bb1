#pragma once

#include "diagnosis/ModuleInspection.h"

namespace Orvia {

/// What is wrong with the values that a module answered; absent ones are not their concern. `file` is what
/// the findings are about.
Findings checkRecord(const QString &file, const ModuleProbe::Record &record);
Findings checkObject(const QString &file, const ModuleProbe::Object &object);

} // namespace Orvia
