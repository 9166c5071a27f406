#include "reports/ReportRequestBuilder.h"

#include "components/UniqueVarNames.h"
#include "platform/RuntimeError.h"
#include "reports/VariableEditor.h"

ReportRequestBuilder::ReportRequestBuilder(MainWindowHost& host, const QTabWidget& tabs,
                                           const std::array<VariableEditor*, TabCount>& editors)
    : m_host(host)
    , m_tabs(tabs)
    , m_editors(editors)
{}

qint32 ReportRequestBuilder::BuildReportInfo(qint16 tab, ReportInfo& info) const
{
    if (tab < 0 || tab >= TabCount)
        throw RuntimeError(ErrorNumber::SubscriptOutOfRange, QStringLiteral("BuildReportInfo"),
                           QStringLiteral("Subscript out of range"));
    const QList<SelectedVariable> rows = m_editors.at(std::size_t(tab))->Rows();
    const auto n = qint32(rows.size());
    if (n <= 0)
        return 0;

    info.TestTab = qint16(m_tabs.currentIndex());
    info.PatientName = m_host.SelectedPatientName();
    info.PatientID = m_host.SelectedPatientID();
    info.FromDate = m_host.FromDateText();
    info.ToDate = m_host.ToDateText();
    info.Variables = QList<ReportVariable>(n);

    // The table's data set names its value fields by VarName, so repeated
    // names (also from different tables) are told apart.
    UniqueVarNames names;
    for (qint32 r = 0; r < n; ++r)
    {
        const SelectedVariable& row = rows.at(r);
        ReportVariable& variable = info.Variables[r];
        variable.TableID = row.TableID;
        variable.TableName = row.Table;
        variable.ParamsDefID = row.VarID;
        variable.VarName = names.MakeUnique(row.Variable);
        variable.Unit = row.Unit;
        variable.ShowInGraph = row.ShowInGraph;
        variable.ShowInTable = row.ShowInTable;
        variable.DecimalPlaces = row.DecimalPlaces;
    }
    return n;
}
