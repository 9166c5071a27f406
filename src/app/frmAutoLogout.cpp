#include "app/frmAutoLogout.h"

#include "app/modTimerHook.h"
#include "platform/modResource.h"
#include "widgets/EventGuard.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

frmAutoLogout::frmAutoLogout(ProgramState& state, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , m_state(state)
{
    setObjectName(QStringLiteral("frmAutoLogout"));
    setWindowTitle(QStringLiteral("Auto-Logout in Progress"));
    setModal(true);

    auto* layout = new QVBoxLayout(this);
    auto* line = new QHBoxLayout;
    txtAutoLogout = new QLabel(QStringLiteral("Auto-Logout will occur in seconds:"), this);
    txtAutoLogout->setObjectName(QStringLiteral("txtAutoLogout"));
    txtSeconds = new QLineEdit(this);
    txtSeconds->setObjectName(QStringLiteral("txtSeconds"));
    txtSeconds->setReadOnly(true);
    txtSeconds->setAlignment(Qt::AlignCenter);
    txtSeconds->setFocusPolicy(Qt::NoFocus);
    txtSeconds->setMaximumWidth(txtSeconds->fontMetrics().horizontalAdvance(QStringLiteral("0000")) + 12);
    line->addWidget(txtAutoLogout);
    line->addWidget(txtSeconds);
    layout->addLayout(line);

    cmdStopLogout = new QPushButton(QStringLiteral("Stop Auto-Logout"), this);
    cmdStopLogout->setObjectName(QStringLiteral("cmdStopLogout"));
    cmdStopLogout->setDefault(true);
    layout->addWidget(cmdStopLogout, 0, Qt::AlignHCenter);
    connect(cmdStopLogout, &QPushButton::clicked, this, [this] { cmdStopLogout_Click(); });

    StopTimer = new QTimer(this);
    StopTimer->setObjectName(QStringLiteral("StopTimer"));
    StopTimer->setInterval(1000);
    connect(StopTimer, &QTimer::timeout, this, [this] { StopTimer_Timer(); });
    StopTimer->start();
}

void frmAutoLogout::Form_Load()
{
    setWindowTitle(GetResourceText(4119));
    cmdStopLogout->setText(GetResourceText(4120));
    txtAutoLogout->setText(GetResourceText(4121));
    txtSeconds->setText(QString::number(LogoutCountdownSeconds));
}

void frmAutoLogout::StopTimer_Timer()
{
    if (m_state.lngLogoutSeconds == 0 || !m_state.blnLogoutPending)
        return;
    RunGuarded([this] {
        m_state.intLogoutElapsed = AddSecond(m_state.intLogoutElapsed);
        txtSeconds->setText(QString::number(LogoutCountdownSeconds - m_state.intLogoutElapsed));
        Beep(m_state);
        // blnLogoutPending stays set: the main window's next tick closes the program.
        if (m_state.intLogoutElapsed > LogoutCountdownSeconds)
            Unload();
    });
}

void frmAutoLogout::cmdStopLogout_Click()
{
    // The idle count is not reset here: the click, or the key that pressed the
    // button, has already reset it.
    m_state.blnLogoutPending = false;
    m_state.intLogoutElapsed = 0;
    Unload();
}

void frmAutoLogout::Unload()
{
    StopTimer->stop();
    done(QDialog::Rejected);
}

void frmAutoLogout::reject()
{
    // Only the button and the countdown's own end close the window.
}
