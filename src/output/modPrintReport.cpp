#include "output/modPrintReport.h"

#include "output/modPrintGraph.h"
#include "output/modPrintTable.h"

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

void CloseIfOpen(const RecordsetPtr& data)
{
    if (data && data->IsOpen())
        data->Close();
}
} // namespace

bool PrepareReport(const ReportInfo& info, bool siUnits, PreparedReport& report)
{
    report.Info = info;
    ReleaseReportGraphs(report);
    ReleaseReportTable(report);
    if (!BuildGraphSeries(report.Info, report.Graphs, siUnits))
        return false;
    return BuildTableData(nullptr, report.Info, report.Table, report.TablePages, siUnits);
}

bool PrepareReportPreview(OutputTarget& target, const ReportInfo& info, bool siUnits, PreparedReport& report)
{
    report.Info = info;
    ReleaseReportGraphs(report);
    if (!BuildGraphSeries(report.Info, report.Graphs, siUnits))
        return false;
    ReleaseReportTable(report);
    if (BuildTableData(&target, report.Info, report.Table, report.TablePages, siUnits))
        SetUpReportTablePages(target, report);
    else
        ReleaseReportTable(report);
    return true;
}

void ReleaseReportGraphs(PreparedReport& report)
{
    for (const GraphSeries& series : report.Graphs)
        CloseIfOpen(series.Data);
    report.Graphs.clear();
}

void ReleaseReportTable(PreparedReport& report)
{
    CloseIfOpen(report.Table.Data);
    report.Table = TableData();
    report.TablePages.clear();
}

void SetUpReportTablePages(OutputTarget& target, PreparedReport& report)
{
    if (report.Table.Data)
        SetUpTablePages(target, report.Table, report.TablePages);
}

void PrintPreparedReport(OutputTarget& target, PreparedReport& report)
{
    SetUpReportTablePages(target, report);
    PrintGraphPages(target, report);
    SetUpReportTablePages(target, report);
    PrintTablePages(target, report);
    target.EndDoc();
}

void PrintPreviewedReport(OutputTarget& target, PreparedReport& report)
{
    PrintGraphPages(target, report);
    PrintTablePages(target, report);
    target.EndDoc();
}

bool PrintReport(OutputTarget& target, const ReportInfo& info, bool siUnits)
{
    PreparedReport report;
    if (!PrepareReport(info, siUnits, report))
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
    return ReportGraphPageCount(report) + qint32(report.TablePages.size());
}

bool DrawReportPage(OutputTarget& target, PreparedReport& report, qint32 page)
{
    const qint32 graphPages = ReportGraphPageCount(report);
    if (page > graphPages || report.Graphs.empty())
    {
        const qint32 tablePage = page - graphPages;
        if (tablePage < 1 || tablePage > report.TablePages.size())
            return false;
        PrintTablePage(&target, report.Table, report.Info, report.TablePages.at(tablePage - 1), graphPages, false);
        return true;
    }
    if (page < 1)
        return false;
    qint32 graphPage = page;
    PrintGraphPage(&target, report.Info, report.Graphs, graphPage, kNoPageTotal, false);
    return true;
}
