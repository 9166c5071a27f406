#include "components/modReportRequest.h"

#include "platform/VbConversions.h"

#include <QStringList>

bool IsValidDateRange(const QString& fromText, const QString& toText)
{
    const QString from = fromText.trimmed();
    const QString to = toText.trimmed();
    if (!IsDate(to))
        return false;
    if (from.isEmpty())
        return true;
    return IsDate(from) && ToDate(to) > ToDate(from);
}

QString FormatPatientName(const QString& firstName, const QString& midName, const QString& lastName)
{
    QStringList parts;
    for (const QString& part : {firstName, midName, lastName})
    {
        if (!part.isEmpty())
            parts.append(part);
    }
    return parts.join(QLatin1Char(' '));
}
