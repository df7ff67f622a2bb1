#pragma once

namespace Orvia {

/// Registers the component error table (90000 to 90013) with the error manager, once per process.
void registerVQMComponentsErrors();

} // namespace Orvia
