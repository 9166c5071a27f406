#pragma once

#include "components/ReportInfo.h"
#include "output/GraphSeries.h"
#include "output/TableData.h"
#include "output/TablePage.h"

// Everything one report run prepared before drawing: its own copy of the
// request, the graph series and the table with its page list. Owned by the
// run (Print, the preview or the batch renderer) and released with it.
struct PreparedReport
{
    ReportInfo Info;
    GraphSeriesArray Graphs;
    TableData Table; // Table.Data is empty when the table could not be prepared
    TablePageList TablePages;
};
