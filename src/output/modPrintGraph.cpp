#include "output/modPrintGraph.h"

#include "components/QCReportStore.h"
#include "output/modPrint.h"
#include "platform/ComponentFactory.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"

#include <QColor>
#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>

namespace
{
const QString kSource = QStringLiteral("modPrintGraph");

constexpr qint32 kChartsPerPage = 3;

const QColor kBlack(0, 0, 0);
const QColor kGrey(128, 128, 128);

// Resource numbers of the graph's texts.
constexpr qint16 kTextMean = 4108;
constexpr qint16 kTextCV = 4109;
constexpr qint16 kTextSD = 4110;
constexpr qint16 kTextNoVisits = 4111;
constexpr qint16 kTextNoVisitsTitle = 4087;
constexpr qint16 kTextNoMarks = 4112;

void SetLegendFont(OutputTarget& target)
{
    target.SetFontBold(true);
    target.SetFontSize(10);
    target.SetDrawStyle(0);
}

std::array<QString, 3> LegendLines(const GraphSeries& series)
{
    return {QStringLiteral("  ") + series.TableName, QStringLiteral("  ") + series.VarName,
            QStringLiteral("(") + series.Unit + QStringLiteral(")  ")};
}

// Only blanks count as empty room: a line of other characters is printed.
bool IsBlankLine(const QString& line)
{
    return std::all_of(line.cbegin(), line.cend(), [](QChar c) { return c == QLatin1Char(' '); });
}

// The font a chart leaves behind when it ends on a run-time error.
void ResetChartFont(OutputTarget& target)
{
    target.SetFontBold(false);
    target.SetFontSize(10);
    target.SetDrawStyle(0);
}

QString DescriptionOf(const std::exception& error)
{
    if (const auto* runtime = dynamic_cast<const RuntimeError*>(&error))
        return runtime->description();
    return QString::fromLocal8Bit(error.what());
}

void ShowNoVisitsMessage()
{
    const QString text = GetResourceText(kTextNoVisits);
    const QString title = GetResourceText(kTextNoVisitsTitle);
    MsgBox(text, MsgStyle::Exclamation, title);
}

// A visit's value as the chart reads it: the field joined to an empty text and
// converted to a number, so an empty field is no number and raises a type
// mismatch.
double VisitValue(const QVariant& field)
{
    if (!IsNumeric(field))
        throw RuntimeError(ErrorNumber::TypeMismatch, kSource, QStringLiteral("Type mismatch"));
    return ToDouble(field);
}

// The positions, in the chart's data set in date order, of the readings that
// broke a QC rule: the evaluator was given the readings in that order.
QSet<qsizetype> FlaggedPositions(const QList<QCViolation>& violations)
{
    QSet<qsizetype> positions;
    for (const QCViolation& violation : violations)
        positions.insert(violation.Reading);
    return positions;
}

qint32 DaysBetween(const QDate& from, const QDate& to)
{
    return qint32(std::abs(from.daysTo(to)));
}

QString AxisLabel(double value, qint32 decimals)
{
    return QStringLiteral(" ") + FormatNumber(value, decimals) + QStringLiteral("  ");
}

double AxisStep(double span, qint32 decimals)
{
    return RoundHalfEven(span / 5, decimals + 1);
}

// Calls visit(v) for every labelled value of the axis: from one step above
// axisMin while v stays at least half a step below axisMax. A step that
// rounded to 0, or one too small to move v any more, ends the walk instead of
// repeating the same value for ever.
template <class Visit> void ForEachAxisValue(double axisMin, double axisMax, double step, Visit visit)
{
    if (step == 0)
        return;
    for (double v = axisMin + step; axisMax - step / 2 >= v;)
    {
        visit(v);
        const double next = v + step;
        if (next == v)
            return;
        v = next;
    }
}
} // namespace

bool BuildGraphSeries(const ReportInfo& info, GraphSeriesArray& series, bool siUnits)
{
    series.assign(size_t(info.VariableCount()), GraphSeries());
    size_t built = 0;
    for (qint32 i = 1; i <= info.VariableCount(); ++i)
    {
        const ReportVariable& variable = info.Variable(i);
        if (!variable.ShowInGraph)
            continue;
        GraphSeries& next = series[built];
        // A store object of its own for every variable, released at once.
        {
            const std::unique_ptr<QCReportStore> store =
                ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
            next.Data = store->GetGraphData(info, i, siUnits, next.Mean, next.SD, next.CV);
        }
        next.TableName = variable.TableName;
        next.Note = variable.Note;
        next.VarName = variable.VarName;
        next.Unit = variable.Unit;
        next.DecimalPlaces = variable.DecimalPlaces;
        ++built;
    }
    series.resize(built);
    return built > 0;
}

