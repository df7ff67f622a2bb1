#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Orvia::probe {

/// This process's memory as it is when the object is created.
class MemoryMap
{
public:
    MemoryMap();

    bool isReadable(const void *address, std::size_t size) const;
    /// The file mapped there; empty when there is none.
    std::string fileAt(const void *address) const;
    bool contains(const std::string &file) const;

private:
    struct Region
    {
        std::uintptr_t begin;
        std::uintptr_t end;
        bool readable;
        std::string file;
    };
    const Region *regionAt(const void *address) const;

    std::vector<Region> m_regions;
};

} // namespace Orvia::probe
