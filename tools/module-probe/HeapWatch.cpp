#include "tools/module-probe/HeapWatch.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace Orvia::probe::heap {

namespace {

struct Block
{
    std::uintptr_t address;
    std::size_t size;
};

std::array<Block, 1 << 16> blocks; // allocations beyond these are not recorded
std::atomic<std::size_t> blockCount = blocks.size();
std::atomic<std::uintptr_t> watched = 0;
std::atomic<bool> freed = false;

#ifndef VQM_SANITIZED
void *allocate(std::size_t size)
{
    void *memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    const std::size_t index = blockCount < blocks.size() ? blockCount++ : blocks.size();
    if (index < blocks.size())
        blocks[index] = {reinterpret_cast<std::uintptr_t>(memory), size};
    return memory;
}

void release(void *memory)
{
    if (memory != nullptr && reinterpret_cast<std::uintptr_t>(memory) == watched)
        freed = true;
    std::free(memory);
}
#endif

} // namespace

void startRecording()
{
    blockCount = 0;
}

bool watchBlockOf(const void *address)
{
    const std::size_t count = std::min(blockCount.exchange(blocks.size()), blocks.size());
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    for (std::size_t i = 0; i < count; ++i) {
        if (blocks[i].address <= at && at < blocks[i].address + blocks[i].size)
            watched = blocks[i].address;
    }
    return watched != 0;
}

bool watchedBlockIsFreed()
{
    return freed;
}

} // namespace Orvia::probe::heap

#ifndef VQM_SANITIZED
void *operator new(std::size_t size)
{
    return Orvia::probe::heap::allocate(size);
}
void operator delete(void *memory) noexcept
{
    Orvia::probe::heap::release(memory);
}
void operator delete(void *memory, std::size_t /*size*/) noexcept
{
    Orvia::probe::heap::release(memory);
}
#endif
