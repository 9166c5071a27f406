#include "suite/SuiteSetup.h"

#include "platform/RuntimeError.h"
#include "suite/DemoData.h"
#include "suite/StarterDefinitions.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"

#include <QFileInfo>

SuiteSetup::Outcome SuiteSetup::runAuto(const SuiteSettings& settings)
{
    SuiteDatabase db(settings, SuiteDatabase::OpenMode::CreateIfMissing);
    Outcome outcome;
    outcome.versionBefore = SuiteSchema::migrate(db);
    outcome.version = SuiteSchema::version(db);
    // One row tells whether the table is empty; a count would read them all.
    if (settings.demo && db.scalar(QStringLiteral("SELECT 1 FROM patients LIMIT 1")).isNull())
    {
        DemoData::fill(db);
        outcome.demoFilled = true;
    }
    outcome.startersAdded = StarterDefinitions::addWhereMissing(db);
    // A start on a current database ends here: every further step reads the
    // whole database, which a laboratory's database makes slow.
    if (outcome.versionBefore == outcome.version && !outcome.demoFilled)
        return outcome;

    SuiteSchema::refreshStatistics(db);
    const QStringList problems = SuiteSchema::checkIntegrity(db);
    outcome.checked = true;
    if (!problems.isEmpty())
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The QC database failed its check: ") + problems.join(u' '));
    return outcome;
}

QStringList SuiteSetup::runCheck(const SuiteSettings& settings)
{
    SuiteDatabase db(settings, SuiteDatabase::OpenMode::ExistingOnly);
    return SuiteSchema::checkIntegrity(db);
}

bool SuiteSetup::createMissingDemo(const SuiteSettings& settings)
{
    if (!settings.demo || settings.isPostgres() || QFileInfo::exists(settings.databaseName))
        return false;
    runAuto(settings);
    return true;
}
