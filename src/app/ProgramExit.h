#pragma once

#include "components/ProgramState.h"

// The program's exit statuses.
namespace ExitStatus
{
// The user, or the auto-logout, closed the program.
constexpr int Closed = 0;
// The start-up was refused (the suite's session, right 500, the start check)
// or failed (the engine, the variable catalogue, any other run-time error)
// and ended the program before its window was ready.
constexpr int StartFailed = 1;
} // namespace ExitStatus

// Ends the program: every window closes and the event loop stops with
// exitCode. The end is recorded in state (exitRequested, exitCode), so that
// the composition root, which runs the start-up before it enters the event
// loop, can tell that the start-up ended the program, and so that tests can
// see the end without the test process ending.
void ProgramExit(ProgramState& state, int exitCode = ExitStatus::Closed);
