#pragma once

#include "RenderOptions.h"
#include "SavedDefinition.h"
#include "components/ReportInfo.h"

#include <QList>

// The report request of the command line, filled as the main window fills it:
// the saved definition found by name on its tab (names compare without regard
// to case, as the report store compares them), every parameter row as a
// variable with its name made unique, the QC subject found by its whole ID
// (case aside, as the patient query searches) with its display name, and the
// period as given. Throws RenderFailure for an
// unknown definition or subject and for a definition the program would not
// run; errors of the suite (RuntimeError) reach the caller.
ReportInfo BuildRenderRequest(const RenderOptions& options, bool siUnits);

// The steps of the request, which --all takes one by one.

// Every saved definition: those of the PF tab, then those of the GX tab, each
// tab in the store's order (by name).
QList<SavedDefinition> ListSavedDefinitions();

// The definition's variables into info.Variables (info.TestTab becomes its
// tab), checked as the program checks a request's variables. Throws
// RenderFailure for a definition that cannot be opened or that the program
// would not run.
void LoadDefinitionVariables(const SavedDefinition& definition, bool siUnits, ReportInfo& info);

// The QC subject of the whole ID into info (PatientID as stored, PatientName).
// Throws RenderFailure when there is none.
void FindRenderSubject(const QString& id, ReportInfo& info);
