#pragma once

#include "reports/MainWindowHost.h"
#include "reports/ReportRequestBuilder.h"
#include "reports/SavedReportList.h"

#include <QObject>
#include <QPushButton>
#include <QTabWidget>

#include <array>

class QCReportStore;
class VariableEditor;

// The definition commands below the tabs: New, Save, Save As and Delete of
// the current tab's definition, and the rules that enable their buttons. It
// owns the four buttons and their handlers; the report tabs lay them out.
class ReportCommands final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReportCommands)

public:
    static constexpr int TabCount = 2;

    // Creates the buttons on parent. tabs: the tab strip, whose current tab
    // the commands act on; lists: the saved-report lists they keep up to date.
    ReportCommands(MainWindowHost& host, const QTabWidget& tabs, SavedReportList& lists,
                   const std::array<VariableEditor*, TabCount>& editors, const ReportRequestBuilder& request,
                   QWidget* parent);

    // The buttons by their system names.
    QPushButton* cmdNew = nullptr;
    QPushButton* cmdSave = nullptr;
    QPushButton* cmdSaveAs = nullptr;
    QPushButton* cmdDelete = nullptr;

    // New empties the current tab's grid for a new definition, after asking
    // whether unsaved changes may be lost.
    void cmdNew_Click();
    // Save replaces the stored definition of the list's current item by the
    // grid's; Save As stores the grid under a new name; Delete removes the
    // current item's definition. Each shows its own errors.
    void cmdSave_Click();
    void cmdSaveAs_Click();
    void cmdDelete_Click();

    // The edit right applied to New, Save, Save As and Delete again.
    void UpdateReportButtons();
    void EnableNewButton();
    void UpdateDeleteButton();
    // Save As needs the edit right and a variable row on tab Index.
    void UpdateSaveAsButton(int Index);

    // Without the edit right no button can be pressed.
    void DisableEditing();

private:
    int currentTab() const { return m_tabs.currentIndex(); }
    // The placeholder was chosen on tab: the commands of a new definition.
    void newDefinitionChosen(int tab);
    // Stores the current tab's grid under Name through store; the new ID.
    qint32 SaveReportDefinition(QCReportStore& store, const QString& Name);
    // Deletes the definition of the current tab's selected list item.
    void DeleteSelectedReport(QCReportStore& store);

    MainWindowHost& m_host;
    const QTabWidget& m_tabs;
    SavedReportList& m_lists;
    std::array<VariableEditor*, TabCount> m_editors;
    const ReportRequestBuilder& m_request;
};
