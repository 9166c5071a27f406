#pragma once

#include <QString>

// Lets pending window messages run (timers included), then returns.
void DoEvents();

// Starts another program. The command line is split as the platform's process
// launcher splits it. With wait, window events keep being served until the
// program has ended, without spinning the processor. True when the process
// was created.
bool RunProcess(const QString& commandLine, bool wait);
