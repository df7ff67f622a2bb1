#include "tests/fuzz/Fuzz.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

// Stands in for the fuzzer where inputs are only to be gone through: the arguments are folders of them, which
// may be missing, and files.

namespace {

int replay(const std::filesystem::path &path)
{
    std::fprintf(stderr, "%s\n", path.c_str()); // the last one is the one that failed
    std::ifstream file(path, std::ios::binary);
    std::string input(std::filesystem::file_size(path), '\0');
    file.read(input.data(), static_cast<std::streamsize>(input.size()));
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(input.data()), input.size());
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_regular_file(argv[i]))
            count += replay(argv[i]);
        else if (std::filesystem::is_directory(argv[i])) {
            for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i]))
                count += entry.is_regular_file() ? replay(entry.path()) : 0;
        }
    }
    std::fprintf(stderr, "%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
