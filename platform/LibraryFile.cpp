#include "platform/LibraryFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orvia {

namespace {

using Page = std::array<char, 4096>;

#if __ELF_NATIVE_CLASS == 64
constexpr unsigned char nativeClass = ELFCLASS64;
#else
constexpr unsigned char nativeClass = ELFCLASS32;
#endif

/// The end of what the loader will map of the file; 0 when its first page does not tell.
std::uint64_t mappedEnd(const Page &page, std::size_t length)
{
    ElfW(Ehdr) header;
    if (length < sizeof header)
        return 0;
    std::memcpy(&header, page.data(), sizeof header);
    const std::uint64_t tableEnd =
        std::uint64_t(header.e_phoff) + std::uint64_t(header.e_phnum) * sizeof(ElfW(Phdr));
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != nativeClass ||
        header.e_phentsize != sizeof(ElfW(Phdr)) || header.e_phoff > length || tableEnd > length)
        return 0;
    std::uint64_t end = 0;
    for (std::size_t i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment;
        std::memcpy(&segment, page.data() + header.e_phoff + i * sizeof segment, sizeof segment);
        if (segment.p_type != PT_LOAD)
            continue;
        const std::uint64_t segmentEnd = std::uint64_t(segment.p_offset) + segment.p_filesz;
        end = segmentEnd < segment.p_filesz ? ~std::uint64_t(0) : std::max(end, segmentEnd);
    }
    return end;
}

} // namespace

std::string reasonNotToLoad(const char *path)
{
    struct stat status;
    if (::stat(path, &status) != 0 || S_ISDIR(status.st_mode))
        return std::string();
    if (!S_ISREG(status.st_mode)) // not even opened: that alone can have an effect on a device
        return "not a regular file";
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return std::string();
    Page page;
    const ssize_t length = ::pread(descriptor, page.data(), page.size(), 0);
    ::close(descriptor);
    const std::uint64_t needed = mappedEnd(page, length < 0 ? 0 : static_cast<std::size_t>(length));
    if (needed <= static_cast<std::uint64_t>(status.st_size))
        return std::string();
    return "file too short: " + std::to_string(status.st_size) + " of " + std::to_string(needed) + " bytes";
}

} // namespace Orvia
