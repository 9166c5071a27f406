// NorrixDBQuery: the suite's database tool.
//
//   NorrixDBQuery auto       run at every start of the program: creates or
//                            migrates the QC database named by the suite's
//                            settings, fills the demo data into a new embedded
//                            demo database and gives a tab without a saved
//                            definition its starter definition; only after a
//                            creation or migration does it check the whole
//                            database
//   NorrixDBQuery check      checks the whole database on demand (after a crash,
//                            before a backup): prints "ok", or each problem on a
//                            line of its own
//   NorrixDBQuery import FILE.csv [--dry-run]
//                            brings a laboratory's QC results in
//                            (SuiteImportCommand)
//   NorrixDBQuery catalogue  lists the tables and variables an import names
//                            (SuiteCatalogueCommand)
//
// Exit status 0 on success; 1 when the database cannot be brought up, has
// problems or a file cannot be imported (a failure to reach it is one line on
// stderr); 2 for a bad command line.
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

const QString kUsage = QStringLiteral("Usage: NorrixDBQuery auto | check | catalogue | import FILE.csv [--dry-run]");

QString help()
{
    return kUsage +
           QStringLiteral("\n"
                          "\n"
                          "Commands:\n"
                          "  auto                       create or migrate the QC database the settings key names,\n"
                          "                             fill a new demo database, give a tab without a saved\n"
                          "                             report its starter report; check the whole database\n"
                          "                             after a creation or migration\n"
                          "  check                      check the whole database (after a crash, before a\n"
                          "                             backup): prints ok, or each problem\n"
                          "  catalogue                  list the tables and variables of each tab, with units\n"
                          "  import FILE.csv [--dry-run]\n"
                          "                             add a laboratory's QC results from a CSV file (with\n"
                          "                             --dry-run: check it only)\n"
                          "  --help, -h                 print this help and exit\n"
                          "  --version                  print the version and exit\n"
                          "\n"
                          "Exit status:\n"
                          "  0  done\n"
                          "  1  the command failed (the reason is on stderr), or check found problems\n"
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

int runAuto(const SuiteSettings& settings)
{
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
    if (outcome.checked)
        line += QStringLiteral(", checked");
    printLine(stdout, line + QStringLiteral("): ") + settings.describe());
    return 0;
}

int runCheck(const SuiteSettings& settings)
{
    const QStringList problems = SuiteSetup::runCheck(settings);
    if (problems.isEmpty())
    {
        printLine(stdout, QStringLiteral("ok"));
        return 0;
    }
    for (const QString& problem : problems)
        printLine(stdout, problem);
    return kExitFailed;
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
    const QString command = arguments.size() == 2 ? arguments.at(1).toLower() : QString();
    if (command != QLatin1String("auto") && command != QLatin1String("check"))
    {
        printLine(stderr, kUsage);
        return kExitUsage;
    }

    int status = 0;
    try
    {
        const SuiteSettings settings = SuiteSettings::fromRegistry();
        status = command == QLatin1String("auto") ? runAuto(settings) : runCheck(settings);
    }
    catch (const RuntimeError& error)
    {
        printLine(stderr, SuiteDatabase::fullText(error));
        status = kExitFailed;
    }
    SuiteDatabase::closeAllConnections();
    return status;
}
