#include "platform/ProgramFolders.h"

#include "CalvexBuildInfo.h"

#include <QCoreApplication>
#include <QDir>

QString ProgramShareFolder()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                           QStringLiteral(CALVEX_SHARE_FROM_PROGRAMS));
}

QString ProgramDataFolder()
{
    return ProgramShareFolder() + QLatin1Char('/') + QStringLiteral(CALVEX_DATA_FOLDER_NAME);
}
