#pragma once

#include <cstddef>
#include <cstdint>

/// Given one input; ends the process when something is wrong with it. Returns 0, or -1 for an input that is
/// of no use. The fuzzer calls it, and Replay.cpp does.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace Orvia {

/// Says what should have held and ends the process, unless it does.
void require(bool condition, const char *what);

/// While it lives: ends the process after ten seconds of processor time. The fuzzer's own limit is one of the
/// clock, which goes on while other processes have the processor.
class TimeLimit
{
public:
    TimeLimit();
    ~TimeLimit();
    TimeLimit(const TimeLimit &) = delete;
    TimeLimit &operator=(const TimeLimit &) = delete;
};

/// A file in memory, written anew for each input, and its name.
class InputFile
{
public:
    InputFile();
    void write(const std::uint8_t *data, std::size_t size);
    const char *name() const { return m_name; }

private:
    int m_descriptor;
    char m_name[32];
};

} // namespace Orvia
