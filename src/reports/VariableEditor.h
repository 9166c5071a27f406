#pragma once

#include "platform/Recordset.h"
#include "reports/MainWindowHost.h"
#include "reports/SelectedVariable.h"
#include "widgets/FlexGrid.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QObject>
#include <QPushButton>

#include <array>

// The selected-variables editor of one tab: the tab's variable catalogue (the
// table and variable lists), the grid of the definition's variables, the two
// "show in" boxes, Add / Update / Remove, and the two counters under the grid.
// It owns these controls and their handlers; the report tabs lay them out.
class VariableEditor final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(VariableEditor)

public:
    // prevTableIndex: the table list position last taken, one for both tabs.
    VariableEditor(int tab, MainWindowHost& host, int& prevTableIndex, QWidget* page);

    int Tab() const { return m_tab; }

    // The controls, by their system names (objectName "name(index)"; the
    // boxes and counters are 2·tab for the graph and 2·tab+1 for the table).
    QComboBox* cboTable = nullptr;
    QComboBox* cboVariable = nullptr;
    QComboBox* cboVarUnits = nullptr;     // hidden, parallel to cboVariable
    QComboBox* cboVarDecPlaces = nullptr; // hidden, parallel to cboVariable
    QComboBox* cboVarTest = nullptr;      // hidden, always empty
    std::array<QCheckBox*, 2> chkShowIn{};
    QPushButton* cmdVarAdd = nullptr;
    QPushButton* cmdVarUpdate = nullptr;
    QPushButton* cmdVarRemove = nullptr;
    std::array<QLabel*, 2> lblTotalFor{};
    FlexGrid* msfgVariable = nullptr;

    // Eight columns, vertical scrolling only, the header texts, the column
    // widths, header plus one blank row.
    void PrepareGrid();
    // The tab's tables and variables from the store. False after the error was shown.
    bool LoadVariableCatalogue();
    void cboTable_Click();
    void cboVariable_Click();
    bool ApplyTableToAllVariables();

    // Fills the grid with a stored definition's parameter rows.
    void LoadReportParameters(Recordset& rs);
    // An empty grid for a new definition, the first table and variable chosen.
    void Clear();

    bool ShowSelectedVariable(int Row);
    void UpdateVariableButtons();
    void CountSelectedTotals(std::array<qint32, 2>& Counts);
    void CountSelectedTotals();
    void SizeGridColumns();
    void chkShowIn_Click();
    void msfgVariable_Click();

    void cmdVarAdd_Click();
    void cmdVarUpdate_Click();
    void cmdVarRemove_Click();
    // Writes the chosen table and variable with the two flags into a new row
    // (blnAdd) or over the current row, within the limits of nine.
    void AddOrUpdateVariable(bool blnAdd);

    // Rows shown in the graph or in the table.
    qint32 CountSelectedVariables() const;
    // Rows shown in the graph, and rows shown in the table.
    std::array<qint32, 2> CountShownVariables() const;
    // The variable rows, in grid order.
    QList<SelectedVariable> Rows() const;

    // Without the edit right nothing can be chosen or changed.
    void DisableEditing();
    // The edit right given again: the controls DisableEditing turned off
    // follow their own rules once more.
    void EnableEditing();

signals:
    // Rows were added, changed or removed by the user.
    void rowsChanged();
    // A "show in" box was clicked; the definition on the tab shown counts as
    // changed, whichever tab's box it was.
    void showInClicked();

private:
    void connectHandlers();

    int m_tab;
    MainWindowHost& m_host;
    int& m_intPrevTableIndex;
};
