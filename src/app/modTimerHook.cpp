#include "app/modTimerHook.h"

#include "app/ActivityFilter.h"
#include "platform/RuntimeError.h"

#include <QApplication>

#include <limits>

void InstallActivityHooks(ProgramState& state)
{
    if (state.lngLogoutSeconds > 0)
    {
        if (!state.activityFilter)
        {
            // The filter's parent is the application object, so that it never
            // outlives it.
            state.activityFilter = new ActivityFilter(state, QCoreApplication::instance());
            QCoreApplication::instance()->installEventFilter(state.activityFilter);
        }
        state.intIdleSeconds = 0;
    }
}

void RemoveActivityHooks(ProgramState& state)
{
    if (state.lngLogoutSeconds > 0 && state.activityFilter)
    {
        QCoreApplication::instance()->removeEventFilter(state.activityFilter);
        delete state.activityFilter.data();
    }
}

qint16 AddSecond(qint16 seconds)
{
    if (seconds == std::numeric_limits<qint16>::max())
        throw RuntimeError(ErrorNumber::Overflow, QStringLiteral("modTimerHook"), QStringLiteral("Overflow"));
    return qint16(seconds + 1);
}

void Beep(const ProgramState& state)
{
    if (state.beepSound)
        state.beepSound();
    else
        QApplication::beep();
}
