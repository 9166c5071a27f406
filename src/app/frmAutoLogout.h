#pragma once

#include "components/ProgramState.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

// The auto-logout countdown: shown modally by the main window's ActivityTimer
// when the user has been idle beyond the limit. It counts 15 seconds down with
// a beep on every tick; Stop Auto-Logout cancels the logout, otherwise the
// window goes and the main window's next tick closes the program.
class frmAutoLogout final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmAutoLogout)

public:
    explicit frmAutoLogout(ProgramState& state, QWidget* parent = nullptr);

    // The run-time captions and the starting "15".
    void Form_Load();
    // One second of the countdown.
    void StopTimer_Timer();
    void cmdStopLogout_Click();
    // Closes the window (its modal loop returns).
    void Unload();

    QLabel* txtAutoLogout = nullptr;
    QLineEdit* txtSeconds = nullptr;
    QPushButton* cmdStopLogout = nullptr;
    QTimer* StopTimer = nullptr;

public slots:
    // Escape and the close box do nothing: a countdown closed any other way than
    // by its button or its own end would leave the logout pending with nothing
    // left to finish it.
    void reject() override;

private:
    ProgramState& m_state;
};
