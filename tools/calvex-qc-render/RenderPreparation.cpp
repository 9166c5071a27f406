#include "RenderPreparation.h"

#include "RenderFailure.h"
#include "RenderOptions.h"
#include "output/modPrintReport.h"

bool PrepareRenderedReport(const ReportInfo& info, const QString& reportName, bool siUnits, const QCRuleSet& rules,
                           PreparedReport& report)
{
    if (!PrepareReport(info, siUnits, report, rules))
    {
        if (report.Graphs.empty())
            RenderRefuse(QStringLiteral("the QC report \"%1\" has no variable shown in the graph, and a report without "
                                        "charts is not printed")
                             .arg(reportName));
        RenderRefuse(QStringLiteral("the table of the QC report \"%1\" could not be read").arg(reportName));
    }
    return report.Table.Data->RecordCount() > 0;
}

QString NoVisitsText(const ReportInfo& info)
{
    return QStringLiteral("%1 has no %2 visits %3")
        .arg(info.PatientID, RenderOptions::tabName(info.TestTab), PeriodText(info));
}

QString PeriodText(const ReportInfo& info)
{
    return info.FromDate.isEmpty() ? QStringLiteral("up to ") + info.ToDate
                                   : QStringLiteral("from %1 to %2").arg(info.FromDate, info.ToDate);
}
