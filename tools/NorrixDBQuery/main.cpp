// NorrixDBQuery auto: creates or migrates the QC database named by the suite's
// settings, fills the demo data into a new embedded demo database and checks
// the database. Exit status 0 on success; otherwise one line on stderr saying
// why, and a non-zero status.

#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"
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
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2 || arguments.at(1).compare(QLatin1String("auto"), Qt::CaseInsensitive) != 0)
    {
        printLine(stderr, QStringLiteral("Usage: NorrixDBQuery auto"));
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
