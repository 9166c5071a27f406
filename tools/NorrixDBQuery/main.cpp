// NorrixDBQuery auto: creates or migrates the QC database named by the suite's
// settings, fills the demo data into a new embedded demo database and checks
// the database. Exit status 0 on success; otherwise one line on stderr saying
// why, and a non-zero status.
//
// NorrixDBQuery import FILE.csv [--dry-run]: brings a laboratory's QC results
// in (SuiteImportCommand). NorrixDBQuery catalogue: lists the tables and
// variables an import names (SuiteCatalogueCommand).

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
    if (const int status = runDataCommand(arguments); status >= 0)
        return status;
    if (arguments.size() != 2 || arguments.at(1).compare(QLatin1String("auto"), Qt::CaseInsensitive) != 0)
    {
        printLine(stderr, QStringLiteral("Usage: NorrixDBQuery auto | catalogue | import FILE.csv [--dry-run]"));
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
