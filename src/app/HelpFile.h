#pragma once

#include <QString>

// The program's help. On Windows it is "Calvex.chm" in the program's folder,
// shown by HTML Help; elsewhere it is the HTML help installed with the
// program (share/calvex-qc/help beside the program's bin folder, or the help
// folder of a build), shown in the program's help window (HelpWindow).

// The help file's path; for the HTML help the first index.html found, or
// empty when none is installed.
QString HelpFilePath();

// Shows the help file; failures are ignored.
void ShowHelpFile();
