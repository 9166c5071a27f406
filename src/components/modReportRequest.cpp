#include "components/modReportRequest.h"

#include "platform/VbConversions.h"
#include "platform/modResource.h"

#include <QStringList>

namespace
{
constexpr qint16 DefaultNameText = 4087; // "QC Report", when a request names nothing

// A part of a file name: characters no file system takes become "-", blanks
// around it go.
QString FileNamePart(const QString& text)
{
    QString part = text.trimmed();
    for (QChar& c : part)
    {
        if (c.unicode() < 0x20 || QStringLiteral("/\\:*?\"<>|").contains(c))
            c = QLatin1Char('-');
    }
    return part;
}
} // namespace

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

QString ProposedReportFileName(const ReportInfo& info, const QString& definitionName)
{
    const QString subject = FileNamePart(info.PatientID + QLatin1Char(' ') + info.PatientName);
    const QString from = FileNamePart(info.FromDate);
    const QString to = FileNamePart(info.ToDate);
    QString period;
    if (!from.isEmpty() && !to.isEmpty())
        period = from + QStringLiteral(" to ") + to;
    else if (!to.isEmpty())
        period = QStringLiteral("up to ") + to;
    else
        period = from;

    QStringList parts;
    for (const QString& part : {subject, period, FileNamePart(definitionName)})
    {
        if (!part.isEmpty())
            parts.append(part);
    }
    const QString name = parts.isEmpty() ? GetResourceText(DefaultNameText) : parts.join(QStringLiteral(", "));
    return name + QStringLiteral(".pdf");
}
