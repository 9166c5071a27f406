// The report request of a tab: what its grid, the subject and the date boxes
// say, for the report store and the layouts.
#include "reports/ReportTabsPanel.h"

#include "components/UniqueVarNames.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"

qint32 ReportTabsPanel::BuildReportInfo(qint16 tab, ReportInfo& info) const
{
    if (tab < 0 || tab >= TabCount)
        throw RuntimeError(ErrorNumber::SubscriptOutOfRange, QStringLiteral("BuildReportInfo"),
                           QStringLiteral("Subscript out of range"));
    const FlexGrid* grid = msfgVariable[std::size_t(tab)];
    // Row 0 is the header and the last row is the blank one.
    const qint32 n = grid->Rows() - 2;
    if (n <= 0)
        return 0;

    info.TestTab = qint16(CurrentTab());
    info.PatientName = m_host.SelectedPatientName();
    info.PatientID = m_host.SelectedPatientID();
    info.FromDate = m_host.FromDateText();
    info.ToDate = m_host.ToDateText();
    info.Variables = QList<ReportVariable>(n);

    // The table's data set names its value fields by VarName, so repeated
    // names (also from different tables) are told apart.
    UniqueVarNames names;
    for (qint32 r = 1; r <= n; ++r)
    {
        ReportVariable& variable = info.Variables[r - 1];
        const bool showInGraph = grid->TextMatrix(r, 3) == QLatin1String("True");
        const bool showInTable = grid->TextMatrix(r, 4) == QLatin1String("True");
        const QString varName = names.MakeUnique(grid->TextMatrix(r, 1));
        variable.TableID = ToWholeNumber(grid->TextMatrix(r, 5));
        variable.TableName = grid->TextMatrix(r, 0);
        variable.ParamsDefID = ToWholeNumber(grid->TextMatrix(r, 6));
        variable.VarName = varName;
        variable.Unit = grid->TextMatrix(r, 2);
        variable.ShowInGraph = showInGraph;
        variable.ShowInTable = showInTable;
        variable.DecimalPlaces = ToWholeNumber(grid->TextMatrix(r, 7));
    }
    return n;
}
