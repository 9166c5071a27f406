#pragma once

#include <QtGlobal>

#include <functional>

// The inactivity auto-logout's shared state and the watching of the user's
// input. The idle seconds are counted by the main window's ActivityTimer; the
// countdown runs in frmAutoLogout.

// Seconds without a left click, double click or key; the watching resets it to 0.
extern qint16 intIdleSeconds;
// The auto-logout countdown is showing (and stays set when it expires, until
// the main window has closed).
extern bool blnLogoutPending;
// Seconds the countdown has run.
extern qint16 intLogoutElapsed;

// The countdown's length; it does not depend on the logout limit.
constexpr qint16 LogoutCountdownSeconds = 15;

// Starts watching the user's clicks and key presses in every window of the
// program and sets intIdleSeconds to 0; only with a logout limit above 0.
void InstallActivityHooks();
// Stops watching; only with a logout limit above 0.
void RemoveActivityHooks();

// seconds + 1 in the range of a 16-bit count; beyond it raises 6 (overflow).
qint16 AddSecond(qint16 seconds);

// The system beep.
void Beep();
// Replaces the sound of Beep (tests count the beeps); an empty function puts
// back the system beep.
void SetBeepFunction(std::function<void()> beep);
