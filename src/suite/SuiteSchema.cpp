#include "suite/SuiteSchema.h"

#include "components/QCReportStore.h"
#include "platform/RuntimeError.h"
#include "suite/SuiteCatalogue.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteText.h"
#include "suite/SuiteTransaction.h"

#include <QSet>
#include <QSqlError>
#include <QSqlQuery>

#include <vector>

namespace
{
// Serialises migrations of workstations that start at the same moment on one
// PostgreSQL database (an arbitrary number, the same in every program).
constexpr qint64 kMigrationLock = 7305126;

const QString kIdentity = QStringLiteral("{ID}");
const QString kClustered = QStringLiteral("{CLUSTERED}");

QStringList stepStatements(int step, bool postgres)
{
    switch (step)
    {
    case 1:
        return {
            QStringLiteral("CREATE TABLE schema_version (version INTEGER NOT NULL)"),
            QStringLiteral("INSERT INTO schema_version (version) VALUES (0)"),
            QStringLiteral("CREATE TABLE patients ("
                           "patient_id {ID}, "
                           "id_num VARCHAR(40) NOT NULL UNIQUE, id_key VARCHAR(40) NOT NULL, "
                           "last_name VARCHAR(80) NOT NULL, last_key VARCHAR(80) NOT NULL, "
                           "first_name VARCHAR(80), first_key VARCHAR(80), "
                           "mid_name VARCHAR(80), mid_key VARCHAR(80), "
                           "birthday DATE)"),
            QStringLiteral("CREATE INDEX patients_id_key ON patients (id_key)"),
            QStringLiteral("CREATE INDEX patients_name_key ON patients (last_key, first_key)"),
            QStringLiteral("CREATE TABLE test_tables ("
                           "table_id {ID}, "
                           "tab SMALLINT NOT NULL CHECK (tab IN (0, 1)), "
                           "name VARCHAR(60) NOT NULL, "
                           "sort_order INTEGER NOT NULL, "
                           "UNIQUE (tab, name))"),
            QStringLiteral("CREATE TABLE variables ("
                           "var_id {ID}, "
                           "tab SMALLINT NOT NULL CHECK (tab IN (0, 1)), "
                           "name VARCHAR(60) NOT NULL, "
                           "unit VARCHAR(30), si_unit VARCHAR(30), "
                           "si_factor DOUBLE PRECISION NOT NULL DEFAULT 1, "
                           "si_offset DOUBLE PRECISION NOT NULL DEFAULT 0, "
                           "decimal_places INTEGER NOT NULL DEFAULT 2, "
                           "sort_order INTEGER NOT NULL, "
                           "UNIQUE (tab, name))"),
            QStringLiteral("CREATE TABLE visits ("
                           "visit_id {ID}, "
                           "patient_id INTEGER NOT NULL REFERENCES patients (patient_id), "
                           "visit_date DATE NOT NULL, "
                           "tab SMALLINT NOT NULL CHECK (tab IN (0, 1)))"),
            QStringLiteral("CREATE INDEX visits_patient_date ON visits (patient_id, visit_date)"),
            QStringLiteral("CREATE TABLE results ("
                           "visit_id INTEGER NOT NULL REFERENCES visits (visit_id) ON DELETE CASCADE, "
                           "table_id INTEGER NOT NULL REFERENCES test_tables (table_id), "
                           "var_id INTEGER NOT NULL REFERENCES variables (var_id), "
                           "result_value DOUBLE PRECISION, "
                           "PRIMARY KEY (visit_id, table_id, var_id)){CLUSTERED}"),
            QStringLiteral("CREATE TABLE qc_reports ("
                           "report_id {ID}, "
                           "name VARCHAR(100) NOT NULL, name_key VARCHAR(100) NOT NULL, "
                           "tab SMALLINT NOT NULL CHECK (tab IN (0, 1)), "
                           "saved_by VARCHAR(80), saved_at TIMESTAMP)"),
            QStringLiteral("CREATE INDEX qc_reports_name_key ON qc_reports (name_key)"),
            QStringLiteral("CREATE TABLE qc_report_params ("
                           "report_id INTEGER NOT NULL REFERENCES qc_reports (report_id) ON DELETE CASCADE, "
                           "param_order INTEGER NOT NULL, "
                           "table_id INTEGER NOT NULL REFERENCES test_tables (table_id), "
                           "var_id INTEGER NOT NULL REFERENCES variables (var_id), "
                           "show_in_graph SMALLINT NOT NULL, show_in_table SMALLINT NOT NULL, "
                           "decimal_places INTEGER NOT NULL, "
                           "PRIMARY KEY (report_id, param_order))"),
            QStringLiteral("CREATE TABLE users ("
                           "user_name VARCHAR(80) PRIMARY KEY, user_key VARCHAR(80) NOT NULL UNIQUE, "
                           "full_name VARCHAR(120), "
                           "auto_logout_minutes INTEGER NOT NULL DEFAULT 0)"),
            QStringLiteral("CREATE TABLE user_rights ("
                           "user_name VARCHAR(80) NOT NULL REFERENCES users (user_name) ON DELETE CASCADE, "
                           "right_number INTEGER NOT NULL, "
                           "PRIMARY KEY (user_name, right_number))"),
        };
    case 2:
        return {
            QStringLiteral("ALTER TABLE users ADD COLUMN disabled SMALLINT NOT NULL DEFAULT 0"),
            QStringLiteral("CREATE TABLE audit_log ("
                           "entry_id {ID}, "
                           "logged_at TIMESTAMP NOT NULL, "
                           "user_name VARCHAR(80) NOT NULL, "
                           "application INTEGER NOT NULL, "
                           "event_kind VARCHAR(40) NOT NULL, "
                           "event_code INTEGER, "
                           "patient_id_num VARCHAR(40), "
                           "auto_logout SMALLINT)"),
            QStringLiteral("CREATE INDEX audit_log_time ON audit_log (logged_at)"),
        };
    case 3: {
        // A report reads a subject's visits of one tab in date order; with
        // the tab in the index that is one stretch of the index alone, not a
        // visit row per visit (which lie far apart, numbered by day among
        // every other patient's). It replaces the index without the tab.
        QStringList statements{
            QStringLiteral("CREATE INDEX visits_patient_tab_date ON visits (patient_id, tab, visit_date)"),
            QStringLiteral("DROP INDEX visits_patient_date"),
        };
        // The patient search matches the start of the search keys as a range
        // of keys; their indexes serve that range only when the keys compare
        // by code point, as SQLite's BINARY collation always does. On
        // PostgreSQL the columns take the "C" collation (which rebuilds their
        // indexes, and changes no stored value).
        if (postgres)
            statements.append(QStringLiteral("ALTER TABLE patients "
                                             "ALTER COLUMN id_key TYPE VARCHAR(40) COLLATE \"C\", "
                                             "ALTER COLUMN last_key TYPE VARCHAR(80) COLLATE \"C\", "
                                             "ALTER COLUMN first_key TYPE VARCHAR(80) COLLATE \"C\", "
                                             "ALTER COLUMN mid_key TYPE VARCHAR(80) COLLATE \"C\""));
        return statements;
    }
    case 4:
        // The definitions that shared a name were renamed before (see
        // renameDuplicateDefinitions); from now on the database keeps the
        // names apart itself, also between workstations saving at once.
        return {
            QStringLiteral("DROP INDEX qc_reports_name_key"),
            QStringLiteral("CREATE UNIQUE INDEX qc_reports_name_unique ON qc_reports (name_key)"),
        };
    case 5:
        // A chart reads one reading per visit of its subject, a table one per
        // visit and column. On PostgreSQL both come from the indexes alone
        // (index-only scans, once VACUUM has marked the pages all-visible):
        // the visits' index carries the visit, in the order the reports sort
        // by, and the readings' key carries the value. Without that each
        // visit costs a visit row and a reading row on pages spread over the
        // whole table among every other patient's. SQLite needs neither: its
        // indexes end with the row's key, which is the visit, and the
        // readings are stored in the order of their key.
        if (!postgres)
            return {};
        return {
            QStringLiteral("DROP INDEX visits_patient_tab_date"),
            QStringLiteral("CREATE INDEX visits_patient_tab_date ON visits (patient_id, tab, visit_date, visit_id)"),
            QStringLiteral("ALTER TABLE results DROP CONSTRAINT results_pkey, "
                           "ADD CONSTRAINT results_pkey PRIMARY KEY (visit_id, table_id, var_id) "
                           "INCLUDE (result_value)"),
        };
    default:
        return {};
    }
}

QString identityColumn(const SuiteDatabase& db)
{
    // SQLite's AUTOINCREMENT never hands out a number again, not even the
    // largest after it was deleted: a saved definition always gets a new ID.
    return db.isPostgres() ? QStringLiteral("INTEGER GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY")
                           : QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT");
}

// Rows kept in the order of their primary key, so that reading a visit's
// readings by (visit, table, variable) is one search. PostgreSQL reads the
// key's index just as directly; SQLite otherwise searches the key's index and
// then the table.
QString clusteredTable(const SuiteDatabase& db)
{
    return db.isPostgres() ? QString() : QStringLiteral(" WITHOUT ROWID");
}

[[noreturn]] void refuse(const QString& description)
{
    throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource, description);
}

