#pragma once

#include "components/ReportInfo.h"
#include "output/OutputTarget.h"
#include "output/PageRect.h"
#include "output/TableData.h"
#include "output/TablePage.h"

#include <QString>
#include <QVariant>

// The QC table: one row per visit, one column per table variable after the
// "Visit Date" column, cut into pages of row bands and column groups and drawn
// inside the page frame.
//
// A run calls BuildTableData once, SetUpTablePages (again right before
// printing, so that the widths are the printer's), then PrintTablePage for
// every page of the list in order.

// Fetches the table's data set from the report store and describes its
// columns. False when the store has no data set or a run-time error occurred;
// no message is shown. The target and the page list are not used.
bool BuildTableData(OutputTarget* target, const ReportInfo& info, TableData& table, TablePageList& pages, bool siUnits);

// Measures every column and rebuilds the page list from nothing.
void SetUpTablePages(OutputTarget& target, TableData& table, TablePageList& pages);

// Draws one table page (header, footer, column headings, rows). Table pages are
// numbered on from the pageOffset graph pages before them. Returns the next
// page number, or 0 when there is no target or a run-time error occurred.
qint32 PrintTablePage(OutputTarget* target, const TableData& table, const ReportInfo& info, const TablePage& page,
                      qint32 pageOffset, bool toPrinter);

// The 1-based number of the first variable of info whose VarName equals
// fieldName exactly (case-sensitive), or -1.
qint32 FindVariableByName(const QString& fieldName, const ReportInfo& info);

// The steps of the layout.

void SetTableHeadingFont(OutputTarget& target);
void SetTableBodyFont(OutputTarget& target);

// Every column's width and the table's TotalWidth.
void MeasureColumns(OutputTarget& target, TableData& table);
// The widest of the column's headings and of its cells with a quarter of their
// width added as room on the left. The data set's position is kept.
float MeasureColumn(OutputTarget& target, const TableData& table, qint32 column);
// The widest heading line in the heading font; the unit as stored, without its parentheses.
float MeasureColumnHeading(OutputTarget& target, const TableColumn& column);

// A cell's text: dates "mm/dd/yyyy", numbers other than 0 with the column's
// decimals and digit grouping, 0 and null blank, any other text as it is.
QString CellText(const QVariant& value, const TableColumn& column);

// The page area below the header and one heading line, above the footer; used for pagination only.
PageRect TableContentRect(OutputTarget& target, const PageRect& area);
// Body rows of 1.25 lines that fit the rectangle, rounded to nearest (half to even).
qint32 RowsPerPage(OutputTarget& target, const PageRect& rect);
// The last column, from startColumn on, that still fits the rectangle's width;
// -1 when startColumn is beyond the last column. The start column always fits,
// even when it alone is wider than the page.
qint32 FitColumns(const TableData& table, const PageRect& rect, qint32 startColumn);
// The page list, band by band: all column groups of rows 1..n, then of the next band.
void Paginate(OutputTarget& target, const TableData& table, TablePageList& pages);

// The three heading lines of columns first..last; moves rect.Top below them and a blank line.
void PrintColumnHeadings(OutputTarget& target, const TableData& table, PageRect& rect, qint32 firstColumn,
                         qint32 lastColumn);
// One column's heading lines right-aligned at x + Width; moves x to the next column.
void PrintColumnHeading(OutputTarget& target, const TableColumn& column, const PageRect& rect, double lineHeight,
                        double& x);
// The current record's cells of columns first..last, right-aligned; returns the row height.
double PrintTableRow(OutputTarget& target, const TableData& table, const PageRect& rect, qint32 firstColumn,
                     qint32 lastColumn);
