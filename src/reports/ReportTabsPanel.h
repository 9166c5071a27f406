#pragma once

#include "components/ReportInfo.h"
#include "reports/MainWindowHost.h"
#include "reports/ReportCommands.h"
#include "reports/ReportRequestBuilder.h"
#include "reports/SavedReportList.h"
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
#include <memory>

// The report definitions part of the main window: the tab strip with one page
// per test type (0 = pulmonary function, 1 = gas exchange), each with its
// saved-report list, its variable catalogue and the editor of the selected
// variables, and the New / Save / Save As / Delete buttons below the tabs.
//
// The panel composes the classes that own those controls and lays their
// controls out: the SavedReportList of both tabs, a VariableEditor per tab,
// the ReportCommands below the tabs, and the ReportRequestBuilder that turns
// a tab into a report request. It keeps the tab switch, and lists the
// controls in the window's control arrays.
class ReportTabsPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReportTabsPanel)

public:
    static constexpr int TabCount = 2;
    static constexpr int GridCols = VariableGridCells::ColumnCount;

    explicit ReportTabsPanel(MainWindowHost& host, QWidget* parent = nullptr);

    // The controls, by their system names (objectName "name(index)"). The
    // lists, the variable controls and the buttons belong to the classes
    // above and are listed here as the window's control arrays.
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

    // The lists' work, for the start-up: the saved definitions listed on
    // their tabs (errors reach the caller), then the first of each opened.
    void ListSavedReports() { m_lists->ListSavedReports(); }
    void SelectFirstReports() { m_lists->SelectFirstReports(); }

    // The commands' work, for the start-up and the window's timer.
    void cmdNew_Click() { m_commands->cmdNew_Click(); }
    void UpdateReportButtons() { m_commands->UpdateReportButtons(); }
    void EnableNewButton() { m_commands->EnableNewButton(); }
    void UpdateDeleteButton() { m_commands->UpdateDeleteButton(); }

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
    qint32 BuildReportInfo(qint16 tab, ReportInfo& info) const { return m_request->BuildReportInfo(tab, info); }

private:
    QWidget* buildTab(int Index, QWidget* page);

    MainWindowHost& m_host;
    std::array<VariableEditor*, TabCount> m_editors{};
    SavedReportList* m_lists = nullptr;
    std::unique_ptr<ReportRequestBuilder> m_request;
    ReportCommands* m_commands = nullptr;
    int m_intPrevTableIndex = 0; // the table list position last taken, on either tab
};
