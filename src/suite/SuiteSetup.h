#pragma once

#include <QStringList>

class SuiteDatabase;
struct SuiteSettings;

// What the database tool does with "auto" at every start of the program, and
// with "check" when the laboratory's administrator asks for it.
class SuiteSetup
{
public:
    struct Outcome
    {
        int versionBefore = 0;
        int version = 0;
        bool demoFilled = false;
        int startersAdded = 0; // starter definitions saved on tabs without one
        bool checked = false;  // the whole-database checks ran (and passed)
    };

    // "auto": reads the schema version and migrates the schema when it is
    // older than the program's, and fills the demo data into the embedded
    // demo database while it holds no patients (a new one, or one whose first
    // filling was interrupted), and gives a tab without a saved definition its
    // starter definition (a new laboratory database). Only after such a change does it refresh the
    // planner's statistics and run the whole-database checks: a start on a
    // current database reads no table whole, and writes nothing. Raises
    // RuntimeError with a one-sentence description when anything fails.
    //
    // On PostgreSQL one setup runs at a time (a session advisory lock): a
    // second one waits, at most ten minutes, and then finds the work done.
    static Outcome runAuto(const SuiteSettings& settings);

    // "check": the whole-database checks of SuiteSchema::checkIntegrity on an
    // existing database; the problems found, none when it is sound.
    static QStringList runCheck(const SuiteSettings& settings);

    // Brings up the embedded demo database of settings as runAuto does, when
    // it does not exist yet (before the database tool's first run); true when
    // it was made. Any other database that is missing stays missing.
    static bool createMissingDemo(const SuiteSettings& settings);

private:
    static Outcome setUp(SuiteDatabase& db, const SuiteSettings& settings);
    static void lockSetup(SuiteDatabase& db);
    static void unlockSetup(SuiteDatabase& db);
};
