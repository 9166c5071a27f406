#pragma once

#include <QDate>
#include <QDateTime>

// The program's one source of "now" and "today". Tests pin it.
class Clock
{
public:
    static QDateTime now();
    static QDate today();

    // Pins the clock to a fixed moment; an invalid value lets it run again.
    static void pin(const QDateTime& moment);
    // Moves a pinned clock on by the seconds given (back for a negative
    // count); a running clock is pinned at the present moment first.
    static void advanceSeconds(qint64 seconds);
};
