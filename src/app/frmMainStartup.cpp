// The start-up of the main window.
#include "app/frmMain.h"

#include "app/ProgramExit.h"
#include "app/StartupPrinter.h"
#include "app/modTimerHook.h"
#include "components/modCalcObject.h"
#include "output/modPrintGlobals.h"
#include "platform/Clock.h"
#include "platform/MessageService.h"
#include "platform/Process.h"
#include "platform/Registry.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"

#include <functional>
#include <vector>

namespace
{
QString withColon(qint16 id)
{
    return GetResourceText(id) + QLatin1Char(':');
}
} // namespace

QString frmMain::DatabaseQueryCommandLine(const QString& executablePath)
{
#ifdef Q_OS_WIN
    const QString tool = QStringLiteral("NorrixDBQuery.exe");
    const QChar separator = QLatin1Char('\\');
#else
    const QString tool = QStringLiteral("NorrixDBQuery");
    const QChar separator = QLatin1Char('/');
#endif
    QString commandLine = executablePath;
    if (!commandLine.endsWith(QLatin1Char('\\')) && !commandLine.endsWith(QLatin1Char('/')))
        commandLine += separator;
    // Unquoted: the process launcher splits a folder with blanks by its own rules.
    return commandLine + tool + QStringLiteral(" auto");
}

void frmMain::RunDatabaseQuery()
{
    const QString folder = TextOf(ReadCommonValue(QStringLiteral("Executable Path"), true));
    if (folder.isEmpty())
    {
        MsgBox(GetResourceText(4080), MsgStyle::Exclamation, m_strMsgTitle);
        return;
    }
    if (!RunProcess(DatabaseQueryCommandLine(folder), true))
        MsgBox(GetResourceText(4081), MsgStyle::Exclamation, m_strMsgTitle);
}

void frmMain::SetRunTimeCaptions()
{
    setWindowTitle(GetResourceText(4021));
    m_search->Label1.at(0)->setText(GetResourceText(4022));
    m_search->optFindBy[0]->setText(GetResourceText(4023));
    m_search->optFindBy[1]->setText(GetResourceText(4024));
    m_search->cmdFind->setText(GetResourceText(4025));
    m_search->fraSelectedPatient->setTitle(GetResourceText(4026));
    m_search->Label1.at(10)->setText(withColon(4023));
    m_search->Label1.at(11)->setText(withColon(4024));
    m_tabs->sstabReportTabs->setTabText(0, GetResourceText(4027));
    m_tabs->sstabReportTabs->setTabText(1, GetResourceText(4028));
    m_tabs->Label1.at(17)->setText(GetResourceText(4029));
    m_tabs->Label1.at(16)->setText(GetResourceText(4030));
    m_tabs->Label1.at(8)->setText(GetResourceText(4030));
    m_tabs->Label1.at(13)->setText(GetResourceText(4031));
    m_tabs->chkShowIn[2]->setText(GetResourceText(4032));
    m_tabs->chkShowIn[3]->setText(GetResourceText(4033));
    m_tabs->Label1.at(15)->setText(GetResourceText(4034));
    m_tabs->Label1.at(6)->setText(GetResourceText(4035));
    m_tabs->Label1.at(7)->setText(GetResourceText(4036));
    m_tabs->cmdVarAdd[1]->setText(GetResourceText(4037));
    m_tabs->cmdVarUpdate[1]->setText(GetResourceText(4038));
    m_tabs->cmdVarRemove[1]->setText(GetResourceText(4039));
    m_dates->fraDateRange->setTitle(GetResourceText(4040));
    // Label1(2) is written twice; the second text is the one shown.
    m_dates->Label1.at(2)->setText(GetResourceText(4026));
    m_dates->Label1.at(2)->setText(withColon(4041));
    m_dates->cmdDate[0]->setText(GetResourceText(4042));
    m_dates->cmdDate[1]->setText(GetResourceText(4042));
    m_dates->Label1.at(3)->setText(withColon(4043));
    m_run->cmdPrintSetup->setText(GetResourceText(4051));
    m_run->cmdPreview->setText(GetResourceText(4044));
    m_run->cmdPrint->setText(GetResourceText(4045));
    cmdHelp->setText(GetResourceText(4046));
    cmdCancel->setText(GetResourceText(4008));
    m_tabs->cmdNew->setText(GetResourceText(4047));
    m_tabs->cmdSave->setText(GetResourceText(4048));
    m_tabs->cmdSaveAs->setText(GetResourceText(4049));
    m_tabs->cmdDelete->setText(GetResourceText(4050));
}

void frmMain::UnloadSplash()
{
    if (m_splash)
    {
        m_splash->Unload();
        m_splash->deleteLater();
        m_splash = nullptr;
    }
}

void frmMain::ApplyEditRights()
{
    if (!m_state.blnCanEditReports)
    {
        m_tabs->DisableEditing();
        return;
    }
    m_tabs->cmdNew->setEnabled(true);
    m_tabs->sstabReportTabs_Click();
    const int tab = m_tabs->CurrentTab();
    m_tabs->cmdDelete->setEnabled(m_tabs->cboReports[std::size_t(tab)]->count() != 0);
}

