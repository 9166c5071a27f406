// Calvex QC Reports: the composition root. It is the one place that knows
// the suite's implementation; everything else reaches the suite through the
// component factory.
#include "app/ProgramCommandLine.h"
#include "app/ProgramMain.h"
#include "suite/SuiteComponents.h"

#include <QApplication>

int main(int argc, char** argv)
{
    // --help and --version need no window and no display: the core
    // application object only tells the program where it is installed.
    const QStringList arguments = ProgramCommandLine::arguments(argc, argv);
    if (ProgramCommandLine::asksForInformation(arguments))
    {
        QCoreApplication information(argc, argv);
        return ProgramCommandLine::answer(arguments, stdout).value_or(0);
    }
    QApplication app(argc, argv);
    InitApplication();
    RegisterSuiteComponents();
    // The program's state lives as long as the run; the window and its
    // panels are handed it.
    ProgramState state;
    return RunMainWindow(state);
}
