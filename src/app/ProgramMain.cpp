#include "app/ProgramMain.h"

#include "CalvexBuildInfo.h"
#include "app/ProgramIcon.h"
#include "app/QtTranslations.h"
#include "app/frmMain.h"
#include "platform/ProgramVersion.h"
#include "widgets/QtMessageService.h"

#include <QApplication>

void InitApplication()
{
    // The name only: a display name of its own would be appended by the
    // platform to every window and message-box title ("Open Report — ...").
    // Boxes without a title of their own still show the name, which the
    // display name falls back to.
    QApplication::setApplicationName(QStringLiteral("Calvex QC Reports"));
    QApplication::setApplicationVersion(ProgramVersion());
    // The window's icon, and the desktop entry the desktop finds it by.
    QApplication::setWindowIcon(ProgramIcon());
    // The toolkit's dialogs in the user's language; without a translation they stay in English.
    QtTranslations::install(QLocale::system());
    QGuiApplication::setDesktopFileName(QStringLiteral(CALVEX_APP_ID));
    QtMessageService::installAsDefault();
}

int RunMainWindow(ProgramState& state, const std::function<void(frmMain&)>& shown)
{
    frmMain window(state);
    window.Form_Load();
    // Before the event loop runs, an end of the program is only recorded.
    if (state.exitRequested)
        return state.exitCode;
    window.show();
    if (shown)
        shown(window);
    return QApplication::exec();
}
