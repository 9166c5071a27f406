#pragma once

#include "components/ReportInfo.h"
#include "output/GraphSeries.h"
#include "output/OutputTarget.h"
#include "output/PageRect.h"
#include "platform/Recordset.h"

#include <QDate>

// The QC graph report: one control chart per variable shown in the graph,
// three charts a page, each with a legend column, a value axis, the mean and
// the +/- 2 SD control lines, one circled-cross marker per visit (a filled
// disc for a visit that broke a QC rule) and a statistics line. Every page is drawn inside the page frame of modPrint.

// Fills series with one element per variable whose ShowInGraph is set,
// asking a new report store object for each variable's statistics and
// visits. True when at least one series was built. Store errors reach the
// caller.
bool BuildGraphSeries(const ReportInfo& info, GraphSeriesArray& series, bool siUnits);

// Number of series whose data set is there and open.
qint32 CountOpenSeries(const GraphSeriesArray& series);

// Pages needed for count charts at three a page.
qint32 GraphPageCount(qint32 count);

// Draws graph page `page` (1-based) with the footer "page of pageTotal";
// starts a new printer page before every page but the first, or clears the
// preview picture. Returns the next page number, or 0 when the page holds no
// series or there is no target. Never throws.
qint32 PrintGraphPage(OutputTarget* target, const ReportInfo& info, const GraphSeriesArray& series, qint32& page,
                      qint32 pageTotal, bool toPrinter);

// The rectangle of series `index` (1-based) on its page: three slots of
// slotHeight separated by gap, top to bottom.
PageRect GetGraphSlot(const PageRect& area, qint32 index, float slotHeight, float gap);

// Width of the legend column, the same for every chart of the report.
float MeasureLegendColumn(OutputTarget& target, const GraphSeriesArray& series);

// Table, variable and "(unit)", centred vertically in the slot; moves the
// slot's Left past the legend column.
void PrintGraphLegend(OutputTarget& target, PageRect& slot, const GraphSeries& series, float legendWidth);

// Draws the chart of series into plot, which shrinks as the statistics line
// and the value axis take their room. False when nothing could be charted
// (no open data set, no visits, or a run-time error, after which the font is
// reset). Message 4111 tells the user about a series without visits.
bool PrintGraphChart(OutputTarget& target, PageRect& plot, const GraphSeries& series, bool showStatistics,
                     bool drawFrame);

// Visit count, first and last visit date and the range of the non-zero
// values. Leaves data sorted by value. False, after message 4111, when the
// data set has no rows or its first or last visit has no date.
bool ScanSeriesRange(Recordset& data, qint32& recordCount, QDate& firstDate, QDate& lastDate, double& valueMin,
                     double& valueMax);

// Width of the value-label column, half a tick included.
float MeasureAxisLabels(OutputTarget& target, double axisMin, double axisMax, double span, const PageRect& plot,
                        qint32 decimals);

// Tick labels and tick marks of the value axis; moves plot's Left past the labels.
void PrintValueAxis(OutputTarget& target, double axisMin, double axisMax, double span, double yScale, PageRect& plot,
                    float labelWidth, qint32 decimals);

// Mean at the left, SD in the middle and CV at the right under the plot;
// moves plot's Bottom above the line.
void PrintStatisticsLine(OutputTarget& target, PageRect& plot, double mean, double sd, double cv, float labelWidth);
