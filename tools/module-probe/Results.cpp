#include "tools/module-probe/Results.h"

#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <unistd.h>

namespace Orvia::probe {

namespace {

constexpr std::size_t maxText = 4000; // bytes; a module's text may have no end

void writeLine(std::string line)
{
    line += '\n';
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t count = ::write(resultDescriptor, line.data() + done, line.size() - done);
        if (count < 0 && errno != EINTR)
            return; // nobody listens
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

std::string encoded(const char *text)
{
    std::string word;
    for (; *text != '\0' && word.size() < maxText; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", byte);
        word += std::isalnum(byte) != 0 ? std::string(1, *text) : code;
    }
    return word;
}

} // namespace

void announce(Step step)
{
    result("step %d", static_cast<int>(step));
}

void result(const char *format, ...)
{
    char line[200];
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not know va_start here
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    writeLine(line);
}

void textResult(const char *what, const char *text)
{
    writeLine(what + (' ' + encoded(text)));
}

void defect(const char *rule, const std::string &text)
{
    textResult(("defect " + std::string(rule)).c_str(), text.c_str());
}

void note(const char *rule, const std::string &text)
{
    textResult(("note " + std::string(rule)).c_str(), text.c_str());
}

} // namespace Orvia::probe
