#include "app/ProgramIcon.h"

#include "CalvexBuildInfo.h"
#include "platform/ProgramFolders.h"

#include <QFileInfo>

QIcon ProgramIcon()
{
    QIcon icon;
    const QString name = QStringLiteral(CALVEX_APP_ID ".png");
    for (int size : {16, 32, 48, 64, 128, 256})
    {
        const QString file = ProgramShareFolder() + QStringLiteral("/icons/hicolor/%1x%1/apps/").arg(size) + name;
        if (QFileInfo::exists(file))
            icon.addFile(file, QSize(size, size));
    }
    if (icon.isNull())
        icon = QIcon::fromTheme(QStringLiteral(CALVEX_APP_ID));
    return icon;
}
