#include "examples/instrument/ScpiDll/MessageBuffer.h"
#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiExtensions.h"
#include "examples/instrument/ScpiDll/ScpiSession.h"
#include "platform/ErrorManager.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/instrument/FakeSettings.h"

#include <algorithm>
#include <optional>
#include <vector>

// What a client of the remote control sends. The first byte says in how long pieces it arrives; a shift-out
// byte stands for many blanks, so that short inputs, too, make lines that are too long.

namespace Orvia {

namespace {

constexpr ScpiSetting settingRows[] = {
    {"[:SOURce]:TEST:FREQuency", {"test/frequency", 0, 1e9, 1}, ScpiQuantity::Frequency},
    {"[:SOURce]:TEST:LEVel", {"test/level", -10, 10, 1}, ScpiQuantity::Level},
    {"[:SOURce]:TEST:RATio", {"test/ratio", 0, 100, 1}, ScpiQuantity::Ratio},
    {"[:SOURce]:TEST:TIME", {"test/time", 1e-9, 10, 1}, ScpiQuantity::Time},
    {"[:SOURce]:TEST:PERCent", {"test/percent", 0, 100, 1}, ScpiQuantity::Percent},
    {"[:SOURce]:TEST:COUNt", {"test/count", 0, 9, 2}, ScpiQuantity::Count},
    {"[:SOURce]:TEST:STATe", {"test/state", 0, 1, 0}, ScpiQuantity::Switch},
};

std::string stream(const std::uint8_t *data, std::size_t size)
{
    std::string bytes;
    for (const std::uint8_t *byte = data; byte != data + size; ++byte) {
        if (*byte != '\x0e')
            bytes += static_cast<char>(*byte);
        else if (bytes.size() < 3 * MessageBuffer::maxLength) // soon enough
            bytes.append(MessageBuffer::maxLength / 2, ' ');
    }
    return bytes;
}

/// The lines of the stream that arrives in pieces; none for one that was too long.
using Lines = std::vector<std::optional<std::string>>;
Lines cut(const std::string &bytes, std::size_t length)
{
    Lines lines;
    MessageBuffer buffer;
    for (std::size_t at = 0; at < bytes.size(); at += length) {
        buffer.append(std::string_view(bytes).substr(at, length));
        std::string_view message;
        for (auto piece = buffer.next(&message); piece != MessageBuffer::Piece::Nothing;
             piece = buffer.next(&message)) {
            if (piece == MessageBuffer::Piece::Overrun)
                lines.emplace_back();
            else
                lines.emplace_back(message);
        }
    }
    return lines;
}

class Instrument
{
public:
    Instrument()
    {
        registerScpiErrors();
        ErrorManager()->destroyAllAnnouncements();
        m_extensions.add(this, {{std::begin(settingRows), std::end(settingRows)},
                                {{"[:SOURce]:TEST:THIRd?", [](const SettingsDatabase &database) {
                                      return storedNumber(database, settingRows[0].setting) / 3;
                                  }}}});
    }
    ~Instrument() { withdrawScpiErrors(); }

    void run(const std::string &line)
    {
        const std::string response = m_session.execute(line);
        require(std::all_of(response.begin(), response.end(), [](char c) { return c >= ' ' && c <= '~'; }),
                "a response is one line of text");
        require(ErrorManager()->announcements().size() <= CErrorManager::queueLength,
                "the error queue is of bounded length");
        checkSettings();
    }

    void overrun() { m_session.report({ScpiInputBufferOverrun, std::string()}); }

private:
    void checkSettings() const
    {
        checkSetting(frequencySetting);
        checkSetting(levelSetting);
        checkSetting({outputKey, 0, 1, 0});
        for (const ScpiSetting &row : settingRows)
            checkSetting(row.setting);
    }

    void checkSetting(NumberSetting setting) const
    {
        setting.defaultValue = setting.minimum - 1; // of what is no number within the range
        const auto stored = m_settings.values.find(setting.key);
        require(stored == m_settings.values.end() ||
                    settingNumber(stored->second, setting) != setting.defaultValue,
                "what is stored is a number within its range");
    }

    FakeSettings m_settings;
    ScpiExtensions m_extensions;
    ScpiInstrument m_instrument{m_settings, "Orvia,SG-100,1,1.0.0", [] { return 0; }, m_extensions};
    ScpiSession m_session{m_instrument};
};

} // namespace

} // namespace Orvia

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace Orvia;
    const TimeLimit limit;
    if (size < 2)
        return -1;
    const std::string bytes = stream(data + 1, size - 1);
    const Lines lines = cut(bytes, bytes.size());
    require(cut(bytes, data[0] + 1u) == lines, "lines are the same in whatever pieces they arrive");
    Instrument instrument;
    for (const std::optional<std::string> &line : lines) {
        if (line)
            instrument.run(*line);
        else
            instrument.overrun();
    }
    return 0;
}
