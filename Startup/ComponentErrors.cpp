#include "Startup/ComponentErrors.h"

#include "platform/ErrorManager.h"

namespace Orvia {

namespace {

constexpr int componentRegistrationId = 11;

constexpr CErrorManager::SErrorDefinition componentErrors[] = {
    {90000, 1, -300, 0, "", "", ""},
    {90001, 1, -300, 0, "", "", ""},
    {90002, 2, 50, 0, "Sav/Rcl Manager Warning: property bag contains no data", "", ""},
    {90003, 2, 50, 0, "Sav/Rcl Manager Warning: got invalid data of property bag", "", ""},
    {90004, 3, 0, 0, "Sav/Rcl Manager Info: operation complete", "", ""},
    {90005, 3, 0, 0, "Sav/Rcl Handler Info", "", ""},
    {90006, 3, 0, 0, "SCPI Handler Info: goto local not accepted", "", ""},
    {90007, 1, -300, 0, "Sav/Rcl Handler Error: got invalid data of database", "", ""},
    {90008, 1, -300, 0, "Sav/Rcl Handler Error: no answer of database", "", ""},
    {90009, 1, -300, 0, "Sav/Rcl Handler Error: got invalid key of database", "", ""},
    {90010, 2, 50, 0, "Sav/Rcl Handler Warning: got empty data container", "", ""},
    {90011, 1, -300, 0, "SCPI Manager Error", "", ""},
    {90012, 3, 0, 0, "Print Handler Info", "", ""},
    {90013, 2, 0, 0, "Print Handler Warning", "", ""},
    {-1, 0, 0, 0, "", "", ""},
};

} // namespace

void registerVQMComponentsErrors()
{
    static bool registered = false;
    if (registered)
        return;
    registered = true; // before the call: a registration that fails is not tried again
    ErrorManager()->registerErrors(componentErrors, componentRegistrationId);
}

} // namespace Orvia
