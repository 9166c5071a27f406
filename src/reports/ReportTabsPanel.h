#pragma once

#include "platform/Recordset.h"
#include "reports/MainWindowHost.h"
#include "widgets/FlexGrid.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QWidget>

#include <array>
#include <map>

// The report definitions part of the main window: the tab strip with one page
// per test type (0 = pulmonary function, 1 = gas exchange), each with its
// saved-report list, its variable catalogue, the editor of the selected
// variables, and the New / Save / Save As / Delete buttons below the tabs.
//
// The procedures live in files by concern: ReportTabsPanel.cpp builds the
// controls and keeps the tab switch, ReportCatalogue.cpp the variable
// catalogue, ReportList.cpp the saved-report lists and opening,
// VariableEditor.cpp the selected-variables editor.
class ReportTabsPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReportTabsPanel)

public:
    static constexpr int TabCount = 2;
    static constexpr int GridCols = 8;

    explicit ReportTabsPanel(MainWindowHost& host, QWidget* parent = nullptr);

    // The controls, by their system names (objectName "name(index)").
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

    int CurrentTab() const;
    // Makes tab the current tab. The switch handling runs as for the user's
    // own switch, except while the program is loading (opening a definition
    // shows its tab without letting the list follow the grid).
    void SetCurrentTab(int tab);

    // Grid of a tab at start-up: eight columns, vertical scrolling only, the
    // header texts, the column widths, header plus one blank row.
    void PrepareGrid(int Index);

    // The variable catalogue of a tab. False after the error was shown.
    bool LoadVariableCatalogue(int Index);
    void cboTable_Click(int Index);
    void cboVariable_Click(int Index);
    bool ApplyTableToAllVariables(int Index);

    // Start-up listing: the placeholder item on each tab, then every saved
    // definition on its tab. Errors reach the caller.
    void ListSavedReports();
    // Selects the first saved definition of each tab, which opens it.
    void SelectFirstReports();
    void cboReports_Click(int Index);
    void LoadReportParameters(int Index, Recordset& rs);
    void cmdNew_Click();
    void UpdateSaveAsButton(int Index);

    // The user's switch to another tab: the list follows the definition the
    // tab's grid holds.
    void sstabReportTabs_Click();

    // Without the edit right every editing control is disabled.
    void DisableEditing();

    bool ShowSelectedVariable(int Index, int Row);
    void UpdateVariableButtons(int Index);
    void CountSelectedTotals(int Index, std::array<qint32, 2>& Counts);
    void CountSelectedTotals(int Index);
    void SizeGridColumns(int Index);
    void chkShowIn_Click(int Index);
    void msfgVariable_Click(int Index);

private:
    QWidget* buildTab(int Index);
    void connectHandlers(int Index);

    MainWindowHost& m_host;
    std::array<qint32, TabCount> m_lngPrevReportIndex{};
    int m_intPrevTableIndex = 0;
};