// Tables that are not the database's own bookkeeping.
QStringList userTables(SuiteDatabase& db)
{
    QStringList tables = db.connection().tables(QSql::Tables);
    tables.removeIf([](const QString& name) { return name.startsWith(QLatin1String("sqlite_")); });
    return tables;
}
} // namespace

QStringList SuiteSchema::tableNames()
{
    return {QStringLiteral("schema_version"), QStringLiteral("patients"),         QStringLiteral("test_tables"),
            QStringLiteral("variables"),      QStringLiteral("visits"),           QStringLiteral("results"),
            QStringLiteral("qc_reports"),     QStringLiteral("qc_report_params"), QStringLiteral("users"),
            QStringLiteral("user_rights"),    QStringLiteral("audit_log")};
}

int SuiteSchema::version(SuiteDatabase& db)
{
    if (!db.tableExists(QStringLiteral("schema_version")))
        return 0;
    return db.scalar(QStringLiteral("SELECT MAX(version) FROM schema_version")).toInt();
}

int SuiteSchema::migrate(SuiteDatabase& db, int target)
{
    const int before = version(db);
    if (before > CurrentVersion)
        refuse(QStringLiteral("The QC database has schema version %1, newer than this program knows (%2). "
                              "Install the newer program.")
                   .arg(before)
                   .arg(CurrentVersion));
    if (before == 0 && !userTables(db).isEmpty())
        refuse(QStringLiteral("The database holds tables but no QC schema version; it is not a QC database."));
    for (int step = before + 1; step <= target && step <= CurrentVersion; ++step)
        applyStep(db, step);
    return before;
}

