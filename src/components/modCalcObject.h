#pragma once

#include "components/CalcEngine.h"

#include <QString>

#include <memory>

// The binding to the suite's calculation engine: one engine object for the
// whole run, the user's rights and auto-logout limit read from it at start-up,
// and the notifications about the QC subject this program holds.

extern std::unique_ptr<CalcEngine> objCalc;
extern bool blnCanRunReports;        // right 500
extern bool blnCanEditReports;       // right 501
extern qint32 lngLogoutSeconds;      // 0 = no auto-logout
extern QString strNotifiedPatientID; // the subject the engine was last told about; "" = none
extern QString strCurrentPatientID;  // the subject the user chose

// Creates the engine, opens this program's session (4115 when refused), reads
// the rights (4116 without right 500) and the auto-logout limit. False when
// the program must not go on; a run-time error is shown with style 16.
bool CreateCalcObject();

// The engine's start check: true only for status 0. A run-time error is shown
// with style 16 and gives false.
bool EngineAllowsStart();

// Tells the engine about a newly chosen subject (released for the previous
// one first); does nothing for "" or an unchanged subject.
void SetCurrentPatient();

// At shutdown: releases the chosen subject, if any. Both shutdown calls do
// nothing when no engine could be created.
void ReleasePatient();

// The close notification (with whether the auto-logout closed the program),
// then the engine is released.
void CloseApplication(bool autoLogout);
