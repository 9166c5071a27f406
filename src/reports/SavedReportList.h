#pragma once

#include "reports/MainWindowHost.h"

#include <QComboBox>
#include <QObject>
#include <QTabWidget>
#include <QWidget>

#include <array>

class VariableEditor;

// The saved-report lists of the two tabs: it lists the stored definitions at
// start-up and opens the one the user chooses into its tab's editor. It owns
// the lists cboReports(0) and cboReports(1) and their handler; the report
// tabs lay them out.
class SavedReportList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SavedReportList)

public:
    static constexpr int TabCount = 2;

    // Creates each tab's list on its page. tabs: the tab strip, shown on the
    // opened definition's tab. editors: the tabs' variable editors, which the
    // report tabs create after the lists and before either list is used.
    SavedReportList(MainWindowHost& host, QTabWidget& tabs, const std::array<QWidget*, TabCount>& pages,
                    const std::array<VariableEditor*, TabCount>& editors, QObject* parent);

    // The lists by their system names (objectName "cboReports(index)").
    std::array<QComboBox*, TabCount> cboReports{};

    // Start-up listing: the placeholder item on each tab, then every saved
    // definition on its tab. Errors reach the caller.
    void ListSavedReports();
    // Selects the first saved definition of each tab, which opens it.
    void SelectFirstReports();
    // The choice of an item on tab Index: the placeholder starts a new
    // definition, a saved definition is opened. Shows its own errors.
    void cboReports_Click(int Index);

signals:
    // The placeholder was chosen on tab: a new definition starts there.
    void newDefinitionChosen(int tab);
    // Whether the saved definition being opened may be deleted.
    void deletableChosen(bool deletable);
    // A saved definition was loaded into the grid of tab.
    void definitionLoaded(int tab);

private:
    MainWindowHost& m_host;
    QTabWidget& m_tabs;
    const std::array<VariableEditor*, TabCount>& m_editors;
    std::array<qint32, TabCount> m_lngPrevReportIndex{};
};
