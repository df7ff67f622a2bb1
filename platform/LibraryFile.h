#pragma once

#include <string>

namespace Orvia {

/// Why the loader must not be given this file: it is none that can be loaded and the loader would wait for
/// it; it was cut off, and the process would die of touching what is missing; it is for another processor,
/// and the loader would say that there is no such file. Empty for every other file, also one that is absent
/// or no library: the loader says so itself. Four system calls.
std::string reasonNotToLoad(const char *path);

} // namespace Orvia
