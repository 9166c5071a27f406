// The selected-variables editor's Add, Update and Remove: the rows of a
// tab's grid, within the limits of nine variables in the graph and nine in
// the table.
#include "reports/ReportTabsPanel.h"

#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "reports/VariableGridCells.h"
#include "widgets/ComboList.h"

#include <QSignalBlocker>

#include <algorithm>

namespace
{
constexpr qint32 InvalidProcedureCall = 5;

// The leftmost characters of text without the last `cut` ones; cutting more
// than there is, is an invalid argument.
QString withoutLast(const QString& text, qsizetype cut)
{
    if (cut > text.size())
        throw RuntimeError(InvalidProcedureCall, QStringLiteral("AddOrUpdateVariable"),
                           QStringLiteral("Invalid procedure call or argument"));
    return text.left(text.size() - cut);
}

// Removes grid row `row`; the current row keeps its number (or becomes the
// last row) and the removal is no choice of the user's.
void removeGridRow(FlexGrid* grid, int row)
{
    const int current = grid->Row();
    {
        const QSignalBlocker blocker(grid);
        grid->removeRow(row - 1);
    }
    grid->SetRow(std::min(current, grid->Rows() - 1));
}
} // namespace

void ReportTabsPanel::cmdVarAdd_Click(int Index)
{
    AddOrUpdateVariable(Index, true);
}

void ReportTabsPanel::cmdVarUpdate_Click(int Index)
{
    AddOrUpdateVariable(Index, false);
}

void ReportTabsPanel::AddOrUpdateVariable(int Index, bool blnAdd)
{
    const bool graph = chkShowIn[2 * Index]->isChecked();
    const bool table = chkShowIn[2 * Index + 1]->isChecked();

    // The counters decide. The row being updated counts too, so a row already
    // shown in a full graph (or table) cannot be updated while it keeps its flag.
    if (WholeNumberOfZeroPrefixed(lblTotalFor[2 * Index]->text()) >= kMaxVariables && graph)
    {
        MsgBox(GetResourceText(4078) + QStringLiteral(": ") + QString::number(kMaxVariables), MsgStyle::Exclamation,
               m_host.MsgTitle());
        return;
    }
    if (WholeNumberOfZeroPrefixed(lblTotalFor[2 * Index + 1]->text()) >= kMaxVariables && table)
    {
        MsgBox(GetResourceText(4079) + QStringLiteral(": ") + QString::number(kMaxVariables), MsgStyle::Exclamation,
               m_host.MsgTitle());
        return;
    }

    FlexGrid* grid = msfgVariable[Index];
    int row = 0;
    if (blnAdd)
    {
        // The blank last row becomes the new variable's row; a new blank row follows.
        grid->SetRows(grid->Rows() + 1);
        row = grid->Rows() - 2;
    }
    else
    {
        row = grid->Row();
    }

    // The variable list shows "name (unit)"; the grid keeps name and unit apart.
    const QString unit = cboVarUnits[Index]->currentText();
    const QString test = cboVarTest[Index]->currentText();
    QString name = cboVariable[Index]->currentText();
    if (!unit.isEmpty())
        name = withoutLast(name, unit.size() + 3);
    if (!test.isEmpty())
        name = withoutLast(name, test.size() + 1);

    QComboBox* tables = cboTable[Index];
    QComboBox* variables = cboVariable[Index];
    // The decimal places list runs parallel to the variable list.
    VariableGridCells::WriteTexts(*grid, row,
                                  {tables->currentText(), name, unit, VariableGridCells::FlagText(graph),
                                   VariableGridCells::FlagText(table),
                                   QString::number(ComboList::ItemData(tables, tables->currentIndex())),
                                   QString::number(ComboList::ItemData(variables, variables->currentIndex())),
                                   cboVarDecPlaces[Index]->itemText(variables->currentIndex())});

    grid->SetRow(row);
    grid->SetCol(2);
    grid->SetCellAlignment(FlexGrid::flexAlignLeftCenter);
    grid->SetRow(row);
    grid->SetRowSel(row);
    grid->SetCol(0);
    grid->SetColSel(grid->Cols() - 1);
    if (!grid->RowIsVisible(row))
        grid->SetTopRow(row);

    CountSelectedTotals(Index);
    SizeGridColumns(Index);
    UpdateVariableButtons(Index);
    m_host.SetReportDirty(Index, true);
    UpdateSaveAsButton(Index);
}

void ReportTabsPanel::cmdVarRemove_Click(int Index)
{
    FlexGrid* grid = msfgVariable[Index];
    if (grid->Row() < grid->Rows() - 1)
        removeGridRow(grid, grid->Row());
    SizeGridColumns(Index);
    // Removing the last variable row leaves the blank row current: the row
    // above it is shown instead.
    if (grid->Row() == grid->Rows() - 1 && grid->Rows() - 2 >= 1)
    {
        const int last = grid->Rows() - 2;
        grid->SetRow(last);
        grid->SetRowSel(last);
        grid->SetCol(0);
        grid->SetColSel(GridCols - 1);
    }
    UpdateVariableButtons(Index);
    CountSelectedTotals(Index);
    m_host.SetReportDirty(Index, true);
    UpdateSaveAsButton(Index);
}

qint32 ReportTabsPanel::CountSelectedVariables(qint16 Index) const
{
    return VariableGridCells::CountShownAnywhere(*msfgVariable[std::size_t(Index)]);
}

std::array<qint32, 2> ReportTabsPanel::CountShownVariables(qint16 Index) const
{
    return VariableGridCells::CountShown(*msfgVariable[std::size_t(Index)]);
}
