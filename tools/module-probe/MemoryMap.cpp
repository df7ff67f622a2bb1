#include "tools/module-probe/MemoryMap.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fstream>

namespace Orvia::probe {

MemoryMap::MemoryMap()
{
    std::ifstream file("/proc/self/maps");
    for (std::string line; std::getline(file, line);) {
        Region region = {};
        char readable = '-';
        int nameAt = 0;
        if (std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR " %c%*s %*s %*s %*s %n", &region.begin,
                        &region.end, &readable, &nameAt) < 3)
            continue;
        region.readable = readable == 'r';
        if (nameAt > 0)
            region.file = line.substr(std::min(static_cast<std::size_t>(nameAt), line.size()));
        m_regions.push_back(region);
    }
}

bool MemoryMap::isReadable(const void *address, std::size_t size) const
{
    const Region *region = regionAt(address);
    return region != nullptr && region->readable &&
           region->end - reinterpret_cast<std::uintptr_t>(address) >= size;
}

std::string MemoryMap::fileAt(const void *address) const
{
    const Region *region = regionAt(address);
    return region != nullptr ? region->file : std::string();
}

bool MemoryMap::contains(const std::string &file) const
{
    return std::any_of(m_regions.begin(), m_regions.end(),
                       [&](const Region &region) { return region.file == file; });
}

const MemoryMap::Region *MemoryMap::regionAt(const void *address) const
{
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    for (const Region &region : m_regions) {
        if (region.begin <= at && at < region.end)
            return &region;
    }
    return nullptr;
}

} // namespace Orvia::probe
