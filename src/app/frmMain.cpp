#include "app/frmMain.h"

#include "app/HelpFile.h"
#include "app/ProgramExit.h"
#include "app/modTimerHook.h"
#include "components/CalcEngine.h"
#include "components/modCalcObject.h"
#include "platform/Clock.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "widgets/EventGuard.h"
#include "widgets/FitToScreen.h"

#include <QCloseEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

frmMain::frmMain(ProgramState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Calvex QC Reports"));

    // The window's content scrolls when the screen is smaller than the
    // content's minimum size (a small screen at a large scale), so every
    // control can still be reached.
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setObjectName(QStringLiteral("scrContent"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    // Tab walks the controls, not the area; the area follows the focus.
    scroll->setFocusPolicy(Qt::NoFocus);
    outer->addWidget(scroll);
    auto* content = new QWidget(scroll);
    content->setObjectName(QStringLiteral("frmMainContent"));
    scroll->setWidget(content);

    auto* layout = new QVBoxLayout(content);
    auto* top = new QHBoxLayout;
    m_search = new SubjectSearchPanel(*this, this);
    m_dates = new DateRangePanel(this);
    top->addWidget(m_search, 1);
    top->addWidget(m_dates);
    layout->addLayout(top);

    m_tabs = new ReportTabsPanel(*this, this);
    layout->addWidget(m_tabs, 1);
    // A date box's change refreshes the report buttons. While the start-up
    // fills the window the saved-report lists are still empty; it applies the
    // button rule itself once they are filled.
    connect(m_dates, &DateRangePanel::DateChanged, this, [this] {
        if (!m_blnLoading)
            RunGuarded([this] { m_tabs->UpdateReportButtons(); }, m_strMsgTitle);
    });

    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    layout->addWidget(line);

    auto* bottom = new QHBoxLayout;
    m_run = new ReportRunPanel(*this, *m_search, *m_dates, *m_tabs, this);
    bottom->addWidget(m_run);
    bottom->addStretch(1);
    cmdHelp = new QPushButton(QStringLiteral("&Help"), this);
    cmdHelp->setObjectName(QStringLiteral("cmdHelp"));
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    for (QPushButton* button : {cmdHelp, cmdCancel})
    {
        button->setAutoDefault(false);
        bottom->addWidget(button);
    }
    layout->addLayout(bottom);

    connect(cmdHelp, &QPushButton::clicked, this, [this] { cmdHelp_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });

    // The auto-logout counts idle seconds on this timer.
    ActivityTimer = new QTimer(this);
    ActivityTimer->setObjectName(QStringLiteral("ActivityTimer"));
    ActivityTimer->setInterval(1000);
    connect(ActivityTimer, &QTimer::timeout, this, [this] { ActivityTimer_Timer(); });
    ActivityTimer->start();

    FitToScreen(*this, QSize(960, 680));
}

frmMain::~frmMain()
{
    if (m_splash)
        delete m_splash.data();
    // A window that goes without its shutdown leaves no watching behind that
    // would reset the idle count of a state that may be gone by then.
    if (!m_unloaded)
        RemoveActivityHooks(m_state);
}

bool frmMain::IsModified(int tab) const
{
    return m_blnModified.at(std::size_t(tab));
}

void frmMain::SetReportDirty(int tab, bool value)
{
    m_blnModified.at(std::size_t(tab)) = value && !m_blnLoading;
}

bool frmMain::ConfirmDiscardChanges(int tab, const QString& title)
{
    if (tab < 0 || tab >= ReportTabsPanel::TabCount)
        throw RuntimeError(ErrorNumber::SubscriptOutOfRange, QStringLiteral("ConfirmDiscardChanges"),
                           QStringLiteral("Subscript out of range"));
    if (!m_blnModified[std::size_t(tab)])
        return true;
    if (MsgBox(GetResourceText(4082), MsgStyle::YesNo + MsgStyle::Question, title) == MsgAnswer::Yes)
    {
        SetReportDirty(tab, false);
        return true;
    }
    return false;
}

QString frmMain::SelectedPatientName() const
{
    return m_search->txtPatientName->text();
}

QString frmMain::SelectedPatientID() const
{
    return m_state.strCurrentPatientID;
}

QString frmMain::FromDateText() const
{
    return m_dates->mskDate[0]->Text();
}

QString frmMain::ToDateText() const
{
    return m_dates->mskDate[1]->Text();
}

void frmMain::ResetDateRange()
{
    m_dates->mskDate[0]->SetText(QString());
    m_dates->mskDate[1]->SetText(FormatMonthDayYear(Clock::today()));
}

void frmMain::Unload()
{
    if (!m_unloaded)
    {
        m_unloaded = true;
        Form_Unload();
    }
    close();
}

void frmMain::RefreshEditRights()
{
    // The user's own rights do not change during a run; only a database that
    // could not be written may take changes again.
    if (!m_blnReadOnlyTold || m_state.blnCanEditReports || m_blnLoading || !m_state.objCalc)
        return;
    try
    {
        if (!m_state.objCalc->HasRight(CalcEngine::RightEditReports))
            return;
    }
    catch (const RuntimeError&)
    {
        return;
    }
    m_state.blnCanEditReports = true;
    m_blnReadOnlyTold = false;
    m_tabs->EnableEditing();
    ApplyEditRights();
}

void frmMain::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        RefreshEditRights();
}

void frmMain::closeEvent(QCloseEvent* event)
{
    if (!m_unloaded)
    {
        m_unloaded = true;
        Form_Unload();
    }
    event->accept();
}

void frmMain::Form_Unload()
{
    // Each step runs even when one before it failed: the engine must hear of the close.
    RunGuarded([this] { ReleasePatient(m_state); }, m_strMsgTitle);
    RunGuarded([this] { RemoveActivityHooks(m_state); }, m_strMsgTitle);
    RunGuarded([this] { CloseApplication(m_state, m_blnAutoLogout); }, m_strMsgTitle);
}

void frmMain::EndProgram(int exitCode)
{
    Unload();
    ProgramExit(m_state, exitCode);
}

void frmMain::cmdHelp_Click()
{
    ShowHelpFile();
}

void frmMain::cmdCancel_Click()
{
    EndProgram(ExitStatus::Closed);
}