void SuiteSchema::applyStep(SuiteDatabase& db, int step)
{
    SuiteTransaction transaction(db);
    if (db.isPostgres())
        db.exec(QStringLiteral("SELECT pg_advisory_xact_lock(?)"), {kMigrationLock});
    // Another workstation may have taken the step while this one waited.
    if (version(db) >= step)
    {
        transaction.commit();
        return;
    }
    const QString identity = identityColumn(db);
    const QString clustered = clusteredTable(db);
    const QStringList statements = stepStatements(step, db.isPostgres());
    if (step == 4)
        renameDuplicateDefinitions(db);
    for (QString sql : statements)
        db.exec(sql.replace(kIdentity, identity).replace(kClustered, clustered));
    if (step == 1)
        SuiteCatalogue::install(db);
    db.exec(QStringLiteral("UPDATE schema_version SET version = ?"), {step});
    transaction.commit();
}

// Definitions whose names compare equal without regard to case: the oldest
// (lowest ID) keeps its name, every later one is renamed "name (2)",
// "name (3)" ..., the first number whose name no definition bears, cut so
// that it fits the column. Nothing else of them changes.
void SuiteSchema::renameDuplicateDefinitions(SuiteDatabase& db)
{
    struct Definition
    {
        qint32 id;
        QString name;
        QString key;
    };
    std::vector<Definition> definitions;
    QSet<QString> keys;
    {
        QSqlQuery query =
            db.exec(QStringLiteral("SELECT report_id, name, name_key FROM qc_reports ORDER BY report_id"));
        while (query.next())
        {
            definitions.push_back({query.value(0).toInt(), query.value(1).toString(), query.value(2).toString()});
            keys.insert(definitions.back().key);
        }
    }
    QSet<QString> seen;
    for (const Definition& definition : definitions)
    {
        if (!seen.contains(definition.key))
        {
            seen.insert(definition.key);
            continue;
        }
        QString name;
        QString key;
        for (int number = 2;; ++number)
        {
            name = SuiteText::numberedName(definition.name, number, QCReportStore::MaxNameLength);
            key = SuiteText::searchKey(name);
            if (!keys.contains(key))
                break;
        }
        db.exec(QStringLiteral("UPDATE qc_reports SET name = ?, name_key = ? WHERE report_id = ?"),
                {name, key, definition.id});
        keys.insert(key);
        seen.insert(key);
    }
}

