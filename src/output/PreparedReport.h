#pragma once

#include "components/ReportInfo.h"
#include "output/GraphSeries.h"
#include "output/TableData.h"
#include "output/TablePage.h"
#include "output/ViolationList.h"
#include "rules/QCRuleSet.h"

// Everything one report run prepared before drawing: its own copy of the
// request, the graph series, the table with its page list and, when the run
// checks QC rules, the violations with their pages. Owned by the run (Print,
// the preview or the batch renderer) and released with it.
struct PreparedReport
{
    ReportInfo Info;
    GraphSeriesArray Graphs;
    TableData Table; // Table.Data is empty when the table could not be prepared
    TablePageList TablePages;
    QCRuleSet Rules; // the QC rules checked; empty: none, and no violation pages
    ViolationList Violations;
};
