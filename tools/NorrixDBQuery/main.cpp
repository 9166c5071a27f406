// NorrixDBQuery auto: creates or migrates the QC database named by the suite's
// settings, fills the demo data into a new embedded demo database and checks
// the database. Exit status 0 on success; otherwise one line on stderr saying
// why, and a non-zero status.
//
// NorrixDBQuery import FILE.csv [--dry-run]: brings a laboratory's QC results
// in (SuiteImportCommand). NorrixDBQuery catalogue: lists the tables and
// variables an import names (SuiteCatalogueCommand).
//
// NorrixDBQuery --help and --version print and exit with status 0.

#include "platform/ProgramVersion.h"
#include "platform/RuntimeError.h"
#include "suite/SuiteCatalogueCommand.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteImportCommand.h"
#include "suite/SuiteSettings.h"
#include "suite/SuiteSetup.h"

#include <QCoreApplication>
#include <QTextStream>

namespace
{
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

const QString kUsage = QStringLiteral("Usage: NorrixDBQuery auto | catalogue | import FILE.csv [--dry-run]");

QString help()
{
    return kUsage +
           QStringLiteral("\n"
                          "\n"
                          "Commands:\n"
                          "  auto                       create or migrate the QC database the settings key names,\n"
                          "                             fill a new demo database and check the database\n"
                          "  catalogue                  list the tables and variables of each tab, with units\n"
                          "  import FILE.csv [--dry-run]\n"
                          "                             add a laboratory's QC results from a CSV file (with\n"
                          "                             --dry-run: check it only)\n"
                          "  --help, -h                 print this help and exit\n"
                          "  --version                  print the version and exit\n"
                          "\n"
                          "Exit status:\n"
                          "  0  done\n"
                          "  1  the command failed (the reason is on stderr)\n"
                          "  2  the command line is wrong (usage error)\n");
}

void printLine(FILE* stream, QString text)
{
    text.replace(u'\n', u' ');
    QTextStream(stream) << text << Qt::endl;
}

bool isCommand(const QStringList& arguments, const char* command)
{
    return arguments.size() >= 2 && arguments.at(1).compare(QLatin1String(command), Qt::CaseInsensitive) == 0;
}

// The commands on the database's data; -1 when the arguments name none of them.
int runDataCommand(const QStringList& arguments)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    int status = -1;
    if (isCommand(arguments, "import"))
        status = SuiteImportCommand::run(arguments.mid(2), out, err);
    else if (isCommand(arguments, "catalogue") && arguments.size() == 2)
        status = SuiteCatalogueCommand::run(out, err);
    SuiteDatabase::closeAllConnections();
    return status;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (isCommand(arguments, "--help") || isCommand(arguments, "-h"))
    {
        QTextStream(stdout) << help() << Qt::flush;
        return 0;
    }
    if (isCommand(arguments, "--version"))
    {
        QTextStream(stdout) << VersionLine(QStringLiteral("NorrixDBQuery")) << Qt::flush;
        return 0;
    }
    if (const int status = runDataCommand(arguments); status >= 0)
        return status;
    if (arguments.size() != 2 || arguments.at(1).compare(QLatin1String("auto"), Qt::CaseInsensitive) != 0)
    {
        printLine(stderr, kUsage);
        return kExitUsage;
    }

    int status = 0;
    try
    {
        const SuiteSettings settings = SuiteSettings::fromRegistry();
        const SuiteSetup::Outcome outcome = SuiteSetup::runAuto(settings);
        QString line = QStringLiteral("QC database ready (schema version %1").arg(outcome.version);
        if (outcome.versionBefore != outcome.version)
            line += QStringLiteral(", was %1").arg(outcome.versionBefore);
        if (outcome.demoFilled)
            line += QStringLiteral(", demo data filled");
        if (outcome.startersAdded > 0)
            line += outcome.startersAdded == 1
                        ? QStringLiteral(", 1 starter report definition saved")
                        : QStringLiteral(", %1 starter report definitions saved").arg(outcome.startersAdded);
        printLine(stdout, line + QStringLiteral("): ") + settings.describe());
    }
    catch (const RuntimeError& error)
    {
        printLine(stderr, error.description());
        status = kExitFailed;
    }
    SuiteDatabase::closeAllConnections();
    return status;
}
