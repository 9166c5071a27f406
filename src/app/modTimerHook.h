#pragma once

#include "components/ProgramState.h"

#include <QtGlobal>

// The inactivity auto-logout's watching of the user's input. Its counts
// (intIdleSeconds, blnLogoutPending, intLogoutElapsed), the watching itself
// and the countdown's beep are members of the program's state; the idle seconds are counted by the main window's
// ActivityTimer, the countdown runs in frmAutoLogout.

// The countdown's length; it does not depend on the logout limit.
constexpr qint16 LogoutCountdownSeconds = 15;

// Starts watching the user's clicks and key presses in every window of the
// program and sets state.intIdleSeconds to 0; only with a logout limit above 0.
// The watching belongs to state, which deletes it when it goes.
void InstallActivityHooks(ProgramState& state);
// Stops watching; only with a logout limit above 0.
void RemoveActivityHooks(ProgramState& state);

// seconds + 1 in the range of a 16-bit count; beyond it raises 6 (overflow).
qint16 AddSecond(qint16 seconds);

// The beep of state.beepSound, or the system beep when it is empty.
void Beep(const ProgramState& state);
