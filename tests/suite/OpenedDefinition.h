#pragma once

#include "components/ReportInfo.h"
#include "suite/NorrixReportStore.h"

// A saved definition as the window opens it: its tab and its rows' variables
// (table, parameter and its name, the two "show in" flags and the decimal
// places), in the stored order. A definition the store does not find has no
// variables.
inline ReportInfo OpenedDefinition(NorrixReportStore& store, qint32 id)
{
    ReportInfo info;
    qint32 tab = 0;
    RecordsetPtr rows = store.OpenReport(id, false, tab);
    info.TestTab = qint16(tab);
    for (; rows && !rows->IsEOF(); rows->MoveNext())
    {
        ReportVariable variable;
        variable.TableID = rows->Value(QStringLiteral("QCTableID")).toInt();
        variable.ParamsDefID = rows->Value(QStringLiteral("ParamsDefID")).toInt();
        variable.VarName = rows->Value(QStringLiteral("ParamsUserName")).toString();
        variable.ShowInGraph = rows->Value(QStringLiteral("ShowInGraph")).toBool();
        variable.ShowInTable = rows->Value(QStringLiteral("ShowInTable")).toBool();
        variable.DecimalPlaces = rows->Value(QStringLiteral("Decimal")).toInt();
        info.Variables.append(variable);
    }
    return info;
}
