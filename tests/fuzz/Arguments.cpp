#include "Startup/VQMIntegrationStartup.h"
#include "launcher/CommandLine.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <string>
#include <vector>

// Program arguments, one a line: as the launcher reads them and as the startup object does.

namespace Orvia {

namespace {

/// Words as main() is given them, the program's name first. The texts stay where they are.
class Arguments
{
public:
    explicit Arguments(std::string_view lines) : m_text("mainstartup\n" + std::string(lines))
    {
        std::replace(m_text.begin(), m_text.end(), '\n', '\0');
        for (std::size_t at = 0; at < m_text.size(); at = m_text.find('\0', at) + 1) {
            m_words.push_back(&m_text[at]);
            if (m_text.find('\0', at) == std::string::npos)
                break;
        }
        m_words.push_back(nullptr);
    }
    int count() const { return static_cast<int>(m_words.size()) - 1; }
    char **words() { return m_words.data(); }

private:
    std::string m_text;
    std::vector<char *> m_words;
};

void checkUnderstood(const CommandLine &read)
{
    require(read.check.isEmpty() == (read.loadList != nullptr),
            "there is one configuration, to start or to check");
    require(!read.family || *read.family != 0, "a family is not empty");
    const bool starts =
        read.offscreen || read.headless || read.until || read.strict || !read.skipped.isEmpty();
    require(read.check.isEmpty() ? !read.probe && !read.json : !starts,
            "options of starting and of checking do not go together");
}

} // namespace

} // namespace Orvia

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace Orvia;
    const TimeLimit limit;
    Arguments arguments({reinterpret_cast<const char *>(data), size});
    constexpr auto neither = static_cast<ExitCode>(-1);
    ExitCode exitCode = neither;
    const std::optional<CommandLine> read = parseCommandLine(arguments.count(), arguments.words(), &exitCode);
    if (!read) {
        require(exitCode == ExitCode::AllWell || exitCode == ExitCode::Usage,
                "an exit code says why it ends");
        return 0;
    }
    require(exitCode == neither, "there is no exit code while the program goes on");
    checkUnderstood(*read);
    VQMIntegrationStartup startup(-1);
    startup.setProgArgument(arguments.count(), arguments.words());
    require(startup.getProgArgument() == read->loadList,
            "launcher and startup object see the same load list");
    return 0;
}
