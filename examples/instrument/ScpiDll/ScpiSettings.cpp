#include "examples/instrument/ScpiDll/ScpiSettings.h"

#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiMessage.h"
#include "examples/instrument/ScpiDll/ScpiNumber.h"
#include "examples/instrument/ScpiDll/ScpiSession.h"

namespace Orvia {

namespace {

double parse(std::string_view text, const ScpiSetting &row)
{
    if (row.quantity == ScpiQuantity::Switch)
        return parseBoolean(text) ? 1 : 0;
    return parseSetting(text, row.setting, row.quantity);
}

double answer(const ScpiSession &session, const ScpiSetting &row, const ScpiUnit &unit)
{
    if (unit.parameters.empty())
        return storedNumber(session.instrument().settings, row.setting);
    const std::optional<double> named = namedValue(unit.parameters[0], row.setting);
    if (!named)
        throw ScpiError{ScpiDataTypeError, std::string(unit.parameters[0])};
    return *named;
}

} // namespace

bool runScpiSetting(ScpiSession *session, const ScpiSetting &setting, const ScpiUnit &unit,
                    std::string *response)
{
    std::string_view header = unit.header;
    const bool isQuery = header.ends_with('?');
    if (isQuery)
        header.remove_suffix(1);
    if (!matchesHeader(setting.header, header))
        return false;
    if (isQuery) {
        checkParameterCount(unit, 0, setting.quantity == ScpiQuantity::Switch ? 0 : 1);
        *response = numberText(answer(*session, setting, unit));
    } else {
        checkParameterCount(unit, 1, 1);
        session->store({{setting.setting.key, numberText(parse(unit.parameters[0], setting))}});
    }
    return true;
}

void checkParameterCount(const ScpiUnit &unit, std::size_t minimum, std::size_t maximum)
{
    if (unit.parameters.size() < minimum)
        throw ScpiError{ScpiMissingParameter, unit.header};
    if (unit.parameters.size() > maximum)
        throw ScpiError{ScpiParameterNotAllowed, unit.header};
}

} // namespace Orvia
