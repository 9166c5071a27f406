#pragma once

#include <QString>

// The typeface of every report page. Page layouts measure text, so the font
// that "Arial" resolves to must have Arial's metrics: Arial itself, or on
// Linux the metric-compatible Liberation Sans (Debian fonts-liberation2).
class ReportFonts
{
public:
    static QString typeface() { return QStringLiteral("Arial"); }

    // The family that "Arial" resolves to on this machine.
    static QString verifyArial();
    // True when that family is Arial or Liberation Sans.
    static bool arialIsMetricCompatible();
};
