#include "examples/instrument/ScpiDll/ScpiExtensions.h"

#include "examples/instrument/ScpiDll/ScpiMessage.h"
#include "examples/instrument/ScpiDll/ScpiSession.h"
#include "examples/instrument/ScpiDll/ScpiSettings.h"

#include <charconv>

namespace Orvia {

namespace {

/// Without the last digits, which come from calculating in binary.
double withTwelveDigits(double number)
{
    char text[32];
    const std::to_chars_result end =
        std::to_chars(text, text + sizeof text, number, std::chars_format::scientific, 11);
    std::from_chars(text, end.ptr, number);
    return number;
}

} // namespace

void ScpiExtensions::add(const void *owner, ScpiTable table)
{
    const std::lock_guard lock(m_mutex);
    m_tables.emplace_back(owner, std::move(table));
}

void ScpiExtensions::remove(const void *owner)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_tables, [owner](const auto &entry) { return entry.first == owner; });
}

bool ScpiExtensions::run(ScpiSession *session, const ScpiUnit &unit, std::string *response) const
{
    const std::lock_guard lock(m_mutex);
    for (const auto &[owner, table] : m_tables) {
        for (const ScpiSetting &setting : table.settings) {
            if (runScpiSetting(session, setting, unit, response))
                return true;
        }
        for (const ScpiQuery &query : table.queries) {
            if (matchesHeader(query.header, unit.header)) {
                checkParameterCount(unit, 0, 0);
                *response = numberText(withTwelveDigits(query.answer(session->instrument().settings)));
                return true;
            }
        }
    }
    return false;
}

SettingsMap ScpiExtensions::defaults() const
{
    const std::lock_guard lock(m_mutex);
    SettingsMap defaults;
    for (const auto &[owner, table] : m_tables) {
        for (const ScpiSetting &row : table.settings)
            defaults.emplace(row.setting.key, numberText(row.setting.defaultValue));
    }
    return defaults;
}

} // namespace Orvia
