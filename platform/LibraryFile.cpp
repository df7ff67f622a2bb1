#include "platform/LibraryFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

/// Of the library that this file becomes part of; the linker puts it there.
extern "C" __attribute__((visibility("hidden")))
const ElfW(Ehdr) __ehdr_start; // NOLINT(bugprone-reserved-identifier): the linker's name

namespace Orvia {

namespace {

using Page = std::array<char, 4096>;
using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);

/// The header of a file of this process's word length and byte order, all zero for every other.
Header headerOf(const Page &page, std::size_t length)
{
    Header header = {};
    if (length < sizeof header)
        return header;
    std::memcpy(&header, page.data(), sizeof header);
    const bool isAlike = std::memcmp(header.e_ident, __ehdr_start.e_ident, EI_DATA + 1) == 0;
    return isAlike ? header : Header();
}

/// The end of what the loader will map of the file; 0 when its first page does not tell.
std::uint64_t mappedEnd(const Header &header, const Page &page, std::size_t length)
{
    const std::uint64_t tableEnd =
        std::uint64_t(header.e_phoff) + std::uint64_t(header.e_phnum) * sizeof(Segment);
    if (header.e_phentsize != sizeof(Segment) || header.e_phoff > length || tableEnd > length)
        return 0;
    std::uint64_t end = 0;
    for (std::size_t i = 0; i < header.e_phnum; ++i) {
        Segment segment;
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
    const ssize_t result = ::pread(descriptor, page.data(), page.size(), 0);
    ::close(descriptor);
    const std::size_t length = result < 0 ? 0 : static_cast<std::size_t>(result);
    const Header header = headerOf(page, length);
    if (header.e_machine != EM_NONE && header.e_machine != __ehdr_start.e_machine)
        return "built for another processor: ELF machine " + std::to_string(header.e_machine) + ", not " +
               std::to_string(__ehdr_start.e_machine);
    const std::uint64_t needed = mappedEnd(header, page, length);
    if (needed <= static_cast<std::uint64_t>(status.st_size))
        return std::string();
    return "file too short: " + std::to_string(status.st_size) + " of " + std::to_string(needed) + " bytes";
}

} // namespace Orvia
