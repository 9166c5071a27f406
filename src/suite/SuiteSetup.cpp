#include "suite/SuiteSetup.h"

#include "platform/RuntimeError.h"
#include "suite/DemoData.h"
#include "suite/StarterDefinitions.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThread>

namespace
{
// One setup at a time on a PostgreSQL database (an arbitrary number, the same
// in every program; the migration steps' lock is another).
constexpr qint64 kSetupLock = 7305127;
// How long a setup waits for another workstation's: long enough for the
// creation and demo filling of a new database.
constexpr int kSetupWaitSeconds = 600;
// How long one statement of a setup may run: a migration step or a check
// reads a laboratory's tables whole.
constexpr int kSetupStatementSeconds = 1800;
} // namespace

void SuiteSetup::lockSetup(SuiteDatabase& db)
{
    if (!db.isPostgres())
        return;
    // Asked again and again rather than waited for in one statement, which
    // the connection's statement and lock timeouts would end.
    const QDeadlineTimer deadline{std::chrono::seconds(kSetupWaitSeconds)};
    while (!db.scalar(QStringLiteral("SELECT pg_try_advisory_lock(?)"), {kSetupLock}).toBool())
    {
        if (deadline.hasExpired())
            throw RuntimeError(SuiteDatabase::ErrorTimedOut, SuiteDatabase::ErrorSource,
                               QStringLiteral("Another workstation has been setting up the QC database for %1 "
                                              "minutes; try again when it has finished.")
                                   .arg(kSetupWaitSeconds / 60));
        QThread::msleep(100);
    }
}

void SuiteSetup::unlockSetup(SuiteDatabase& db)
{
    if (!db.isPostgres())
        return;
    try
    {
        db.scalar(QStringLiteral("SELECT pg_advisory_unlock(?)"), {kSetupLock});
    }
    catch (const RuntimeError&)
    {
        // A lost connection has given the lock up with it.
    }
}

SuiteSetup::Outcome SuiteSetup::runAuto(const SuiteSettings& settings)
{
    SuiteDatabase db(settings, SuiteDatabase::OpenMode::CreateIfMissing);
    // Workstations started at the same moment on a new database: one sets it
    // up, the others wait and then find it done.
    lockSetup(db);
    try
    {
        db.allowLongStatements(kSetupStatementSeconds);
        Outcome outcome = setUp(db, settings);
        unlockSetup(db);
        return outcome;
    }
    catch (...)
    {
        unlockSetup(db);
        throw;
    }
}

SuiteSetup::Outcome SuiteSetup::setUp(SuiteDatabase& db, const SuiteSettings& settings)
{
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
    db.allowLongStatements(kSetupStatementSeconds);
    return SuiteSchema::checkIntegrity(db);
}

bool SuiteSetup::createMissingDemo(const SuiteSettings& settings)
{
    if (!settings.demo || settings.isPostgres() || QFileInfo::exists(settings.databaseName))
        return false;
    runAuto(settings);
    return true;
}
