#include "Startup/StartupErrors.h"

#include "platform/ErrorManager.h"

namespace Orvia {

namespace {

constexpr int startupRegistrationId = 2;

constexpr CErrorManager::SErrorDefinition startupErrors[] = {
    {10000, 1, -310, 0, "Startup error", "", ""},
    {10001, 1, -310, 0, "Startup module not found", "", ""},
    {10002, 1, -310, 0, "Startup plugin module not found", "", ""},
    {10003, 1, -310, 0, "Startup plugin directory not found", "", ""},
    {10004, 1, -310, 0, "Startup interface method not found", "", ""},
    {10005, 1, -310, 0, "No data", "", ""},
    {10006, 1, -310, 0, "Invalid data", "", ""},
    {10007, 3, 0, 0, "Sav/Rcl Handler Info", "", ""},
    {10008, 3, 50, 0, "Startup unkown option ", "", ""},
    {10009, 1, -300, 1,
     "Date and time are set to an illegal value. "
     "Please check the date and time settings in dialog Setup -> Date / Time.",
     "", ""},
    {-1, 0, 0, 0, "", "", ""},
};

} // namespace

void registerStartupErrors()
{
    static bool registered = false;
    if (registered)
        return;
    registered = true;
    ErrorManager()->registerErrors(startupErrors, startupRegistrationId);
}

} // namespace Orvia
