#include "output/ReportFonts.h"

#include <QFont>
#include <QFontInfo>

QString ReportFonts::verifyArial()
{
    return QFontInfo(QFont(typeface())).family();
}

bool ReportFonts::arialIsMetricCompatible()
{
    const QString family = verifyArial();
    return family == typeface() || family == QLatin1String("Liberation Sans");
}
