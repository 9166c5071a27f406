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
    if (settings.demo && db.scalar(QStringLiteral("SELECT COUNT(*) FROM patients")).toInt() == 0)
    {
        DemoData::fill(db);
        outcome.demoFilled = true;
    }
    outcome.startersAdded = StarterDefinitions::addWhereMissing(db);
    const QStringList problems = SuiteSchema::checkIntegrity(db);
    if (!problems.isEmpty())
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The QC database failed its check: ") + problems.join(u' '));
    return outcome;
}

bool SuiteSetup::createMissingDemo(const SuiteSettings& settings)
{
    if (!settings.demo || settings.isPostgres() || QFileInfo::exists(settings.databaseName))
        return false;
    runAuto(settings);
    return true;
}
