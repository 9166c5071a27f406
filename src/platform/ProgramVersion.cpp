#include "platform/ProgramVersion.h"

#include "CalvexBuildInfo.h"

QString ProgramVersion()
{
    return QStringLiteral(CALVEX_VERSION_TEXT);
}

QString VersionLine(const QString& programName)
{
    return programName + QLatin1Char(' ') + ProgramVersion() + QLatin1Char('\n');
}
