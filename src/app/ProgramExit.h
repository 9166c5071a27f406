#pragma once

#include "components/ProgramState.h"

// Ends the program: every window closes and the event loop stops with
// exitCode. The end is recorded in state (exitRequested, exitCode), so that
// the composition root, which runs the start-up before it enters the event
// loop, can tell that the start-up ended the program, and so that tests can
// see the end without the test process ending.
void ProgramExit(ProgramState& state, int exitCode = 0);
