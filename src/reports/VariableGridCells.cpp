#include "reports/VariableGridCells.h"

#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"

namespace
{
const QString kTrue = QStringLiteral("True");
const QString kFalse = QStringLiteral("False");

bool isTrue(const FlexGrid& grid, int row, int column)
{
    return grid.TextMatrix(row, column) == kTrue;
}

// "True"/"False" in any case, or a number (non-zero is true); anything else
// is a type mismatch.
bool booleanOf(const QString& text)
{
    if (text.compare(kTrue, Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(kFalse, Qt::CaseInsensitive) == 0)
        return false;
    if (IsNumeric(text))
        return ToDouble(text) != 0;
    throw RuntimeError(ErrorNumber::TypeMismatch, QStringLiteral("CountSelectedTotals"),
                       QStringLiteral("Type mismatch"));
}
} // namespace

qint32 VariableGridCells::RowCount(const FlexGrid& grid)
{
    return qMax(0, grid.Rows() - 2);
}

SelectedVariable VariableGridCells::Read(const FlexGrid& grid, int row)
{
    SelectedVariable variable;
    variable.ShowInGraph = InGraph(grid, row);
    variable.ShowInTable = InTable(grid, row);
    variable.Variable = grid.TextMatrix(row, VariableColumn);
    variable.TableID = TableID(grid, row);
    variable.Table = grid.TextMatrix(row, TableColumn);
    variable.VarID = VarID(grid, row);
    variable.Unit = Unit(grid, row);
    variable.DecimalPlaces = ToWholeNumber(grid.TextMatrix(row, DecimalsColumn));
    return variable;
}

void VariableGridCells::WriteTexts(FlexGrid& grid, int row, const std::array<QString, ColumnCount>& texts)
{
    for (int c = 0; c < ColumnCount; ++c)
        grid.SetTextMatrix(row, c, texts[std::size_t(c)]);
}

QString VariableGridCells::Unit(const FlexGrid& grid, int row)
{
    return grid.TextMatrix(row, UnitColumn);
}

qint32 VariableGridCells::TableID(const FlexGrid& grid, int row)
{
    return ToWholeNumber(grid.TextMatrix(row, TableIdColumn));
}

qint32 VariableGridCells::VarID(const FlexGrid& grid, int row)
{
    return ToWholeNumber(grid.TextMatrix(row, VarIdColumn));
}

QString VariableGridCells::TableName(const FlexGrid& grid, int row)
{
    return grid.TextMatrix(row, TableColumn);
}

void VariableGridCells::SetTable(FlexGrid& grid, int row, const QString& name, qint32 id)
{
    grid.SetTextMatrix(row, TableColumn, name);
    grid.SetTextMatrix(row, TableIdColumn, QString::number(id));
}

bool VariableGridCells::InGraph(const FlexGrid& grid, int row)
{
    return isTrue(grid, row, GraphColumn);
}

bool VariableGridCells::InTable(const FlexGrid& grid, int row)
{
    return isTrue(grid, row, TableFlagColumn);
}

QString VariableGridCells::FlagText(bool value)
{
    return value ? kTrue : kFalse;
}

std::array<qint32, 2> VariableGridCells::CountShown(const FlexGrid& grid)
{
    std::array<qint32, 2> counts{};
    for (int r = 1; r <= RowCount(grid); ++r)
    {
        counts[0] += InGraph(grid, r) ? 1 : 0;
        counts[1] += InTable(grid, r) ? 1 : 0;
    }
    return counts;
}

qint32 VariableGridCells::CountShownAnywhere(const FlexGrid& grid)
{
    qint32 count = 0;
    for (int r = 1; r <= RowCount(grid); ++r)
    {
        if (InGraph(grid, r) || InTable(grid, r))
            ++count;
    }
    return count;
}

std::array<qint32, 2> VariableGridCells::CountAsBooleans(const FlexGrid& grid)
{
    std::array<qint32, 2> counts{};
    for (int r = 1; r <= RowCount(grid); ++r)
    {
        if (booleanOf(grid.TextMatrix(r, GraphColumn)))
            ++counts[0];
        if (booleanOf(grid.TextMatrix(r, TableFlagColumn)))
            ++counts[1];
    }
    return counts;
}
