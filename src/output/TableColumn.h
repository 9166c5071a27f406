#pragma once

#include <QString>

// One column of the QC table: its three heading lines, its measured width and
// where its cells come from. Fields in their record order.
struct TableColumn
{
    QString TableName;     // first heading line: the variable's test table; empty for the date column
    QString Note;          // carried along from the variable, never drawn
    QString Heading;       // second heading line: the variable's name, or "Visit Date"
    QString Unit;          // third heading line, printed trimmed and in parentheses
    float Width = 0;       // in the target's units, set when the pages are laid out
    qint16 FieldIndex = 0; // the column's own position; cells come from the data set field there
    qint32 DecimalPlaces = 0;
};
