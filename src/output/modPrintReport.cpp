#include "output/modPrintReport.h"

#include "output/modPrintGraph.h"
#include "output/modPrintTable.h"
#include "output/modPrintViolations.h"

namespace
{
// The pages are numbered on from the graph pages into the table pages, so a
// total of the graph pages alone would mislead: no footer shows one.
constexpr qint32 kNoPageTotal = 0;

void PrintGraphPages(OutputTarget& target, const PreparedReport& report)
{
    const qint32 graphPages = ReportGraphPageCount(report);
    qint32 next = 1;
    while (next >= 1 && next <= graphPages)
    {
        qint32 page = next;
        next = PrintGraphPage(&target, report.Info, report.Graphs, page, kNoPageTotal, true);
    }
}

void PrintTablePages(OutputTarget& target, const PreparedReport& report)
{
    const qint32 graphPages = ReportGraphPageCount(report);
    for (const TablePage& page : report.TablePages)
        PrintTablePage(&target, report.Table, report.Info, page, graphPages, true);
}

void SetUpTablePagesOf(OutputTarget& target, PreparedReport& report)
{
    if (report.Table.Data)
        SetUpTablePages(target, report.Table, report.TablePages);
}

void SetUpViolationPagesOf(OutputTarget& target, PreparedReport& report)
{
    if (!report.Rules.isEmpty() && !report.Graphs.empty())
        SetUpViolationPages(target, report.Violations);
}

void PrintViolationPages(OutputTarget& target, const PreparedReport& report)
{
    const qint32 pagesBefore = ReportGraphPageCount(report) + qint32(report.TablePages.size());
    for (const ViolationPage& page : report.Violations.Pages)
        PrintViolationPage(&target, report.Violations, report.Info, page, pagesBefore, true);
}

void CloseIfOpen(const RecordsetPtr& data)
{
    if (data && data->IsOpen())
        data->Close();
}
} // namespace

bool PrepareReport(const ReportInfo& info, bool siUnits, PreparedReport& report, const QCRuleSet& rules)
{
    report.Info = info;
    ReleaseReportGraphs(report);
    ReleaseReportTable(report);
    if (!BuildGraphSeries(report.Info, report.Graphs, siUnits))
        return false;
    CheckReportRules(report, rules, siUnits);
    return BuildTableData(nullptr, report.Info, report.Table, report.TablePages, siUnits);
}

bool PrepareReportPreview(OutputTarget& target, const ReportInfo& info, bool siUnits, PreparedReport& report,
                          const QCRuleSet& rules)
{
    report.Info = info;
    ReleaseReportGraphs(report);
    if (!BuildGraphSeries(report.Info, report.Graphs, siUnits))
        return false;
    CheckReportRules(report, rules, siUnits);
    ReleaseReportTable(report);
    if (!BuildTableData(&target, report.Info, report.Table, report.TablePages, siUnits))
        ReleaseReportTable(report);
    SetUpReportPages(target, report);
    return true;
}

void ReleaseReportGraphs(PreparedReport& report)
{
    for (const GraphSeries& series : report.Graphs)
        CloseIfOpen(series.Data);
    report.Graphs.clear();
    report.Violations = ViolationList();
}

void ReleaseReportTable(PreparedReport& report)
{
    CloseIfOpen(report.Table.Data);
    report.Table = TableData();
    report.TablePages.clear();
}

void SetUpReportPages(OutputTarget& target, PreparedReport& report)
{
    SetUpTablePagesOf(target, report);
    SetUpViolationPagesOf(target, report);
}

void PrintPreparedReport(OutputTarget& target, PreparedReport& report)
{
    SetUpTablePagesOf(target, report);
    PrintGraphPages(target, report);
    // With the metrics of the job under way, where they may differ from those
    // before it.
    if (!target.MeasuresAlikeBeforeTheJob())
        SetUpTablePagesOf(target, report);
    PrintTablePages(target, report);
    // The violation list is measured only now, with the printer's metrics and
    // after every page before it: up to there the job is what it is without
    // rules, operation for operation.
    SetUpViolationPagesOf(target, report);
    PrintViolationPages(target, report);
    target.EndDoc();
}

void PrintPreviewedReport(OutputTarget& target, PreparedReport& report)
{
    PrintGraphPages(target, report);
    PrintTablePages(target, report);
    PrintViolationPages(target, report);
    target.EndDoc();
}

bool PrintReport(OutputTarget& target, const ReportInfo& info, bool siUnits, const QCRuleSet& rules)
{
    PreparedReport report;
    if (!PrepareReport(info, siUnits, report, rules))
        return false;
    PrintPreparedReport(target, report);
    return true;
}

qint32 ReportGraphPageCount(const PreparedReport& report)
{
    return GraphPageCount(CountOpenSeries(report.Graphs));
}

qint32 ReportPageCount(const PreparedReport& report)
{
    return ReportGraphPageCount(report) + qint32(report.TablePages.size()) + qint32(report.Violations.Pages.size());
}

bool DrawReportPage(OutputTarget& target, PreparedReport& report, qint32 page)
{
    const qint32 graphPages = ReportGraphPageCount(report);
    if (page > graphPages || report.Graphs.empty())
    {
        const qint32 tablePage = page - graphPages;
        const qint32 tablePages = qint32(report.TablePages.size());
        if (tablePage >= 1 && tablePage <= tablePages)
        {
            PrintTablePage(&target, report.Table, report.Info, report.TablePages.at(tablePage - 1), graphPages, false);
            return true;
        }
        const qint32 violationPage = tablePage - tablePages;
        if (tablePage < 1 || violationPage < 1 || violationPage > report.Violations.Pages.size())
            return false;
        PrintViolationPage(&target, report.Violations, report.Info, report.Violations.Pages.at(violationPage - 1),
                           graphPages + tablePages, false);
        return true;
    }
    if (page < 1)
        return false;
    qint32 graphPage = page;
    PrintGraphPage(&target, report.Info, report.Graphs, graphPage, kNoPageTotal, false);
    return true;
}