qint32 CountOpenSeries(const GraphSeriesArray& series)
{
    return qint32(std::count_if(series.cbegin(), series.cend(), [](const GraphSeries& one) {
        return one.Data && one.Data->State() == Recordset::StateOpen;
    }));
}

qint32 GraphPageCount(qint32 count)
{
    if (count < 1)
        return 0;
    if (count <= 2)
        return 1;
    if (count % kChartsPerPage == 0)
        return count / kChartsPerPage;
    return RoundToInt32(double(count) / kChartsPerPage + 0.5);
}

qint32 PrintGraphPage(OutputTarget* target, const ReportInfo& info, const GraphSeriesArray& series, qint32& page,
                      qint32 pageTotal, bool toPrinter)
{
    if (!target)
        return 0;
    try
    {
        const qint32 first = (page - 1) * kChartsPerPage + 1;
        const qint32 last = std::min((page - 1) * kChartsPerPage + kChartsPerPage, qint32(series.size()));
        if (first < 1 || first > last)
            return 0;
        if (CountOpenSeries(series) == 0)
            return 0;

        PageRect area;
        double height = 0;
        double width = 0;
        GetPrintArea(*target, area, height, width);
        const float legendWidth = MeasureLegendColumn(*target, series);

        if (toPrinter)
        {
            if (first > 1)
                target->NewPage();
        }
        else
        {
            target->Cls();
        }

        PrintPageHeader(*target, info.PatientName, info.FromDate, info.ToDate, area);
        PrintPageFooter(*target, page, area, pageTotal);

        const qint32 h = area.Bottom - area.Top;
        const float gap = float(h * 0.5 / 11);
        const float slotHeight = float((h - 2.0 * gap) / kChartsPerPage);
        for (qint32 i = first; i <= last; ++i)
        {
            PageRect slot = GetGraphSlot(area, i, slotHeight, gap);
            const GraphSeries& one = series[size_t(i - 1)];
            PrintGraphLegend(*target, slot, one, legendWidth);
            PrintGraphChart(*target, slot, one, true, true);
        }
        return page + 1;
    }
    catch (const std::exception& error)
    {
        // A failure outside the charts (page frame, legend) ends the page run:
        // the caller stops at 0 and the user learns why.
        ResetChartFont(*target);
        MsgBox(DescriptionOf(error), MsgStyle::Critical);
        return 0;
    }
}

PageRect GetGraphSlot(const PageRect& area, qint32 index, float slotHeight, float gap)
{
    const qint32 row = (index - 1) % kChartsPerPage;
    PageRect slot;
    slot.Left = area.Left;
    slot.Right = area.Right;
    slot.Top = RoundToInt32(row * double(slotHeight) + area.Top + row * double(gap));
    slot.Bottom = RoundToInt32(double(slotHeight) + slot.Top);
    return slot;
}

float MeasureLegendColumn(OutputTarget& target, const GraphSeriesArray& series)
{
    SetLegendFont(target);
    double widest = 0;
    for (const GraphSeries& one : series)
    {
        for (const QString& line : LegendLines(one))
            widest = std::max(widest, target.TextWidth(line));
    }
    return float(widest);
}

void PrintGraphLegend(OutputTarget& target, PageRect& slot, const GraphSeries& series, float legendWidth)
{
    SetLegendFont(target);
    const std::array<QString, 3> lines = LegendLines(series);
    double total = 0;
    for (const QString& line : lines)
        total += target.TextHeight(line);
    target.SetCurrentY(slot.Top + ((slot.Bottom - slot.Top) - total) / 2);
    for (const QString& line : lines)
    {
        if (IsBlankLine(line))
            continue;
        target.SetCurrentX(slot.Left);
        target.Print(line);
    }
    slot.Left = RoundToInt32(slot.Left + double(legendWidth));
}

bool ScanSeriesRange(Recordset& data, qint32& recordCount, QDate& firstDate, QDate& lastDate, double& valueMin,
                     double& valueMax)
{
    if (data.IsBOF() && data.IsEOF())
    {
        ShowNoVisitsMessage();
        return false;
    }
    recordCount = data.RecordCount();

    data.Sort(data.FieldName(0) + QStringLiteral(" ASC"));
    data.MoveFirst();
    const QDate first = ToDate(data.Value(0));
    data.MoveLast();
    const QDate last = ToDate(data.Value(0));
    if (!first.isValid() || !last.isValid())
    {
        ShowNoVisitsMessage();
        return false;
    }
    firstDate = first;
    lastDate = last;

    // Zero stands for a missing value: the smallest value is the first
    // non-zero one in value order.
    data.Sort(data.FieldName(1) + QStringLiteral(" ASC"));
    data.MoveFirst();
    while (!data.IsEOF() && valueMin == 0)
    {
        valueMin = VisitValue(data.Value(1));
        data.MoveNext();
    }
    data.MoveLast();
    valueMax = VisitValue(data.Value(1));
    return true;
}

