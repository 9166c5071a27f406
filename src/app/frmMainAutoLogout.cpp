// The main window's part of the inactivity auto-logout: its ActivityTimer.
#include "app/frmMain.h"

#include "app/frmAutoLogout.h"
#include "app/modTimerHook.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"

#include <QApplication>
#include <QDialog>

namespace
{
// Closes the modal windows that are open (the preview, the calendar, Save As,
// the subject list, a message box), from the top down, as if each was
// cancelled: their modal loops return and the handlers that opened them go on
// with a cancelled choice, so nothing is stored on the way out. True when
// there was one.
bool CloseModalWindows()
{
    bool closedAny = false;
    while (QWidget* modal = QApplication::activeModalWidget())
    {
        closedAny = true;
        if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->done(QDialog::Rejected);
        else
            modal->close();
        if (QApplication::activeModalWidget() == modal)
            modal->hide();
        if (QApplication::activeModalWidget() == modal)
            break;
    }
    return closedAny;
}
} // namespace

void frmMain::ActivityTimer_Timer()
{
    if (m_state.lngLogoutSeconds == 0 || m_unloaded)
        return;
    try
    {
        if (!m_state.blnLogoutPending)
        {
            m_state.intIdleSeconds = AddSecond(m_state.intIdleSeconds);
            if (m_state.intIdleSeconds > m_state.lngLogoutSeconds)
            {
                m_state.blnLogoutPending = true;
                // This tick goes on only when the countdown window has gone.
                frmAutoLogout countdown(m_state, this);
                countdown.Form_Load();
                countdown.exec();
            }
        }
        else if (m_state.intLogoutElapsed > LogoutCountdownSeconds)
        {
            m_blnAutoLogout = true;
            // A modal window left open would keep the program running after the
            // main window has gone. They are closed first, and the window closes
            // on the next tick, once their handlers have returned, so that none
            // of them goes on after the engine has been released.
            if (CloseModalWindows())
                return;
            Unload();
        }
    }
    catch (const RuntimeError& error)
    {
        // The idle count overflows only under a limit beyond its 16-bit range
        // (over nine hours), which the count can never pass. Nobody is at the
        // screen by then and the error would come back every second, so it is
        // not shown: the count stays at its top until the next click or key.
        if (error.number() == ErrorNumber::Overflow)
            return;
        MsgBox(error.description(), MsgStyle::Critical, m_strMsgTitle);
    }
}
