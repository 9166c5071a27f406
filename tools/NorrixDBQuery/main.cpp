// NorrixDBQuery: the suite's database tool.
//
//   NorrixDBQuery auto    run at every start of the program: creates or
//                         migrates the QC database named by the suite's
//                         settings and fills the demo data into a new embedded
//                         demo database; only after such a change does it
//                         check the whole database
//   NorrixDBQuery check   checks the whole database on demand (after a crash,
//                         before a backup): prints "ok", or each problem on a
//                         line of its own
//
// Exit status 0 on success; 1 when the database cannot be brought up or has
// problems (a failure to reach it is one line on stderr); 2 for a bad
// command line.

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

int runAuto(const SuiteSettings& settings)
{
    const SuiteSetup::Outcome outcome = SuiteSetup::runAuto(settings);
    QString line = QStringLiteral("QC database ready (schema version %1").arg(outcome.version);
    if (outcome.versionBefore != outcome.version)
        line += QStringLiteral(", was %1").arg(outcome.versionBefore);
    if (outcome.demoFilled)
        line += QStringLiteral(", demo data filled");
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
    const QString command = arguments.size() == 2 ? arguments.at(1).toLower() : QString();
    if (command != QLatin1String("auto") && command != QLatin1String("check"))
    {
        printLine(stderr, QStringLiteral("Usage: NorrixDBQuery auto | check"));
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
        printLine(stderr, error.description());
        status = kExitFailed;
    }
    SuiteDatabase::closeAllConnections();
    return status;
}
