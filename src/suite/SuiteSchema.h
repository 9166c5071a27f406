#pragma once

#include <QString>
#include <QStringList>

class SuiteDatabase;

// The suite's tables, created and migrated step by step. The same statements
// run on SQLite and PostgreSQL (only the self-numbering key column and the
// storage order of the results are spelled per database; the key collation of
// step 3 and the covering indexes of step 5 are PostgreSQL's alone). Every step runs in one transaction together
// with the version it reaches, so a failed step leaves the database at the
// version before it. No step drops stored rows, and only step 4 changes any:
// the names of report definitions that shared one.
//
// Versions:
//   1  patients, catalogue (test tables, variables), visits, results, report
//      definitions and their parameter rows, users and their rights
//   2  the audit log, and a disabled flag for users
//   3  visits indexed by patient, tab and date; on PostgreSQL, the
//      patients' search keys compare by code point (collation "C"), so that
//      their indexes serve prefix searches
//   4  one report definition per name, compared without regard to case (a
//      unique index on the name's key); definitions that shared a name
//      before keep their rows under "name (2)", "name (3)" ... (the oldest
//      keeps the name)
//   5  on PostgreSQL, the visits' index carries the visit and the readings'
//      key carries the value, so that reports read the indexes alone
class SuiteSchema
{
public:
    static constexpr int CurrentVersion = 5;

    // The version of the database's schema; 0 when it has none yet.
    static int version(SuiteDatabase& db);

    // Brings the schema up to target (default: the current version) and
    // returns the version it had before. Refuses a database with tables of
    // another kind, and one made by a newer program.
    static int migrate(SuiteDatabase& db, int target = CurrentVersion);

    // What is wrong with the database, one sentence each; empty when it is
    // sound: the schema version, the tables, the catalogue; on SQLite the
    // file's own integrity and foreign-key checks; on PostgreSQL rows that
    // break a foreign key, foreign keys switched off, constraints never
    // checked on the stored rows and indexes left invalid. It reads the whole
    // database: for "NorrixDBQuery check", and after a creation or migration.
    static QStringList checkIntegrity(SuiteDatabase& db);

    // How many times this process has run checkIntegrity.
    static int checksRun();

    // Brings the statistics of the query planner up to date (of the given
    // tables, or of all), after the tables were created, migrated or filled
    // in bulk; on PostgreSQL it vacuums them too. Not inside a transaction.
    static void refreshStatistics(SuiteDatabase& db, const QStringList& tables = {});

    // Every table of the current version.
    static QStringList tableNames();

private:
    static void applyStep(SuiteDatabase& db, int step);
    static void renameDuplicateDefinitions(SuiteDatabase& db);
    static QStringList checkSqlite(SuiteDatabase& db);
    static QStringList checkPostgres(SuiteDatabase& db);
    static QString orphanProblem(const QString& table, const QString& parent);

    static inline int s_checksRun = 0;
};
