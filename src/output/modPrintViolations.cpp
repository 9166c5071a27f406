#include "output/modPrintViolations.h"

#include "components/QCReportStore.h"
#include "output/modPrint.h"
#include "output/modPrintTable.h"
#include "platform/ComponentFactory.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "rules/QCRuleEvaluator.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <memory>

namespace
{
// Resource numbers of the pages' texts.
constexpr qint16 kTextTitle = 4130;
constexpr qint16 kTextNone = 4131;
constexpr qint16 kTextDate = 4132;

constexpr int kColumns = 5;
constexpr int kValueColumn = 3;
// Rows are a quarter line taller than the text, as the table's.
constexpr double kRowSpacing = 1.25;
// The list starts below the title, a blank line and the column headings,
// and a quarter line more.
constexpr double kHeadingLine = 2;
constexpr double kFirstRowLine = 3.25;

const QString kX = QStringLiteral("X");
// Room between two columns: two characters of the body font.
const QString kGap = QStringLiteral("XX");

const QString kDlco = QStringLiteral("DLCO");

QStringList Headings()
{
    QStringList headings;
    for (qint16 id = kTextDate; id < kTextDate + kColumns; ++id)
        headings.append(GetResourceText(id));
    return headings;
}

// The IDs of the tab's catalogue variables named DLCO.
QSet<qint32> DlcoVariables(qint16 tab, bool siUnits)
{
    QSet<qint32> ids;
    const std::unique_ptr<QCReportStore> store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    const RecordsetPtr catalogue = store->ListVariables(siUnits, tab);
    if (!catalogue || !catalogue->IsOpen())
        return ids;
    if (!catalogue->IsBOF())
        catalogue->MoveFirst();
    for (; !catalogue->IsEOF(); catalogue->MoveNext())
    {
        const QString name = TextOf(catalogue->Value(QStringLiteral("VarUserName"))).trimmed();
        if (name.compare(kDlco, Qt::CaseInsensitive) == 0)
            ids.insert(WholeNumberOfZeroPrefixed(catalogue->Value(QStringLiteral("VarID"))));
    }
    return ids;
}

// The page area the page frame leaves below the header and above the footer.
PageRect ListRect(OutputTarget& target, const PageRect& area)
{
    PageRect rect = area;
    rect.Top = RoundToInt32(rect.Top + HeaderHeight(target));
    rect.Bottom = RoundToInt32(rect.Bottom - FooterHeight(target));
    return rect;
}

// Prints the cells of one line from left to right, the value right-aligned
// in its column and every other cell left-aligned.
void PrintLine(OutputTarget& target, const ViolationList& list, const QStringList& cells, double left, double y)
{
    double x = left;
    for (int c = 0; c < kColumns; ++c)
    {
        const double width = list.ColumnWidths.value(c);
        const QString& text = cells.at(c);
        target.SetCurrentX(c == kValueColumn ? x + width - target.TextWidth(text) : x);
        target.SetCurrentY(y);
        target.Print(text);
        x += width + list.ColumnGap;
    }
}
} // namespace

QList<QCReading> SeriesReadings(Recordset& data)
{
    QList<QCReading> readings;
    if (!data.IsOpen() || (data.IsBOF() && data.IsEOF()))
        return readings;
    readings.reserve(data.RecordCount());
    for (data.MoveFirst(); !data.IsEOF(); data.MoveNext())
    {
        const QVariant value = data.Value(1);
        readings.append(
            QCReading{ToDate(data.Value(0)), IsNumeric(value) ? std::optional<double>(ToDouble(value)) : std::nullopt});
    }
    data.MoveFirst();
    return readings;
}

void CheckReportRules(PreparedReport& report, const QCRuleSet& rules, bool siUnits)
{
    report.Rules = rules;
    report.Violations = ViolationList();
    for (GraphSeries& series : report.Graphs)
        series.Violations.clear();
    if (rules.isEmpty())
        return;

    const QSet<qint32> dlcoIds =
        rules.contains(QCRule::RuleDlco12) ? DlcoVariables(report.Info.TestTab, siUnits) : QSet<qint32>();
    const QCRuleEvaluator evaluator(rules);

    // The series are the graph's variables in the report's order.
    size_t next = 0;
    for (const ReportVariable& variable : report.Info.Variables)
    {
        if (!variable.ShowInGraph)
            continue;
        if (next >= report.Graphs.size())
            break;
        GraphSeries& series = report.Graphs[next++];
        if (!series.Data || !series.Data->IsOpen())
            continue;
        const QCRuleEvaluator::DlcoChart dlco =
            !dlcoIds.contains(variable.ParamsDefID)
                ? QCRuleEvaluator::DlcoChart::No
                : (siUnits ? QCRuleEvaluator::DlcoChart::SI : QCRuleEvaluator::DlcoChart::Conventional);
        series.Violations = evaluator.evaluate(SeriesReadings(*series.Data), series.Mean, series.SD, dlco);
        for (const QCViolation& violation : series.Violations)
        {
            report.Violations.Rows.append(ReportViolation{violation.Date, series.TableName, series.VarName,
                                                          violation.Value, series.DecimalPlaces, violation.Rules});
        }
    }
    std::stable_sort(report.Violations.Rows.begin(), report.Violations.Rows.end(),
                     [](const ReportViolation& a, const ReportViolation& b) { return a.Date < b.Date; });
}

