#pragma once

#include "components/ProgramState.h"

#include <QtGlobal>

#include <functional>

// The inactivity auto-logout's watching of the user's input. Its counts
// (intIdleSeconds, blnLogoutPending, intLogoutElapsed) are members of the
// program's state; the idle seconds are counted by the main window's
// ActivityTimer, the countdown runs in frmAutoLogout.

// The countdown's length; it does not depend on the logout limit.
constexpr qint16 LogoutCountdownSeconds = 15;

// Starts watching the user's clicks and key presses in every window of the
// program and sets state.intIdleSeconds to 0; only with a logout limit above 0.
// The watching resets the idle count of state, which must outlive it or be
// given to RemoveActivityHooks first.
void InstallActivityHooks(ProgramState& state);
// Stops watching; only with a logout limit above 0.
void RemoveActivityHooks(const ProgramState& state);

// seconds + 1 in the range of a 16-bit count; beyond it raises 6 (overflow).
qint16 AddSecond(qint16 seconds);

// The system beep.
void Beep();
// Replaces the sound of Beep (tests count the beeps); an empty function puts
// back the system beep.
void SetBeepFunction(std::function<void()> beep);
