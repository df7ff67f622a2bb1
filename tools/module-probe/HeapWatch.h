#pragma once

namespace Orvia::probe::heap {

/// Whether deleting an object frees it, seen through this program's operator new and delete, which modules
/// use too. Blind in builds with a sanitizer, which has its own. Any thread may allocate meanwhile.

void startRecording();
/// From now on the one recorded block is watched that contains the address. False: none does, the object was
/// allocated in some other way.
bool watchBlockOf(const void *address);
bool watchedBlockIsFreed();

} // namespace Orvia::probe::heap
