#pragma once

#include "platform/Recordset.h"
#include "rules/QCViolation.h"

#include <QList>
#include <QString>

#include <vector>

// One charted variable of a QC graph report: the legend texts, the statistics
// the report store computed over the period, and the visits themselves.
struct GraphSeries
{
    QString TableName; // first legend line
    QString Note;      // carried along from the report variable, never drawn
    QString VarName;   // second legend line
    QString Unit;      // third legend line, in parentheses
    double Mean = 0;
    double SD = 0;
    double CV = 0;            // a fraction; printed times 100 with "%"
    qint32 DecimalPlaces = 0; // digits after the decimal point on the value axis
    RecordsetPtr Data;        // field 0 the visit date, field 1 the value
    // The visits that broke a QC rule of the run, in date order; none when
    // the run checks no rules. Their markers are drawn as filled discs.
    QList<QCViolation> Violations;
};

// The series of one report run in the order of the report's variables. The
// graph procedures number them from 1, as the pages count them; element 0 is
// series 1.
using GraphSeriesArray = std::vector<GraphSeries>;
