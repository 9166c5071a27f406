#pragma once

#include "app/frmSplash.h"
#include "reports/MainWindowHost.h"
#include "reports/ReportTabsPanel.h"
#include "run/DateRangePanel.h"
#include "run/ReportRunPanel.h"
#include "run/SubjectSearchPanel.h"

#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include <array>

// The main window: the QC subject and date range on top, the report tabs in
// the middle, the run buttons, Help and Cancel at the bottom. It holds the
// state its panels share, runs the start-up (Form_Load) and the shutdown
// (Form_Unload, whatever closes the window).
//
// frmMain.cpp builds the window and keeps the shared state; frmMainStartup.cpp
// holds the start-up; frmMainAutoLogout.cpp the auto-logout's ActivityTimer.
class frmMain final : public QWidget, public MainWindowHost
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmMain)

public:
    // state belongs to the caller and outlives the window.
    explicit frmMain(ProgramState& state, QWidget* parent = nullptr);
    ~frmMain() override;

    // The start-up. It ends the program itself when the program cannot go on
    // (the state's exitRequested tells).
    void Form_Load();
    // Starts "NorrixDBQuery auto" from the suite's program folder and waits for it.
    void RunDatabaseQuery();
    // The command line of the database tool in the folder executablePath.
    static QString DatabaseQueryCommandLine(const QString& executablePath);

    // Closes the window; the shutdown runs once, whatever closed it.
    void Unload();
    bool IsUnloaded() const { return m_unloaded; }

    void cmdHelp_Click();
    void cmdCancel_Click();
    // Once a second: counts the idle seconds, shows the auto-logout countdown
    // beyond the limit and closes the window one tick after it has expired.
    void ActivityTimer_Timer();

    // MainWindowHost
    bool IsLoading() const override { return m_blnLoading; }
    void SetLoading(bool loading) override { m_blnLoading = loading; }
    bool IsModified(int tab) const override;
    void SetReportDirty(int tab, bool value) override;
    int CurrentTab() const override { return m_tabs->CurrentTab(); }
    QString MsgTitle() const override { return m_strMsgTitle; }
    bool ConfirmDiscardChanges(int tab, const QString& title) override;
    QString SelectedPatientName() const override;
    QString SelectedPatientID() const override;
    QString FromDateText() const override;
    QString ToDateText() const override;
    void ResetDateRange() override;
    ProgramState& State() override { return m_state; }

    SubjectSearchPanel* SubjectSearch() const { return m_search; }
    DateRangePanel* DateRange() const { return m_dates; }
    ReportTabsPanel* ReportTabs() const { return m_tabs; }
    ReportRunPanel* ReportRun() const { return m_run; }
    // The splash window while the start-up shows it.
    frmSplash* Splash() const { return m_splash; }

    QPushButton* cmdHelp = nullptr;
    QPushButton* cmdCancel = nullptr;
    QTimer* ActivityTimer = nullptr;
    // Set by the auto-logout before it closes the window.
    bool m_blnAutoLogout = false;

    // While editing is off because the database could not be written: asks
    // the engine for the edit right again and, once it is given, turns the
    // editing controls on. The window does so whenever it becomes active.
    void RefreshEditRights();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void Form_Unload();
    void SetRunTimeCaptions();
    void ApplyEditRights();
    // Tells the user, once, why editing is off when the database cannot be written.
    void TellWhyEditingIsOff();
    void UnloadSplash();
    // Unloads the window and ends the program with exitCode (ExitStatus).
    void EndProgram(int exitCode);
    // A refused or failed start: the splash goes, then the window, and the
    // program ends with ExitStatus::StartFailed.
    void EndStartUp();

    ProgramState& m_state;
    SubjectSearchPanel* m_search = nullptr;
    DateRangePanel* m_dates = nullptr;
    ReportTabsPanel* m_tabs = nullptr;
    ReportRunPanel* m_run = nullptr;
    QPointer<frmSplash> m_splash;

    QString m_strMsgTitle;
    bool m_blnLoading = false;
    std::array<bool, ReportTabsPanel::TabCount> m_blnModified{};
    bool m_unloaded = false;
    // The user was told that the database cannot be written; editing is off until it can.
    bool m_blnReadOnlyTold = false;
};
