#pragma once

#include "reports/MainWindowHost.h"
#include "reports/ReportTabsPanel.h"
#include "rules/QCRuleSet.h"
#include "run/DateRangePanel.h"
#include "run/SubjectSearchPanel.h"
#include "run/frmPrintPreview.h"

#include <QPointer>
#include <QPushButton>
#include <QWidget>

#include <optional>

// Print Setup, Preview and Print of the main window: the report run. A run
// checks the request (subject, date range, variables and their limits),
// reads the unit setting (blnSIUnits) and the QC rules to check ("QC Rules"),
// builds the report request from the current tab and hands it to the preview
// window or straight to the printer (objPrint), through the print path that
// the batch renderer uses too.
class ReportRunPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ReportRunPanel)

public:
    ReportRunPanel(MainWindowHost& host, SubjectSearchPanel& search, DateRangePanel& dates, ReportTabsPanel& tabs,
                   QWidget* parent = nullptr);

    // The report in the preview window, shown modally when it has pages.
    // 4118 while printing is impossible; 4137 for a QC rule the settings name
    // that the program does not know, and then nothing is shown.
    void cmdPreview_Click();
    // The report on objPrint: graph pages, then the table pages numbered on,
    // then with QC rules on the violation pages, then EndDoc. 4117 while
    // printing is impossible, 4064 (focus to Print Setup) without a printer,
    // 4137 for an unknown QC rule in the settings; nothing is printed when the
    // preparation fails.
    void cmdPrint_Click();
    // The printer dialog; the printer chosen becomes objPrint. 4117 while
    // printing is impossible.
    void cmdPrintSetup_Click();

    // The checks of a run on tab, in order, each with its message (style 48,
    // the window's title) and focus: a subject (4075, txtPatient), a valid
    // date range (4076, mskDate(0)), a variable for the graph or the table
    // (4077, cboVariable(tab)), at most nine in the graph (4078) and in the
    // table (4079).
    bool ValidateReportRequest(qint16 tab);
    // A QC subject is chosen.
    bool IsPatientSelected() const;

    // The preview window while a Preview run has it loaded; nullptr otherwise.
    frmPrintPreview* PreviewWindow() const { return m_preview; }

    QPushButton* cmdPrintSetup = nullptr;
    QPushButton* cmdPreview = nullptr;
    QPushButton* cmdPrint = nullptr;

private:
    // The report definition's name as the tab's list shows it.
    QString ReportName(qint16 tab) const;
    // The QC rules of the setting "QC Rules", read afresh. False after
    // message 4137 (style 48, the window's title), naming the first rule the
    // program does not know and the rules it knows.
    bool ReadQCRules(QCRuleSet& rules) const;
    // What a run of Preview or Print is asked for.
    struct RunRequest
    {
        qint16 tab = 0;
        ReportInfo info; // the tab's definition for the subject and period
        QCRuleSet rules;
    };
    // What Preview and Print ask first: the checks of the current tab's run
    // (ValidateReportRequest), the QC rules (ReadQCRules) and the unit
    // setting, then the request. Nothing, after the message of the check
    // that failed, when there is nothing to run.
    std::optional<RunRequest> ReadRunRequest();

    MainWindowHost& m_host;
    SubjectSearchPanel& m_search;
    DateRangePanel& m_dates;
    ReportTabsPanel& m_tabs;
    QPointer<frmPrintPreview> m_preview;
};
