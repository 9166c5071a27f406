#pragma once

#include <QString>

// One selected variable of a report request, fields in their record order.
struct ReportVariable
{
    qint32 TableID = 0;
    qint32 ParamsDefID = 0;
    QString Spare1;
    QString TableName;
    QString Note;
    QString Spare2;
    QString VarName; // unique within its ReportInfo
    QString Unit;
    bool ShowInGraph = false;
    bool ShowInTable = false;
    qint32 DecimalPlaces = 0;
};
