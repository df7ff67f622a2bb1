#pragma once

#include <string>

namespace Orvia {

/// Why the loader must not be given this file: it is none that can be loaded and the loader would wait for
/// it, or it was cut off, and the process would die of touching what is missing. Empty for every other file,
/// also one that is absent or no library: the loader says so itself. Four system calls.
std::string reasonNotToLoad(const char *path);

} // namespace Orvia
