#pragma once

#include <QString>

// Why a rendering cannot go on, as one line for the user. A failure of the
// command line itself is followed by the usage line.
struct RenderFailure
{
    QString message;
    bool badCommandLine = false;
};
