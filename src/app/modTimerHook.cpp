#include "app/modTimerHook.h"

#include "components/modCalcObject.h"

bool blnLogoutPending = false;

void InstallActivityHooks()
{
    if (lngLogoutSeconds > 0)
    {}
}

void RemoveActivityHooks()
{
    if (lngLogoutSeconds > 0)
    {}
}