bool PrintGraphChart(OutputTarget& target, PageRect& plot, const GraphSeries& series, bool showStatistics,
                     bool drawFrame)
{
    try
    {
        if (!series.Data || !series.Data->IsOpen())
            return false;
        Recordset& data = *series.Data;

        qint32 recordCount = 0;
        QDate firstDate;
        QDate lastDate;
        double valueMin = 0;
        double valueMax = 0;
        if (!ScanSeriesRange(data, recordCount, firstDate, lastDate, valueMin, valueMax))
            return false;
        if (valueMin == 0 && valueMax == 0)
        {
            valueMin = -1;
            valueMax = 1;
        }

        data.Sort(data.FieldName(0) + QStringLiteral(" ASC"));
        if (!data.IsBOF())
            data.MoveFirst();

        // The control limits always lie inside the chart.
        const double mean = series.Mean;
        const double upper = series.SD + series.SD + mean;
        const double lower = mean - (series.SD + series.SD);
        valueMax = std::max(valueMax, upper);
        valueMin = std::min(valueMin, lower);

        const qint32 daySlots = DaysBetween(firstDate, lastDate) + 2;

        // The mean sits in the middle of the value range.
        const double up = std::abs(valueMax - mean);
        const double down = std::abs(mean - valueMin);
        if (up <= down)
            valueMax = mean + down;
        else
            valueMin = mean - up;

        if (valueMin == valueMax)
        {
            valueMin = valueMin - valueMin * 0.1;
            valueMax = valueMax + valueMax * 0.1;
        }

        const double margin = std::abs(valueMax - valueMin) * 0.1;
        const double axisMax = valueMax + margin;
        const double axisMin = valueMin - margin;
        const double span = std::abs(axisMax - axisMin);

        const float labelWidth = MeasureAxisLabels(target, axisMin, axisMax, span, plot, series.DecimalPlaces);
        if (showStatistics)
            PrintStatisticsLine(target, plot, mean, series.SD, series.CV, labelWidth);

        const double yScale = (plot.Bottom - plot.Top) / span;
        const auto yOf = [&plot, axisMin, yScale](double value) { return plot.Bottom - (value - axisMin) * yScale; };

        PrintValueAxis(target, axisMin, axisMax, span, yScale, plot, labelWidth, series.DecimalPlaces);

        // The first and the last visit sit one step inside the frame.
        const double xStep = double(plot.Right - plot.Left) / daySlots;

        if (drawFrame)
        {
            target.SetDrawWidth(4);
            target.Line(plot.Left, plot.Top, plot.Right, plot.Bottom, kBlack, true);
            target.SetDrawWidth(1);
        }

        if (data.IsBOF() && data.IsEOF())
        {
            target.SetFontSize(8);
            const QString text = GetResourceText(kTextNoMarks);
            target.SetCurrentX(plot.Left + ((plot.Right - plot.Left) - target.TextWidth(text)) / 2);
            target.SetCurrentY(plot.Top + ((plot.Bottom - plot.Top) - target.TextHeight(text)) / 2);
            target.Print(text);
            return true;
        }

        // The pen is set wide and grey, then at once black and one pixel wide:
        // the control lines come out black and thin, as they always have.
        target.SetDrawWidth(4);
        target.SetForeColor(kGrey);
        target.SetForeColor(kBlack);
        target.SetDrawWidth(1);
        const double yMean = yOf(mean);
        const double yUpper = yOf(upper);
        const double yLower = yOf(lower);
        target.Line(plot.Left, yMean, plot.Right, yMean);
        target.SetDrawStyle(2);
        target.Line(plot.Left, yUpper, plot.Right, yUpper);
        target.Line(plot.Left, yLower, plot.Right, yLower);
        target.SetDrawStyle(0);

        // Labels just right of the frame. Limits that fall on the same line in
        // single precision (SD 0, or next to it) share one label.
        target.SetFontBold(false);
        target.SetFontSize(6);
        const auto printLimitLabel = [&target, &plot](const QString& label, double y) {
            target.SetCurrentX(plot.Right);
            target.SetCurrentY(y - target.TextHeight(label) / 2);
            target.Print(label);
        };
        if (float(yUpper) == float(yLower))
        {
            printLimitLabel(QStringLiteral(" \u00B1 2SD"), yUpper);
        }
        else
        {
            printLimitLabel(QStringLiteral(" + 2SD"), yUpper);
            printLimitLabel(QStringLiteral(" - 2SD"), yLower);
        }

        // One circled cross per visit with a value; 2 % of the plot's height
        // across. A visit that broke a QC rule is a filled disc instead.
        const double radius = std::abs(yScale * span * 0.02);
        const QSet<qsizetype> flagged = FlaggedPositions(series.Violations);
        target.SetDrawStyle(0);
        target.SetFontBold(true);
        target.SetDrawWidth(5);
        const double firstX = plot.Left + xStep;
        for (qsizetype position = 0; !data.IsEOF(); ++position)
        {
            const QDate visitDate = ToDate(data.Value(0));
            if (visitDate.isValid())
            {
                const double value = VisitValue(data.Value(1));
                if (value != 0)
                {
                    const double x = DaysBetween(firstDate, visitDate) * xStep + firstX;
                    const double y = yOf(value);
                    if (flagged.contains(position))
                    {
                        target.Disc(x, y, radius, kBlack);
                    }
                    else
                    {
                        target.PSet(x, y, kBlack);
                        target.Circle(x, y, radius, kBlack);
                        target.Line(x - radius, y, x + radius, y);
                        target.Line(x, y - radius, x, y + radius);
                    }
                }
            }
            data.MoveNext();
        }

        target.SetFontBold(false);
        target.SetDrawWidth(1);
        return true;
    }
    catch (const std::exception&)
    {
        ResetChartFont(target);
        return false;
    }
}

