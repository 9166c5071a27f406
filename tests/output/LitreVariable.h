#pragma once

#include "components/ReportInfo.h"

// A variable of table in litres, shown with two decimals on its chart and in
// the table.
inline ReportVariable LitreVariable(const QString& table, const QString& name)
{
    ReportVariable variable;
    variable.TableName = table;
    variable.VarName = name;
    variable.Unit = QStringLiteral("L");
    variable.ShowInGraph = true;
    variable.ShowInTable = true;
    variable.DecimalPlaces = 2;
    return variable;
}
