#include "app/ProgramCommandLine.h"

#include "app/HelpFile.h"
#include "platform/ProgramVersion.h"

#include <QDir>
#include <QTextStream>

#ifdef Q_OS_WIN
#include "platform/Registry.h"
#else
#include "platform/RegistryFile.h"
#endif

QStringList ProgramCommandLine::arguments(int argc, char** argv)
{
    QStringList list;
    for (int i = 1; i < argc; ++i)
        list.append(QString::fromLocal8Bit(argv[i]));
    return list;
}

QString ProgramCommandLine::help()
{
    return QStringLiteral(
        "Usage: calvex-qc [--help | --version]\n"
        "\n"
        "Calvex QC Reports: Levey-Jennings control charts and tables of a laboratory's QC subjects,\n"
        "previewed and printed from saved report definitions.\n"
        "\n"
        "Options:\n"
        "  -h, --help  print this help and exit\n"
        "  --version   print the version and exit\n"
        "\n"
        "The window toolkit's own options (-platform, -style, ...) are passed on to it. The settings\n"
        "are read from the key file named by NORRIX_REGISTRY, else /etc/norrix/registry.reg, else the\n"
        "default key file installed with the program. See calvex-qc(1).\n"
        "\n"
        "Exit status:\n"
        "  0  the program was closed (Cancel, the close box, the auto-logout)\n"
        "  1  the start-up was refused or failed (its last message says why under Show Details)\n");
}

QString ProgramCommandLine::files()
{
#ifdef Q_OS_WIN
    const QString settings = QStringLiteral("HKEY_LOCAL_MACHINE\\") + kNorrixCommonKey;
#else
    const QString settings = RegistryFile::activePath();
#endif
    const QString help = HelpFilePath();
    return QStringLiteral("\nFiles:\n  settings    %1\n  help pages  %2\n")
        .arg(settings.isEmpty() ? QStringLiteral("(none)") : QDir::toNativeSeparators(settings),
             help.isEmpty() ? QStringLiteral("(not installed)") : QDir::toNativeSeparators(help));
}

bool ProgramCommandLine::asksForInformation(const QStringList& arguments)
{
    return arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h")) ||
           arguments.contains(QLatin1String("--version"));
}

std::optional<int> ProgramCommandLine::answer(const QStringList& arguments, FILE* out)
{
    QTextStream stream(out);
    if (arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h")))
    {
        stream << help() << files() << Qt::flush;
        return 0;
    }
    if (arguments.contains(QLatin1String("--version")))
    {
        stream << VersionLine(QStringLiteral("calvex-qc")) << Qt::flush;
        return 0;
    }
    return std::nullopt;
}
