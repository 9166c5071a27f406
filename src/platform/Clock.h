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
};
