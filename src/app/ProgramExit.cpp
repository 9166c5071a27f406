#include "app/ProgramExit.h"

#include <QApplication>
#include <QWidget>

void ProgramExit(ProgramState& state, int exitCode)
{
    state.exitRequested = true;
    state.exitCode = exitCode;
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
    {
        if (window->isVisible())
            window->close();
    }
    // Leaves the event loop; before it runs this does nothing, and the
    // composition root reads the state instead.
    QCoreApplication::exit(exitCode);
}
