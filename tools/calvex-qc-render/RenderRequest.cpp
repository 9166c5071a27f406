#include "RenderRequest.h"

#include "RenderFailure.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "components/UniqueVarNames.h"
#include "components/modReportRequest.h"
#include "platform/ComponentFactory.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"

#include <algorithm>
#include <memory>

namespace
{
// The most variables a report shows in its graph and in its table.
constexpr qint32 kMaxVariablesPerKind = 9;

// A field's text as a grid cell shows it: null-safe, blanks around it dropped.
QString cellText(const Recordset& rs, const QString& field)
{
    return TextOf(rs.Value(field)).trimmed();
}

[[noreturn]] void refuseUnknownDefinition(const QString& name, qint16 tab)
{
    RenderRefuse(QStringLiteral("there is no QC report \"%1\" on the %2 tab").arg(name, RenderOptions::tabName(tab)));
}

// The program's own refusals of a request's variables, with its texts.
void checkVariableCounts(const ReportInfo& info)
{
    qint32 inGraph = 0;
    qint32 inTable = 0;
    for (const ReportVariable& variable : info.Variables)
    {
        inGraph += variable.ShowInGraph ? 1 : 0;
        inTable += variable.ShowInTable ? 1 : 0;
    }
    const QString limit = QStringLiteral(": ") + QString::number(kMaxVariablesPerKind);
    if (inGraph + inTable == 0)
        RenderRefuse(GetResourceText(4077));
    if (inGraph > kMaxVariablesPerKind)
        RenderRefuse(GetResourceText(4078) + limit);
    if (inTable > kMaxVariablesPerKind)
        RenderRefuse(GetResourceText(4079) + limit);
}
} // namespace

// The search finds every ID that starts with the text, without regard to
// case; only the whole ID names the subject: the one spelled as given, else
// the first that differs in case alone.
void FindRenderSubject(const QString& id, ReportInfo& info)
{
    const std::unique_ptr<PatientQuery> query = ComponentFactory::create<PatientQuery>(PatientQuery::ClassId);
    const RecordsetPtr found = query->FindByIdNum(id);
    bool matched = false;
    for (; found && !found->IsEOF(); found->MoveNext())
    {
        const QString stored = cellText(*found, QStringLiteral("PatientIDNum"));
        const bool exact = stored == id;
        if (!exact && (matched || stored.compare(id, Qt::CaseInsensitive) != 0))
            continue;
        info.PatientID = stored;
        info.PatientName = FormatPatientName(cellText(*found, QStringLiteral("PatientFirstName")),
                                             cellText(*found, QStringLiteral("PatientMidName")),
                                             cellText(*found, QStringLiteral("PatientLastName")));
        matched = true;
        if (exact)
            break;
    }
    if (!matched)
        RenderRefuse(QStringLiteral("there is no QC subject with the ID \"%1\"").arg(id));
}

QList<SavedDefinition> ListSavedDefinitions()
{
    const std::unique_ptr<QCReportStore> store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    QList<SavedDefinition> tabs[2];
    const RecordsetPtr reports = store->ListReports();
    for (; reports && !reports->IsEOF(); reports->MoveNext())
    {
        const qint32 tab = WholeNumberOfZeroPrefixed(reports->Value(QStringLiteral("QCReportType")));
        if (tab != 0 && tab != 1)
            continue;
        tabs[tab].append({ToWholeNumber(reports->Value(QStringLiteral("QCReportID"))), qint16(tab),
                          cellText(*reports, QStringLiteral("QCReportName"))});
    }
    return tabs[0] + tabs[1];
}

void LoadDefinitionVariables(const SavedDefinition& definition, bool siUnits, ReportInfo& info)
{
    const std::unique_ptr<QCReportStore> store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    qint32 storedTab = definition.tab;
    const RecordsetPtr rows = store->OpenReport(definition.id, siUnits, storedTab);
    if (!rows)
        RenderRefuse(QStringLiteral("the QC report \"%1\" cannot be opened").arg(definition.name));

    info.TestTab = definition.tab;
    info.Variables.clear();
    UniqueVarNames names;
    for (; !rows->IsEOF(); rows->MoveNext())
    {
        const Recordset& row = *rows;
        ReportVariable variable;
        variable.TableID = WholeNumberOfZeroPrefixed(row.Value(QStringLiteral("QCTableID")));
        variable.ParamsDefID = WholeNumberOfZeroPrefixed(row.Value(QStringLiteral("ParamsDefID")));
        variable.TableName = cellText(row, QStringLiteral("QCUserName"));
        variable.VarName = names.MakeUnique(cellText(row, QStringLiteral("ParamsUserName")));
        variable.Unit = cellText(row, QStringLiteral("ParamsUnit"));
        variable.ShowInGraph = cellText(row, QStringLiteral("ShowInGraph")) == QLatin1String("True");
        variable.ShowInTable = cellText(row, QStringLiteral("ShowInTable")) == QLatin1String("True");
        variable.DecimalPlaces = WholeNumberOfZeroPrefixed(row.Value(QStringLiteral("Decimal")));
        info.Variables.append(variable);
    }
    checkVariableCounts(info);
}

ReportInfo BuildRenderRequest(const RenderOptions& options, bool siUnits)
{
    ReportInfo info;
    info.TestTab = options.tab;
    info.FromDate = options.from;
    info.ToDate = options.to;
    const QList<SavedDefinition> definitions = ListSavedDefinitions();
    const auto named = std::find_if(definitions.cbegin(), definitions.cend(), [&options](const SavedDefinition& d) {
        return d.tab == options.tab && d.name.compare(options.report, Qt::CaseInsensitive) == 0;
    });
    if (named == definitions.cend())
        refuseUnknownDefinition(options.report, options.tab);
    LoadDefinitionVariables(*named, siUnits, info);
    FindRenderSubject(options.subject, info);
    return info;
}
