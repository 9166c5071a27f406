#pragma once

// Ends the program: every window closes and the event loop stops with
// exitCode. The end is remembered, so that the composition root, which runs
// the start-up before it enters the event loop, can tell that the start-up
// ended the program, and so that tests can see the end without the test
// process ending.
void ProgramExit(int exitCode = 0);

bool ProgramExitRequested();
int ProgramExitCode();

// Forgets an earlier end (tests run several start-ups in one process).
void ResetProgramExit();
