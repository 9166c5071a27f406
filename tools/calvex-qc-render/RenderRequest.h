#pragma once

#include "RenderOptions.h"
#include "components/ReportInfo.h"

// The report request of the command line, filled as the main window fills it:
// the saved definition found by name on its tab (names compare without regard
// to case, as the report store compares them), every parameter row as a
// variable with its name made unique, the QC subject found by its whole ID
// (case aside, as the patient query searches) with its display name, and the
// period as given. Throws RenderFailure for an
// unknown definition or subject and for a definition the program would not
// run; errors of the suite (RuntimeError) reach the caller.
ReportInfo BuildRenderRequest(const RenderOptions& options, bool siUnits);
