#include "output/modPrint.h"

#include "output/ReportFonts.h"
#include "platform/Clock.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"

namespace
{
// Report texts by their string-server numbers.
constexpr qint16 IdPatientLabel = 4022;
constexpr qint16 IdPeriodLabel = 4040;
constexpr qint16 IdPageWord = 4084;
constexpr qint16 IdTitle = 4104;
constexpr qint16 IdFromToday = 4105;
constexpr qint16 IdOfWord = 4106;

void SetReportFont(OutputTarget& target, bool bold, double size)
{
    target.SetFont(ReportFonts::typeface());
    target.SetFontBold(bold);
    target.SetFontSize(size);
    target.SetDrawStyle(0);
}
} // namespace

void SetTitleFont(OutputTarget& target)
{
    SetReportFont(target, true, 14);
}

void SetHeadingFont(OutputTarget& target)
{
    SetReportFont(target, false, 10);
}

void SetSmallFont(OutputTarget& target)
{
    SetReportFont(target, false, 8);
}

void GetPrintArea(OutputTarget& target, PageRect& area, double& height, double& width)
{
    // The margins are kept in single precision, as the page's own scale is.
    const float marginY = float(target.ScaleHeight() * (0.5 / 11));
    const float marginX = float(target.ScaleWidth() * (0.5 / 8.5));

    area.Left = RoundToInt32(double(float(target.ScaleLeft()) + marginX));
    area.Top = RoundToInt32(double(float(target.ScaleTop()) + marginY));
    area.Right = RoundToInt32(target.ScaleWidth() + area.Left - 2.0 * marginX);
    area.Bottom = RoundToInt32(target.ScaleHeight() + area.Top - 2.0 * marginY);

    height = double(area.Bottom) - area.Top;
    width = double(area.Right) - area.Left;
}

void PrintPageHeader(OutputTarget& target, const QString& patientName, const QString& fromDate, const QString& toDate,
                     PageRect& area)
{
    const QString today = FormatMonthDayYear(Clock::today());

    SetTitleFont(target);
    const QString title = GetResourceText(IdTitle);
    target.SetCurrentX(area.Left);
    target.SetCurrentY(area.Top);
    target.Print(title);
    double height = target.TextHeight(title);

    // Today's date stands right-aligned on the title line.
    SetHeadingFont(target);
    target.SetCurrentX(area.Right - target.TextWidth(today));
    target.SetCurrentY(area.Top);
    target.Print(today);

    // A report asked for "from today on" names that period by its own text.
    const QString period = (fromDate == today && toDate.isEmpty()) ? GetResourceText(IdFromToday)
                                                                   : fromDate + QStringLiteral(" - ") + toDate;
    const QString periodLine = GetResourceText(IdPeriodLabel) + QStringLiteral(":  ") + period;
    target.SetCurrentX(area.Left);
    target.SetCurrentY(area.Top + height);
    target.Print(periodLine);
    height += target.TextHeight(periodLine);

    target.SetCurrentX(area.Left);
    target.SetCurrentY(area.Top + height);
    target.Print(GetResourceText(IdPatientLabel) + QStringLiteral(":  ") + patientName);

    area.Top = RoundToInt32(area.Top + HeaderHeight(target));
}

void PrintPageFooter(OutputTarget& target, qint32 pageNumber, PageRect& area, qint32 pageTotal)
{
    SetSmallFont(target);

    QString text = GetResourceText(IdPageWord) + QLatin1Char(' ') + QString::number(pageNumber);
    if (pageTotal > 0)
        text += QLatin1Char(' ') + GetResourceText(IdOfWord) + QLatin1Char(' ') + QString::number(pageTotal);

    target.SetCurrentX(area.Left + ((double(area.Right) - area.Left) - target.TextWidth(text)) / 2);
    target.SetCurrentY(area.Bottom - target.TextHeight(text));
    target.Print(text);

    area.Bottom = RoundToInt32(area.Bottom - FooterHeight(target));
}

double HeaderHeight(OutputTarget& target)
{
    // One title line and four heading lines: the last two heading lines are
    // the blank band between the header and the report.
    SetTitleFont(target);
    float height = float(target.TextHeight(QStringLiteral("X")));
    SetHeadingFont(target);
    const float headingLine = float(target.TextHeight(QStringLiteral("X")));
    height += 2 * headingLine;
    height += 2 * headingLine;
    return height;
}

double FooterHeight(OutputTarget& target)
{
    SetSmallFont(target);
    return float(3 * target.TextHeight(QStringLiteral("X")));
}
