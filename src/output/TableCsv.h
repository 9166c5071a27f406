#pragma once

#include "output/TableColumn.h"
#include "output/TableData.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

// The QC table's data as a comma-separated text (CsvWriter: UTF-8 with a
// byte-order mark, CRLF, RFC 4180 quoting), for a laboratory's spreadsheet:
// the rows and columns of the printed table, read from the same data set and
// column descriptions the table pages draw (TableData), one record per visit
// after the heading record. Only the texts differ, so that other programs
// read them whatever the locale.

// The heading record's field of a column: its heading lines on one line,
// "table variable (unit)", the parts the table leaves empty left out (the
// date column is "Visit Date"; a variable without a unit has no "()").
QString TableCsvHeading(const TableColumn& column);

// A cell's field, CellText's rules for other programs: dates "yyyy-mm-dd";
// numbers other than 0 with the column's decimals, rounded as the table
// rounds them, with a point and no digit grouping; 0 and null (no reading)
// empty, as the table leaves them blank; any other text as it is.
QString TableCsvCell(const QVariant& value, const TableColumn& column);

// The whole text: the heading record, then every visit of the data set in
// its order. The data set's position is kept. An empty text (no records, not
// even the byte-order mark) when the table has no data set.
QByteArray TableCsv(const TableData& table);
