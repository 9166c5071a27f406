#pragma once

#include "components/ProgramState.h"

// The binding to the suite's calculation engine: one engine object for the
// whole run, the user's rights and auto-logout limit read from it at start-up,
// and the notifications about the QC subject this program holds. The engine,
// the rights and the subjects are members of the program's state.

// Creates the engine, opens this program's session (4115 when refused), reads
// the rights (4116 without right 500) and the auto-logout limit. False when
// the program must not go on; a run-time error is shown with style 16. Each
// box carries the reason as its detail: the engine's status, the engine's
// account of the missing right, the error's number and source.
bool CreateCalcObject(ProgramState& state);

// The engine's start check: true only for status 0. Otherwise reason says why
// (the engine's own reason, or the error's description). A run-time error is
// shown with style 16 and gives false.
bool EngineAllowsStart(ProgramState& state, QString& reason);

// Tells the engine about a newly chosen subject (released for the previous
// one first); does nothing for "" or an unchanged subject.
void SetCurrentPatient(ProgramState& state);

// At shutdown: releases the chosen subject, if any. Both shutdown calls do
// nothing when no engine could be created.
void ReleasePatient(ProgramState& state);

// The close notification (with whether the auto-logout closed the program),
// then the engine is released.
void CloseApplication(ProgramState& state, bool autoLogout);
