#include "platform/Clock.h"

namespace
{
QDateTime g_pinned;
}

QDateTime Clock::now()
{
    return g_pinned.isValid() ? g_pinned : QDateTime::currentDateTime();
}

QDate Clock::today()
{
    return now().date();
}

void Clock::pin(const QDateTime& moment)
{
    g_pinned = moment;
}

void Clock::advanceSeconds(qint64 seconds)
{
    g_pinned = now().addSecs(seconds);
}
