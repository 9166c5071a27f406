#pragma once

#include "rules/QCRuleSet.h"

#include <QDate>
#include <QString>

// One line of the "QC Rule Violations" pages: a visit's reading on one chart
// of the report that broke at least one QC rule.
struct ReportViolation
{
    QDate Date;
    QString TableName;        // the chart's table
    QString VarName;          // the chart's variable
    double Value = 0;         // the reading, in the report's units
    qint32 DecimalPlaces = 0; // the variable's digits after the decimal point
    QCRuleSet Rules;          // every rule the reading broke
};
