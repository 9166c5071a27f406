#pragma once

#include <QList>
#include <QtGlobal>

// One page of the QC table: a band of rows and a group of columns that fits the
// page width. Fields in their record order.
struct TablePage
{
    qint32 PageNumber = 0;  // 1-based, within the table
    qint32 FirstColumn = 0; // column indexes, inclusive
    qint32 LastColumn = 0;
    qint32 FirstRow = 0; // 1-based record positions in the data set, inclusive
    qint32 LastRow = 0;
};

// The table's pages in printing order: band by band, each band's column groups left to right.
using TablePageList = QList<TablePage>;
