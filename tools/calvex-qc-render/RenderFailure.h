#pragma once

#include <QString>

// Why a rendering cannot go on, as one line for the user. A failure of the
// command line itself (exit status 2) is followed by the usage line unless
// withUsage is false: a list of QC rules the program cannot check is a usage
// error said in one line.
struct RenderFailure
{
    QString message;
    bool badCommandLine = false;
    bool withUsage = true;
};

// Ends the rendering with message: a failure of the run, not of the command line.
[[noreturn]] inline void RenderRefuse(const QString& message)
{
    throw RenderFailure{message, false};
}
