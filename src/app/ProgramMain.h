#pragma once

#include "components/ProgramState.h"

#include <functional>

class frmMain;

// The program's names and version, and the window toolkit's message boxes.
void InitApplication();

// Creates the main window over state and runs its start-up. Unless the
// start-up ended the program, shows the window, calls shown (when given) and
// runs the event loop. Returns the program's exit code.
int RunMainWindow(ProgramState& state, const std::function<void(frmMain&)>& shown = {});
