#pragma once

#include "output/TableColumn.h"
#include "platform/Recordset.h"

#include <QList>
#include <QString>

// The QC table of one report run: the visits' data set and the description of
// every column. Owned by the run (or the preview) that built it. Fields in
// their record order.
struct TableData
{
    QString PatientID;
    QString FromDate; // as typed; may be empty
    QString ToDate;
    qint16 ColumnCount = 0;     // fields of the data set
    RecordsetPtr Data;          // one row per visit: field 0 the visit date, then one field per table variable
    QList<TableColumn> Columns; // 0 .. ColumnCount - 1
    qint32 SIUnits = 0;         // -1 when the data were fetched in SI units, else 0
    double TotalWidth = 0;      // sum of the column widths
};
