#pragma once

#include "output/ReportViolation.h"
#include "output/ViolationPage.h"

#include <QList>

// The "QC Rule Violations" of one report run: every reading of its charts
// that broke a QC rule, and the pages that list them after the table.
struct ViolationList
{
    // In date order; readings of one day in the order of the report's charts.
    QList<ReportViolation> Rows;
    // Date, table, variable, value and rules; set by SetUpViolationPages.
    QList<double> ColumnWidths;
    double ColumnGap = 0; // room between two columns
    ViolationPageList Pages;
};
