#include "app/ProgramExit.h"

#include <QApplication>
#include <QWidget>

namespace
{
bool g_requested = false;
int g_exitCode = 0;
} // namespace

void ProgramExit(int exitCode)
{
    g_requested = true;
    g_exitCode = exitCode;
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
    {
        if (window->isVisible())
            window->close();
    }
    // Leaves the event loop; before it runs this does nothing, and the
    // composition root asks ProgramExitRequested instead.
    QCoreApplication::exit(exitCode);
}

bool ProgramExitRequested()
{
    return g_requested;
}

int ProgramExitCode()
{
    return g_exitCode;
}

void ResetProgramExit()
{
    g_requested = false;
    g_exitCode = 0;
}