QStringList ViolationCells(const ReportViolation& violation)
{
    return {FormatMonthDayYear(violation.Date), violation.TableName, violation.VarName,
            FormatNumber(violation.Value, violation.DecimalPlaces), violation.Rules.text()};
}

void SetUpViolationPages(OutputTarget& target, ViolationList& list)
{
    list.Pages.clear();
    list.ColumnWidths = QList<double>(kColumns, 0);

    SetTableHeadingFont(target);
    const QStringList headings = Headings();
    for (int c = 0; c < kColumns; ++c)
        list.ColumnWidths[c] = target.TextWidth(headings.at(c));
    const double headingLine = target.TextHeight(kX);

    SetTableBodyFont(target);
    for (const ReportViolation& violation : list.Rows)
    {
        const QStringList cells = ViolationCells(violation);
        for (int c = 0; c < kColumns; ++c)
            list.ColumnWidths[c] = std::max(list.ColumnWidths.at(c), target.TextWidth(cells.at(c)));
    }
    list.ColumnGap = target.TextWidth(kGap);
    const double rowHeight = target.TextHeight(kX) * kRowSpacing;

    PageRect area;
    double height = 0;
    double width = 0;
    GetPrintArea(target, area, height, width);
    const PageRect rect = ListRect(target, area);
    const double room = rect.Bottom - (rect.Top + kFirstRowLine * headingLine);
    // A page too short for one line still takes one, so the list always advances.
    const qint32 rowsPerPage = std::max(qint32(std::floor(room / rowHeight)), 1);

    const qint32 rows = qint32(list.Rows.size());
    if (rows == 0)
    {
        list.Pages.append(ViolationPage{1, 0, 0});
        return;
    }
    for (qint32 first = 1; first <= rows; first += rowsPerPage)
        list.Pages.append(ViolationPage{qint32(list.Pages.size()) + 1, first, std::min(first + rowsPerPage - 1, rows)});
}

qint32 PrintViolationPage(OutputTarget* target, const ViolationList& list, const ReportInfo& info,
                          const ViolationPage& page, qint32 pageOffset, bool toPrinter)
{
    if (!target)
        return 0;
    try
    {
        PageRect frame;
        double height = 0;
        double width = 0;
        GetPrintArea(*target, frame, height, width);

        if (!toPrinter)
            target->Cls();
        else if (page.PageNumber > 1 || pageOffset >= 1)
            target->NewPage();

        PrintPageHeader(*target, info.PatientName, info.FromDate, info.ToDate, frame);
        PrintPageFooter(*target, page.PageNumber + pageOffset, frame, 0);

        SetTableHeadingFont(*target);
        const double lineHeight = target->TextHeight(kX);
        target->SetCurrentX(frame.Left);
        target->SetCurrentY(frame.Top);
        target->Print(GetResourceText(kTextTitle));

        const double headingY = frame.Top + kHeadingLine * lineHeight;
        if (list.Rows.isEmpty())
        {
            SetTableBodyFont(*target);
            target->SetCurrentX(frame.Left);
            target->SetCurrentY(headingY);
            target->Print(GetResourceText(kTextNone));
            return page.PageNumber + 1;
        }

        PrintLine(*target, list, Headings(), frame.Left, headingY);
        SetTableBodyFont(*target);
        const double rowHeight = target->TextHeight(kX) * kRowSpacing;
        double y = frame.Top + kFirstRowLine * lineHeight;
        for (qint32 row = page.FirstRow; row >= 1 && row <= page.LastRow && row <= list.Rows.size(); ++row)
        {
            PrintLine(*target, list, ViolationCells(list.Rows.at(row - 1)), frame.Left, y);
            y += rowHeight;
        }
        return page.PageNumber + 1;
    }
    catch (...)
    {
        return 0;
    }
}