void SuiteSchema::refreshStatistics(SuiteDatabase& db, const QStringList& tables)
{
    // PostgreSQL: VACUUM also marks the pages whose rows every transaction
    // sees, which is what lets the reports' index-only scans skip the
    // table. It reads only pages changed since the last one. It cannot run
    // inside a transaction, and so neither can this.
    // SQLite: a sample of each index is enough for the planner and keeps
    // ANALYZE quick on a laboratory's database (it would read every index
    // whole).
    const QString command = db.isPostgres() ? QStringLiteral("VACUUM (ANALYZE)") : QStringLiteral("ANALYZE");
    if (!db.isPostgres())
        db.exec(QStringLiteral("PRAGMA analysis_limit = 1000"));
    if (tables.isEmpty())
        db.exec(command);
    for (const QString& table : tables)
        db.exec(command + u' ' + table);
}

QStringList SuiteSchema::checkIntegrity(SuiteDatabase& db)
{
    ++s_checksRun;
    QStringList problems;
    const int current = version(db);
    if (current != CurrentVersion)
        problems.append(QStringLiteral("The schema has version %1; this program needs version %2.")
                            .arg(current)
                            .arg(CurrentVersion));
    for (const QString& table : tableNames())
    {
        if (!db.tableExists(table))
            problems.append(QStringLiteral("The table %1 is missing.").arg(table));
    }
    if (!problems.isEmpty())
        return problems;

    for (qint16 tab = 0; tab <= 1; ++tab)
    {
        const QString tabName = tab == 0 ? QStringLiteral("PF") : QStringLiteral("GX");
        if (db.scalar(QStringLiteral("SELECT COUNT(*) FROM test_tables WHERE tab = ?"), {tab}).toInt() == 0)
            problems.append(QStringLiteral("The catalogue has no test table for %1.").arg(tabName));
        if (db.scalar(QStringLiteral("SELECT COUNT(*) FROM variables WHERE tab = ?"), {tab}).toInt() == 0)
            problems.append(QStringLiteral("The catalogue has no variable for %1.").arg(tabName));
    }
    problems += db.isPostgres() ? checkPostgres(db) : checkSqlite(db);
    return problems;
}

QStringList SuiteSchema::checkSqlite(SuiteDatabase& db)
{
    QStringList problems;
    const QString damaged = QStringLiteral("The database file is damaged: %1");
    // A page damaged badly enough stops a check with an error instead of a
    // report line; that error is the finding.
    const auto stoppedBy = [&](const QSqlQuery& query) {
        if (query.lastError().isValid())
            problems.append(damaged.arg(query.lastError().databaseText()));
    };

    QSqlQuery check(db.connection());
    check.setForwardOnly(true);
    if (check.exec(QStringLiteral("PRAGMA integrity_check")))
    {
        while (check.next())
        {
            const QString line = check.value(0).toString();
            if (line != QLatin1String("ok"))
                problems.append(damaged.arg(line));
        }
    }
    stoppedBy(check);
    check.finish();

    // One line per reference broken, however many rows break it.
    QSqlQuery keys(db.connection());
    keys.setForwardOnly(true);
    if (keys.exec(QStringLiteral("SELECT DISTINCT k.\"table\", k.parent FROM pragma_foreign_key_check AS k "
                                 "ORDER BY 1, 2")))
    {
        while (keys.next())
            problems.append(orphanProblem(keys.value(0).toString(), keys.value(1).toString()));
    }
    stoppedBy(keys);
    problems.removeDuplicates();
    return problems;
}

