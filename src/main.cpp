// Calvex QC Reports: the composition root. It is the one place that knows
// the suite's implementation; everything else reaches the suite through the
// component factory.
#include "app/ProgramExit.h"
#include "app/frmMain.h"
#include "platform/MessageService.h"
#include "suite/SuiteComponents.h"
#include "widgets/QtMessageService.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Calvex QC Reports"));
    QApplication::setApplicationDisplayName(QStringLiteral("Calvex QC Reports"));
    QApplication::setApplicationVersion(QStringLiteral("%1.%2.%3")
                                            .arg(CALVEX_VERSION_MAJOR)
                                            .arg(CALVEX_VERSION_MINOR)
                                            .arg(CALVEX_VERSION_PATCH));

    MessageService::setDefault(new QtMessageService);
    RegisterSuiteComponents();

    frmMain window;
    window.Form_Load();
    if (ProgramExitRequested())
        return ProgramExitCode();
    window.show();
    return app.exec();
}
