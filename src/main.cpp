// Calvex QC Reports: the composition root. It is the one place that knows
// the suite's implementation; everything else reaches the suite through the
// component factory.
#include "app/ProgramCommandLine.h"
#include "app/ProgramMain.h"
#include "suite/SuiteComponents.h"

#include <QApplication>

int main(int argc, char** argv)
{
    // Before the application object: --help and --version need no display.
    if (const std::optional<int> status = ProgramCommandLine::answer(ProgramCommandLine::arguments(argc, argv), stdout))
        return *status;
    QApplication app(argc, argv);
    InitApplication();
    RegisterSuiteComponents();
    return RunMainWindow();
}