void frmMain::TellWhyEditingIsOff()
{
    if (m_state.blnCanEditReports || m_blnReadOnlyTold || !m_state.objCalc)
        return;
    const QString reason = m_state.objCalc->ReadOnlyReason();
    if (reason.isEmpty())
        return;
    m_blnReadOnlyTold = true;
    MsgBox(reason, MsgStyle::Information, m_strMsgTitle);
}

void frmMain::EndStartUp()
{
    UnloadSplash();
    EndProgram(ExitStatus::StartFailed);
}

void frmMain::Form_Load()
{
    // One entry per statement of the start-up, with what it does for the
    // details of an error box. A statement returns false when it has ended
    // the program. A printer problem (484) only clears blnAppReady and the
    // start-up goes on with the next statement; any other run-time error ends
    // the program after its description was shown.
    struct Statement
    {
        const char* step;
        std::function<bool()> run;
    };
    const std::vector<Statement> statements = {
        {"setting the captions",
         [this] {
             SetRunTimeCaptions();
             return true;
         }},
        {"reading the message title",
         [this] {
             m_strMsgTitle = GetResourceText(4052);
             return true;
         }},
        // The splash is on the screen before anything can wait for the
        // database: the engine's session, rights and start check each wait
        // up to the database's timeout when it is locked or does not answer.
        {"showing the splash window",
         [this] {
             m_splash = new frmSplash;
             m_splash->Form_Load();
             m_splash->ShowNow();
             return true;
         }},
        {"creating the engine",
         [this] {
             if (CreateCalcObject(m_state))
                 return true;
             EndStartUp();
             return false;
         }},
        {"asking the engine's start check",
         [this] {
             QString reason;
             if (EngineAllowsStart(m_state, reason))
                 return true;
             MsgBox(GetResourceText(4125), MsgStyle::Exclamation, m_strMsgTitle, reason);
             EndStartUp();
             return false;
         }},
        {"updating the database",
         [this] {
             if (m_splash)
                 m_splash->lblStatus->setText(GetResourceText(4065));
             DoEvents();
             return true;
         }},
        {"running the database tool",
         [this] {
             RunDatabaseQuery();
             return true;
         }},
        {"loading variables and reports",
         [this] {
             if (m_splash)
                 m_splash->lblStatus->setText(GetResourceText(4066));
             DoEvents();
             return true;
         }},
        {"preparing the window",
         [this] {
             m_blnLoading = true;
             m_state.blnAppReady = true;
             return true;
         }},
        {"taking the printer",
         [this] {
             m_state.objPrint = StartupPrinter(m_state);
             return true;
         }},
        {"reading the printer's name",
         [this] {
             m_state.strStartupPrinter = m_state.objPrint ? m_state.objPrint->DeviceName() : QString();
             m_state.blnPrinterWarned = false;
             return true;
         }},
        {"clearing the subject",
         [this] {
             m_state.strNotifiedPatientID.clear();
             m_blnAutoLogout = false;
             return true;
         }},
        {"choosing the search",
         [this] {
             m_search->optFindBy[1]->setChecked(true);
             return true;
         }},
        {"setting today's date",
         [this] {
             MaskEdBox* to = m_dates->mskDate[1];
             to->SetText(to->FormatDate(Clock::today()));
             return true;
         }},
        {"loading the variable catalogue",
         [this] {
             for (int g = 0; g < ReportTabsPanel::TabCount; ++g)
             {
                 m_tabs->PrepareGrid(g);
                 if (!m_tabs->LoadVariableCatalogue(g))
                 {
                     EndStartUp();
                     return false;
                 }
             }
             return true;
         }},
        {"listing the saved reports",
         [this] {
             m_tabs->ListSavedReports();
             return true;
         }},
        {"opening the first saved report of each tab",
         [this] {
             m_blnLoading = false;
             m_tabs->SelectFirstReports();
             return true;
         }},
        {"applying the user's rights",
         [this] {
             ApplyEditRights();
             return true;
         }},
        {"showing the first tab",
         [this] {
             m_tabs->SetCurrentTab(0);
             return true;
         }},
        {"closing the splash window",
         [this] {
             UnloadSplash();
             return true;
         }},
        {"telling why editing is off",
         [this] {
             TellWhyEditingIsOff();
             return true;
         }},
        {"watching for activity",
         [this] {
             InstallActivityHooks(m_state);
             m_state.blnLogoutPending = false;
             return true;
         }},
    };

    for (const Statement& statement : statements)
    {
        try
        {
            if (!statement.run())
                return;
        }
        catch (const RuntimeError& error)
        {
            if (error.number() == ErrorNumber::PrinterError)
            {
                m_state.blnAppReady = false;
                MsgBox(GetResourceText(4117), MsgStyle::OkOnly, m_strMsgTitle);
                continue;
            }
            UnloadSplash();
            MsgBox(error.description(), MsgStyle::Critical, m_strMsgTitle,
                   RuntimeErrorDetail(error, QLatin1String(statement.step)));
            EndStartUp();
            return;
        }
    }
}
