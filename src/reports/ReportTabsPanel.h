#pragma once

#include "components/ReportInfo.h"
#include "platform/Recordset.h"
#include "reports/MainWindowHost.h"
#include "reports/VariableEditor.h"
#include "reports/VariableGridCells.h"
#include "widgets/FlexGrid.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QWidget>

#include <array>
#include <map>

class QCReportStore;

// The report definitions part of the main window: the tab strip with one page
// per test type (0 = pulmonary function, 1 = gas exchange), each with its
// saved-report list, its variable catalogue, the editor of the selected
// variables, and the New / Save / Save As / Delete buttons below the tabs.
//
// Each tab's catalogue lists and selected-variables grid are a VariableEditor
// of their own. The panel's procedures live in files by concern:
// ReportTabsPanel.cpp builds the tabs and keeps the tab switch,
// ReportList.cpp the saved-report lists, opening and New, ReportCommands.cpp
// Save, Save As, Delete and the rules of their buttons, ReportRequest.cpp the
// report request built from a tab's grid.
class ReportTabsPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReportTabsPanel)

public:
    static constexpr int TabCount = 2;
    static constexpr int GridCols = VariableGridCells::ColumnCount;

    explicit ReportTabsPanel(MainWindowHost& host, QWidget* parent = nullptr);

    // The controls, by their system names (objectName "name(index)"). The
    // variable controls of each tab belong to its editor and are listed here
    // as the window's control arrays.
    QTabWidget* sstabReportTabs = nullptr;
    std::array<QComboBox*, TabCount> cboReports{};
    std::array<QComboBox*, TabCount> cboTable{};
    std::array<QComboBox*, TabCount> cboVariable{};
    std::array<QComboBox*, TabCount> cboVarUnits{};     // hidden, parallel to cboVariable
    std::array<QComboBox*, TabCount> cboVarDecPlaces{}; // hidden, parallel to cboVariable
    std::array<QComboBox*, TabCount> cboVarTest{};      // hidden, always empty
    std::array<QCheckBox*, 2 * TabCount> chkShowIn{};   // 2i graph, 2i+1 table of tab i
    std::array<QPushButton*, TabCount> cmdVarAdd{};
    std::array<QPushButton*, TabCount> cmdVarUpdate{};
    std::array<QPushButton*, TabCount> cmdVarRemove{};
    std::array<QLabel*, 2 * TabCount> lblTotalFor{}; // 2i graph, 2i+1 table of tab i
    std::array<FlexGrid*, TabCount> msfgVariable{};
    QPushButton* cmdNew = nullptr;
    QPushButton* cmdSave = nullptr;
    QPushButton* cmdSaveAs = nullptr;
    QPushButton* cmdDelete = nullptr;
    // The labels of the tabs by their index in the window's label array.
    std::map<int, QLabel*> Label1;

    // The selected-variables editor of a tab.
    VariableEditor& Editor(int tab) const { return *m_editors.at(std::size_t(tab)); }

    int CurrentTab() const;
    // Makes tab the current tab. The switch handling runs as for the user's
    // own switch, except while the program is loading (opening a definition
    // shows its tab without letting the list follow the grid).
    void SetCurrentTab(int tab);

    // The editor's work on tab Index, for the start-up and the run.
    void PrepareGrid(int Index) { Editor(Index).PrepareGrid(); }
    // The variable catalogue of a tab. False after the error was shown.
    bool LoadVariableCatalogue(int Index) { return Editor(Index).LoadVariableCatalogue(); }
    bool ApplyTableToAllVariables(int Index) { return Editor(Index).ApplyTableToAllVariables(); }
    bool ShowSelectedVariable(int Index, int Row) { return Editor(Index).ShowSelectedVariable(Row); }
    void UpdateVariableButtons(int Index) { Editor(Index).UpdateVariableButtons(); }
    void CountSelectedTotals(int Index, std::array<qint32, 2>& Counts) { Editor(Index).CountSelectedTotals(Counts); }
    void CountSelectedTotals(int Index) { Editor(Index).CountSelectedTotals(); }
    void SizeGridColumns(int Index) { Editor(Index).SizeGridColumns(); }
    // Rows shown in the graph or in the table.
    qint32 CountSelectedVariables(qint16 Index) const { return Editor(Index).CountSelectedVariables(); }
    // Rows shown in the graph, and rows shown in the table.
    std::array<qint32, 2> CountShownVariables(qint16 Index) const { return Editor(Index).CountShownVariables(); }

    // Start-up listing: the placeholder item on each tab, then every saved
    // definition on its tab. Errors reach the caller.
    void ListSavedReports();
    // Selects the first saved definition of each tab, which opens it.
    void SelectFirstReports();
    void cboReports_Click(int Index);
    void cmdNew_Click();
    void UpdateSaveAsButton(int Index);

    // Save replaces the stored definition of the list's current item by the
    // grid's; Save As stores the grid under a new name; Delete removes the
    // current item's definition. Each shows its own errors.
    void cmdSave_Click();
    void cmdSaveAs_Click();
    void cmdDelete_Click();
    // Stores the current tab's grid under Name through store; the new ID.
    qint32 SaveReportDefinition(QCReportStore& store, const QString& Name);
    // Deletes the definition of the current tab's selected list item.
    void DeleteSelectedReport(QCReportStore& store);
    // The edit right applied to New, Save, Save As and Delete again.
    void UpdateReportButtons();
    void EnableNewButton();
    void UpdateDeleteButton();

    // The user's switch to another tab: the list follows the definition the
    // tab's grid holds.
    void sstabReportTabs_Click();

    // Without the edit right every editing control is disabled.
    void DisableEditing();
    // The edit right given again during the run (a database that can be
    // written again): the editing controls follow their rules once more.
    void EnableEditing();

    // The report request of tab: its grid's rows (names made unique), the
    // subject and the date boxes. The number of variables put in; 0 leaves
    // info as it was.
    qint32 BuildReportInfo(qint16 tab, ReportInfo& info) const;

private:
    QWidget* buildTab(int Index);

    MainWindowHost& m_host;
    std::array<VariableEditor*, TabCount> m_editors{};
    std::array<qint32, TabCount> m_lngPrevReportIndex{};
    int m_intPrevTableIndex = 0; // the table list position last taken, on either tab
};
