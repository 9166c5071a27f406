#pragma once

#include <QString>

// Variables a definition shows at most in its graph, and again in its table.
inline constexpr qint32 kMaxVariables = 9;

// One selected variable of a definition, as a row of its tab's grid holds it.
struct SelectedVariable
{
    QString Table;    // the test table's name
    QString Variable; // the variable's name, without its unit
    QString Unit;
    bool ShowInGraph = false;
    bool ShowInTable = false;
    qint32 TableID = 0;
    qint32 VarID = 0;
    qint32 DecimalPlaces = 0;
};
