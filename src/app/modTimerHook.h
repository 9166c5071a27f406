#pragma once

// Activity watching for the inactivity auto-logout.

// The auto-logout countdown is showing.
extern bool blnLogoutPending;

// Starts watching the user's clicks and key presses (only with a logout limit).
void InstallActivityHooks();
// Stops watching (only with a logout limit).
void RemoveActivityHooks();
