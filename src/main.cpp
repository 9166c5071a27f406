// Calvex QC Reports: the composition root. It is the one place that knows
// the suite's implementation; everything else reaches the suite through the
// component factory.
#include "app/ProgramMain.h"
#include "suite/SuiteComponents.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    InitApplication();
    RegisterSuiteComponents();
    return RunMainWindow();
}