QStringList SuiteSchema::checkPostgres(SuiteDatabase& db)
{
    QStringList problems;
    // Rows the foreign keys should have refused: they get in while the
    // keys' triggers are switched off (a restore with session_replication_role
    // = replica, ALTER TABLE ... DISABLE TRIGGER ALL).
    QSqlQuery keys = db.exec(
        QStringLiteral("SELECT c.conrelid::regclass::text, quote_ident(a.attname), c.confrelid::regclass::text, "
                       "quote_ident(pa.attname) "
                       "FROM pg_constraint c "
                       "JOIN pg_attribute a ON a.attrelid = c.conrelid AND a.attnum = c.conkey[1] "
                       "JOIN pg_attribute pa ON pa.attrelid = c.confrelid AND pa.attnum = c.confkey[1] "
                       "WHERE c.contype = 'f' AND cardinality(c.conkey) = 1 "
                       "AND c.connamespace = (SELECT oid FROM pg_namespace WHERE nspname = current_schema()) "
                       "ORDER BY 1, 3"));
    struct Reference
    {
        QString table, column, parent, parentColumn;
    };
    std::vector<Reference> references;
    while (keys.next())
        references.push_back(
            {keys.value(0).toString(), keys.value(1).toString(), keys.value(2).toString(), keys.value(3).toString()});
    for (const Reference& ref : references)
    {
        const QVariant orphan = db.scalar(QStringLiteral("SELECT 1 FROM %1 c WHERE c.%2 IS NOT NULL AND NOT EXISTS "
                                                         "(SELECT 1 FROM %3 p WHERE p.%4 = c.%2) LIMIT 1")
                                              .arg(ref.table, ref.column, ref.parent, ref.parentColumn));
        if (!orphan.isNull())
            problems.append(orphanProblem(ref.table, ref.parent));
    }

    QSqlQuery off = db.exec(QStringLiteral(
        "SELECT DISTINCT c.conrelid::regclass::text, c.conname FROM pg_trigger t "
        "JOIN pg_constraint c ON c.oid = t.tgconstraint "
        "WHERE t.tgenabled = 'D' AND c.contype = 'f' "
        "AND c.connamespace = (SELECT oid FROM pg_namespace WHERE nspname = current_schema()) ORDER BY 1, 2"));
    while (off.next())
        problems.append(QStringLiteral("The foreign key %2 of the table %1 is switched off.")
                            .arg(off.value(0).toString(), off.value(1).toString()));

    // A constraint added NOT VALID holds only for rows written since.
    QSqlQuery unchecked = db.exec(QStringLiteral(
        "SELECT conrelid::regclass::text, conname FROM pg_constraint WHERE NOT convalidated "
        "AND connamespace = (SELECT oid FROM pg_namespace WHERE nspname = current_schema()) ORDER BY 1, 2"));
    while (unchecked.next())
        problems.append(QStringLiteral("The constraint %2 of the table %1 has not been checked on the stored rows.")
                            .arg(unchecked.value(0).toString(), unchecked.value(1).toString()));

    // An index whose building failed (CREATE INDEX CONCURRENTLY, REINDEX
    // CONCURRENTLY) is kept up to date but not used, and a unique one does
    // not guard its rule.
    QSqlQuery indexes = db.exec(QStringLiteral(
        "SELECT c.relname, i.indrelid::regclass::text FROM pg_index i JOIN pg_class c ON c.oid = i.indexrelid "
        "WHERE (NOT i.indisvalid OR NOT i.indisready) "
        "AND c.relnamespace = (SELECT oid FROM pg_namespace WHERE nspname = current_schema()) ORDER BY 1"));
    while (indexes.next())
        problems.append(QStringLiteral("The index %1 of the table %2 is not valid; rebuild it (REINDEX).")
                            .arg(indexes.value(0).toString(), indexes.value(1).toString()));
    return problems;
}

QString SuiteSchema::orphanProblem(const QString& table, const QString& parent)
{
    return QStringLiteral("The table %1 has rows that refer to missing rows of %2.").arg(table, parent);
}

int SuiteSchema::checksRun()
{
    return s_checksRun;
}
