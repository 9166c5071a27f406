// The selected-variables editor of a tab: the grid of the definition's
// variables and the controls that show the chosen row.
#include "reports/ReportTabsPanel.h"

#include "components/modCalcObject.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "reports/VariableGridCells.h"
#include "widgets/ComboList.h"
#include "widgets/FindComboItem.h"

#include <limits>

namespace
{
constexpr int kFlagColumnWidth = 630; // twips, the graph and table columns

} // namespace

void ReportTabsPanel::PrepareGrid(int Index)
{
    FlexGrid* grid = msfgVariable[Index];
    grid->SetCols(GridCols);
    grid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    // The identity columns travel with the rows but are never shown.
    for (int c = VariableGridCells::TableIdColumn; c < GridCols; ++c)
        grid->setColumnHidden(c, true);
    for (int c = 0; c < GridCols; ++c)
        grid->SetTextMatrix(0, c, GetResourceText(qint16(4067 + c)));
    SizeGridColumns(Index);
    grid->SetRows(2);
}

bool ReportTabsPanel::ShowSelectedVariable(int Index, int Row)
{
    FlexGrid* grid = msfgVariable[Index];
    if (Row < 1)
        return false;
    if (Row >= grid->Rows() - 1)
    {
        // The blank last row stands for the last variable row.
        Row = grid->Rows() - 2;
        if (Row == 0)
            return false;
    }
    grid->SetRow(Row);
    grid->SetRowSel(Row);
    grid->SetCol(0);
    grid->SetColSel(GridCols - 1);

    ComboList::SetListIndex(cboVariable[Index],
                            FindComboItem(cboVariable[Index], VariableGridCells::VarID(*grid, Row), true, false));
    ComboList::SetListIndex(cboVarUnits[Index],
                            FindComboItem(cboVarUnits[Index], VariableGridCells::Unit(*grid, Row), false, false));
    ComboList::SetListIndex(cboTable[Index],
                            FindComboItem(cboTable[Index], VariableGridCells::TableID(*grid, Row), true, false));

    chkShowIn[2 * Index]->setChecked(VariableGridCells::InGraph(*grid, Row));
    chkShowIn[2 * Index + 1]->setChecked(VariableGridCells::InTable(*grid, Row));

    UpdateVariableButtons(Index);
    return true;
}

void ReportTabsPanel::UpdateVariableButtons(int Index)
{
    if (!blnCanEditReports)
    {
        cmdVarAdd[Index]->setEnabled(false);
        cmdVarUpdate[Index]->setEnabled(false);
        cmdVarRemove[Index]->setEnabled(false);
        return;
    }
    const FlexGrid* grid = msfgVariable[Index];
    const bool canAdd = cboVariable[Index]->currentIndex() >= 0 && cboTable[Index]->currentIndex() >= 0;
    const bool rowChosen = grid->Row() >= 1 && grid->Row() < grid->Rows() - 1 && grid->Rows() >= 3;
    cmdVarAdd[Index]->setEnabled(canAdd);
    cmdVarUpdate[Index]->setEnabled(canAdd && rowChosen);
    cmdVarRemove[Index]->setEnabled(rowChosen);
    msfgVariable[Index]->SetHighLight(grid->Rows() >= 3);
}

void ReportTabsPanel::CountSelectedTotals(int Index, std::array<qint32, 2>& Counts)
{
    Counts = VariableGridCells::CountAsBooleans(*msfgVariable[Index]);
    lblTotalFor[2 * Index]->setText(QString::number(Counts[0]));
    lblTotalFor[2 * Index + 1]->setText(QString::number(Counts[1]));
}

void ReportTabsPanel::CountSelectedTotals(int Index)
{
    std::array<qint32, 2> counts{};
    CountSelectedTotals(Index, counts);
}

void ReportTabsPanel::SizeGridColumns(int Index)
{
    FlexGrid* grid = msfgVariable[Index];
    const qint64 rowsHeight = qint64(grid->RowHeight(1)) * grid->Rows();
    if (rowsHeight > std::numeric_limits<qint32>::max())
        throw RuntimeError(ErrorNumber::Overflow, QStringLiteral("SizeGridColumns"), QStringLiteral("Overflow"));
    const bool overflow = grid->GridHeight() - 45 < rowsHeight;

    grid->SetColWidth(3, kFlagColumnWidth);
    grid->SetColWidth(4, kFlagColumnWidth);
    double width = double(grid->GridWidth()) - grid->ColWidth(3) - grid->ColWidth(4) - 90;
    if (overflow)
        width -= 250; // room for the vertical scroll bar
    grid->SetColWidth(0, RoundToInt32(width / 4));
    grid->SetColWidth(1, RoundToInt32(width / 2));
    grid->SetColWidth(2, RoundToInt32(width / 4));
}

void ReportTabsPanel::chkShowIn_Click(int Index)
{
    Q_UNUSED(Index);
    m_host.SetReportDirty(CurrentTab(), true);
}

void ReportTabsPanel::msfgVariable_Click(int Index)
{
    ShowSelectedVariable(Index, msfgVariable[Index]->RowSel());
}