float MeasureAxisLabels(OutputTarget& target, double axisMin, double axisMax, double span, const PageRect& plot,
                        qint32 decimals)
{
    const double step = AxisStep(span, decimals);
    target.SetFontBold(false);
    target.SetFontSize(8);
    double widest = 0;
    ForEachAxisValue(axisMin, axisMax, step,
                     [&](double v) { widest = std::max(widest, target.TextWidth(AxisLabel(v, decimals))); });
    const double tick = (plot.Right - plot.Left) * 0.02;
    return float(widest + tick / 2);
}

void PrintValueAxis(OutputTarget& target, double axisMin, double axisMax, double span, double yScale, PageRect& plot,
                    float labelWidth, qint32 decimals)
{
    const double step = AxisStep(span, decimals);
    target.SetFontBold(false);
    target.SetFontSize(8);
    plot.Left = RoundToInt32(plot.Left + double(labelWidth));
    const double tick = (plot.Right - plot.Left) * 0.02;
    const double tickLeft = plot.Left - tick / 2;
    ForEachAxisValue(axisMin, axisMax, step, [&](double v) {
        const QString label = AxisLabel(v, decimals);
        const double y = plot.Bottom - (v - axisMin) * yScale;
        target.SetCurrentX(plot.Left - target.TextWidth(label) - tick / 2);
        target.SetCurrentY(y - target.TextHeight(label) / 2);
        target.Print(label);
        target.Line(tickLeft, y, tickLeft + tick, y);
    });
}

void PrintStatisticsLine(OutputTarget& target, PageRect& plot, double mean, double sd, double cv, float labelWidth)
{
    try
    {
        target.SetFontBold(false);
        target.SetFontSize(10);
        const float x0 = float(plot.Left + double(labelWidth));
        const float width = float(plot.Right - x0);

        const QString meanText = GetResourceText(kTextMean) + QStringLiteral(": ") + GeneralNumberText(mean);
        const double h = target.TextHeight(meanText);
        const double y = plot.Bottom - h;
        target.SetCurrentX(x0);
        target.SetCurrentY(y);
        target.Print(meanText);

        const QString cvText =
            GetResourceText(kTextCV) + QStringLiteral(": ") + GeneralNumberText(cv * 100) + QStringLiteral("%");
        const double cvWidth = target.TextWidth(cvText);
        target.SetCurrentX(x0 + width - cvWidth);
        target.SetCurrentY(y);
        target.Print(cvText);

        // The SD text stands at the middle of the room the CV text leaves, measured
        // with the CV text's width, not its own: that is where it has always stood.
        const QString sdText = GetResourceText(kTextSD) + QStringLiteral(": ") + GeneralNumberText(sd);
        target.SetCurrentX(x0 + (width - cvWidth) / 2);
        target.SetCurrentY(y);
        target.Print(sdText);

        plot.Bottom = RoundToInt32(plot.Bottom - 1.25 * h);
    }
    catch (const std::exception& error)
    {
        MsgBox(DescriptionOf(error), MsgStyle::Critical);
    }
}
