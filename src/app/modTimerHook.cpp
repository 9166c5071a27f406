#include "app/modTimerHook.h"

#include "app/ActivityFilter.h"
#include "platform/RuntimeError.h"

#include <QApplication>
#include <QPointer>

#include <limits>

namespace
{
// The installed filter; it belongs to the application object, so that it
// never outlives it.
QPointer<ActivityFilter> activityFilter;
// Beep's sound; empty for the system beep.
std::function<void()> beepSound;
} // namespace

void InstallActivityHooks(ProgramState& state)
{
    if (state.lngLogoutSeconds > 0)
    {
        if (!activityFilter)
        {
            activityFilter = new ActivityFilter(state, QCoreApplication::instance());
            QCoreApplication::instance()->installEventFilter(activityFilter);
        }
        state.intIdleSeconds = 0;
    }
}

void RemoveActivityHooks(const ProgramState& state)
{
    if (state.lngLogoutSeconds > 0 && activityFilter)
    {
        QCoreApplication::instance()->removeEventFilter(activityFilter);
        delete activityFilter.data();
    }
}

qint16 AddSecond(qint16 seconds)
{
    if (seconds == std::numeric_limits<qint16>::max())
        throw RuntimeError(ErrorNumber::Overflow, QStringLiteral("modTimerHook"), QStringLiteral("Overflow"));
    return qint16(seconds + 1);
}

void Beep()
{
    if (beepSound)
        beepSound();
    else
        QApplication::beep();
}

void SetBeepFunction(std::function<void()> beep)
{
    beepSound = std::move(beep);
}
