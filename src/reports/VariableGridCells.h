#pragma once

#include "reports/SelectedVariable.h"
#include "widgets/FlexGrid.h"

#include <QStringList>

#include <array>

// The one place that knows which cell of a selected-variables grid holds
// what. The grid is the control the user sees: a header in row 0, one
// variable per row from row 1, and a blank last row that is never data. Its
// eight text columns are the table, the variable, the unit, "True"/"False"
// for the graph and for the table, the table's and the variable's IDs, and
// the decimal places.
//
// Two readings of a flag cell stand side by side on purpose: a row is shown
// in the graph (or the table) exactly when its cell says "True", while the
// counters under the grid read the cell as a Boolean ("true" in any case, or
// a non-zero number; anything else is a type mismatch).
class VariableGridCells
{
public:
    enum Column
    {
        TableColumn = 0,
        VariableColumn = 1,
        UnitColumn = 2,
        GraphColumn = 3,
        TableFlagColumn = 4,
        TableIdColumn = 5,
        VarIdColumn = 6,
        DecimalsColumn = 7,
        ColumnCount = 8,
    };

    // Variable rows: 1 to RowCount.
    static qint32 RowCount(const FlexGrid& grid);

    // The whole row; the numbers must be numbers (type mismatch otherwise).
    static SelectedVariable Read(const FlexGrid& grid, int row);
    // The cells as texts, in column order, for a row read from a store.
    static void WriteTexts(FlexGrid& grid, int row, const std::array<QString, ColumnCount>& texts);

    static QString Unit(const FlexGrid& grid, int row);
    static qint32 TableID(const FlexGrid& grid, int row);
    static qint32 VarID(const FlexGrid& grid, int row);
    static QString TableName(const FlexGrid& grid, int row);
    // Gives a row another table, name and ID.
    static void SetTable(FlexGrid& grid, int row, const QString& name, qint32 id);

    static bool InGraph(const FlexGrid& grid, int row);
    static bool InTable(const FlexGrid& grid, int row);
    static QString FlagText(bool value);

    // Rows shown in the graph and in the table ("True" cells).
    static std::array<qint32, 2> CountShown(const FlexGrid& grid);
    // Rows shown in the graph or in the table.
    static qint32 CountShownAnywhere(const FlexGrid& grid);
    // The counters' reading: the flag cells as Booleans.
    static std::array<qint32, 2> CountAsBooleans(const FlexGrid& grid);
};
