#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/SuiteCatalogue.h"
#include "suite/SuiteSchema.h"

#include <QSqlQuery>
#include <QTest>

class TestSuiteSchema : public QObject
{
    Q_OBJECT

private:
    static int count(SuiteDatabase& db, const QString& table)
    {
        return db.scalar(QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
    }

    // Rows of every table of version 1, written with version 1's columns.
    static void fillVersionOne(SuiteDatabase& db)
    {
        db.exec(QStringLiteral("INSERT INTO patients (id_num, id_key, last_name, last_key, first_name, first_key, "
                               "birthday) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                {QStringLiteral("QC900"), QStringLiteral("qc900"), QStringLiteral("O'Brien"), QStringLiteral("o'brien"),
                 QStringLiteral("Máire"), QStringLiteral("máire"), QDate(1970, 5, 6)});
        const int patient = db.scalar(QStringLiteral("SELECT patient_id FROM patients")).toInt();
        const int table =
            db.scalar(QStringLiteral("SELECT table_id FROM test_tables WHERE name = ?"), {QStringLiteral("Pre")})
                .toInt();
        const int variable =
            db.scalar(QStringLiteral("SELECT var_id FROM variables WHERE name = ?"), {QStringLiteral("FVC")}).toInt();
        for (int i = 0; i < 5; ++i)
        {
            const int visit = db.scalar(QStringLiteral("INSERT INTO visits (patient_id, visit_date, tab) "
                                                       "VALUES (?, ?, ?) RETURNING visit_id"),
                                        {patient, QDate(2024, 1, 1).addDays(7 * i), 0})
                                  .toInt();
            db.exec(QStringLiteral("INSERT INTO results (visit_id, table_id, var_id, result_value) "
                                   "VALUES (?, ?, ?, ?)"),
                    {visit, table, variable, 4.5 + i / 100.0});
        }
        const int report = db.scalar(QStringLiteral("INSERT INTO qc_reports (name, name_key, tab) VALUES (?, ?, ?) "
                                                    "RETURNING report_id"),
                                     {QStringLiteral("Old Report"), QStringLiteral("old report"), 0})
                               .toInt();
        db.exec(QStringLiteral("INSERT INTO qc_report_params (report_id, param_order, table_id, var_id, "
                               "show_in_graph, show_in_table, decimal_places) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                {report, 1, table, variable, 1, 0, 2});
        db.exec(QStringLiteral("INSERT INTO users (user_name, user_key, auto_logout_minutes) VALUES (?, ?, ?)"),
                {QStringLiteral("Chief"), QStringLiteral("chief"), 20});
        db.exec(QStringLiteral("INSERT INTO user_rights (user_name, right_number) VALUES (?, ?)"),
                {QStringLiteral("Chief"), 501});
    }

    static QMap<QString, int> tableCounts(SuiteDatabase& db)
    {
        QMap<QString, int> counts;
        for (const QString& table : SuiteSchema::tableNames())
        {
            if (db.tableExists(table))
                counts.insert(table, count(db, table));
        }
        return counts;
    }

private slots:
    void newDatabaseHasNoVersion()
    {
        SuiteTestDatabase test;
        QCOMPARE(SuiteSchema::version(test.db()), 0);
    }

    void createsEveryTableWithTheCatalogue()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        QCOMPARE(SuiteSchema::migrate(db), 0);
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        for (const QString& table : SuiteSchema::tableNames())
            QVERIFY2(db.tableExists(table), qPrintable(table));
        QCOMPARE(SuiteSchema::checkIntegrity(db), QStringList());

        QCOMPARE(count(db, QStringLiteral("test_tables")), int(SuiteCatalogue::tables().size()));
        QCOMPARE(count(db, QStringLiteral("variables")), int(SuiteCatalogue::variables().size()));
        QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM variables WHERE tab = ?"), {0}).toInt() >= 15);
        QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM variables WHERE tab = ?"), {1}).toInt() >= 12);
        QSqlQuery dlco = db.exec(QStringLiteral("SELECT unit, si_unit, si_factor, si_offset, decimal_places "
                                                "FROM variables WHERE tab = ? AND name = ?"),
                                 {0, QStringLiteral("DLCO")});
        QVERIFY(dlco.next());
        QCOMPARE(dlco.value(0).toString(), QStringLiteral("mL/min/mmHg"));
        QCOMPARE(dlco.value(1).toString(), QStringLiteral("mmol/min/kPa"));
        QCOMPARE(dlco.value(2).toDouble(), 0.3348);
        QCOMPARE(dlco.value(3).toDouble(), 0.0);
        QCOMPARE(dlco.value(4).toInt(), 1);
    }

    void migratingAgainChangesNothing()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        fillVersionOne(db);
        const QMap<QString, int> before = tableCounts(db);
        QCOMPARE(SuiteSchema::migrate(db), SuiteSchema::CurrentVersion);
        QCOMPARE(tableCounts(db), before);
    }

    void migrationFromVersionOneKeepsEveryRow()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        QCOMPARE(SuiteSchema::migrate(db, 1), 0);
        QCOMPARE(SuiteSchema::version(db), 1);
        QVERIFY(!db.tableExists(QStringLiteral("audit_log")));
        fillVersionOne(db);
        const QMap<QString, int> before = tableCounts(db);
        QCOMPARE(before.value(QStringLiteral("results")), 5);

        QCOMPARE(SuiteSchema::migrate(db), 1);
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        QMap<QString, int> after = tableCounts(db);
        QCOMPARE(after.take(QStringLiteral("audit_log")), 0);
        QCOMPARE(after, before);
        QCOMPARE(SuiteSchema::checkIntegrity(db), QStringList());

        // The rows themselves, not only their number.
        QCOMPARE(db.scalar(QStringLiteral("SELECT last_name FROM patients WHERE id_num = ?"), {QStringLiteral("QC900")})
                     .toString(),
                 QStringLiteral("O'Brien"));
        QCOMPARE(db.scalar(QStringLiteral("SELECT SUM(result_value) FROM results")).toDouble(), 22.6);
        QSqlQuery user = db.exec(QStringLiteral("SELECT auto_logout_minutes, disabled FROM users WHERE user_name = ?"),
                                 {QStringLiteral("Chief")});
        QVERIFY(user.next());
        QCOMPARE(user.value(0).toInt(), 20);
        QCOMPARE(user.value(1).toInt(), 0); // the new column's default
    }

    void definitionsThatShareANameAreRenamedOnce()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        QCOMPARE(SuiteSchema::migrate(db, 3), 0);
        // Saved by workstations at once, before the names were kept apart:
        // the same name in any case, also on the other tab, and a name that
        // is what a renaming would choose first. 98 characters and " (2)"
        // leave no room for " (10)".
        const QString longName = QString(98, u'L');
        const QStringList names{QStringLiteral("DLCO"),     QStringLiteral("Spirometry"), QStringLiteral("dlco"),
                                QStringLiteral("DLCO (2)"), QStringLiteral("DLCO"),       QStringLiteral("Spirometry"),
                                QStringLiteral("Öberg"),    QStringLiteral("ÖBERG"),      longName,
                                longName.toLower(),         QStringLiteral("Unique")};
        const int variable =
            db.scalar(QStringLiteral("SELECT var_id FROM variables WHERE name = ?"), {QStringLiteral("FVC")}).toInt();
        const int table =
            db.scalar(QStringLiteral("SELECT table_id FROM test_tables WHERE name = ?"), {QStringLiteral("Pre")})
                .toInt();
        QList<int> ids;
        for (qsizetype i = 0; i < names.size(); ++i)
        {
            ids.append(db.scalar(QStringLiteral("INSERT INTO qc_reports (name, name_key, tab, saved_by) "
                                                "VALUES (?, ?, ?, ?) RETURNING report_id"),
                                 {names.at(i), names.at(i).toCaseFolded(), int(i % 2), QStringLiteral("ws%1").arg(i)})
                           .toInt());
            db.exec(QStringLiteral("INSERT INTO qc_report_params (report_id, param_order, table_id, var_id, "
                                   "show_in_graph, show_in_table, decimal_places) VALUES (?, 1, ?, ?, 1, 1, ?)"),
                    {ids.last(), table, variable, int(i)});
        }

        QCOMPARE(SuiteSchema::migrate(db), 3);
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        // The oldest of each name keeps it; the others are numbered from 2,
        // past the numbers that are taken. Nothing else of them changes.
        const QStringList expected{QStringLiteral("DLCO"),
                                   QStringLiteral("Spirometry"),
                                   QStringLiteral("dlco (3)"),
                                   QStringLiteral("DLCO (2)"),
                                   QStringLiteral("DLCO (4)"),
                                   QStringLiteral("Spirometry (2)"),
                                   QStringLiteral("Öberg"),
                                   QStringLiteral("ÖBERG (2)"),
                                   longName,
                                   QString(96, u'l') + QStringLiteral(" (2)"),
                                   QStringLiteral("Unique")};
        for (qsizetype i = 0; i < ids.size(); ++i)
        {
            QSqlQuery row = db.exec(QStringLiteral("SELECT r.name, r.name_key, r.tab, r.saved_by, p.decimal_places "
                                                   "FROM qc_reports r JOIN qc_report_params p ON p.report_id = "
                                                   "r.report_id WHERE r.report_id = ?"),
                                    {ids.at(i)});
            QVERIFY(row.next());
            QCOMPARE(row.value(0).toString(), expected.at(i));
            QCOMPARE(row.value(1).toString(), expected.at(i).toCaseFolded());
            QCOMPARE(row.value(2).toInt(), int(i % 2));
            QCOMPARE(row.value(3).toString(), QStringLiteral("ws%1").arg(i));
            QCOMPARE(row.value(4).toInt(), int(i));
        }
        QCOMPARE(count(db, QStringLiteral("qc_reports")), int(names.size()));
        QCOMPARE(SuiteSchema::checkIntegrity(db), QStringList());

        // From now on the database keeps the names apart itself.
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError, db.exec(QStringLiteral("INSERT INTO qc_reports (name, name_key, tab) VALUES (?, ?, 0)"),
                                  {QStringLiteral("Dlco"), QStringLiteral("dlco")}));
        // Migrating again renames nothing.
        QCOMPARE(SuiteSchema::migrate(db), SuiteSchema::CurrentVersion);
        QCOMPARE(db.scalar(QStringLiteral("SELECT name FROM qc_reports WHERE report_id = ?"), {ids.at(4)}).toString(),
                 QStringLiteral("DLCO (4)"));
    }

    void failedStepLeavesTheVersionBefore()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 1);
        fillVersionOne(db);
        // A table in the way of step 2: the step fails after its first statement.
        db.exec(QStringLiteral("CREATE TABLE audit_log (x INTEGER)"));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, SuiteSchema::migrate(db));
        QVERIFY(!db.inTransaction());
        QCOMPARE(SuiteSchema::version(db), 1);
        // The step's first statement (a new column for users) was undone with it.
        QVERIFY_THROWS_EXCEPTION(RuntimeError, db.exec(QStringLiteral("SELECT disabled FROM users")));
        QCOMPARE(count(db, QStringLiteral("users")), 1);
        QCOMPARE(count(db, QStringLiteral("results")), 5);
    }

    void newerSchemaIsRefusedUntouched()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        fillVersionOne(db);
        db.exec(QStringLiteral("UPDATE schema_version SET version = ?"), {SuiteSchema::CurrentVersion + 1});
        const QMap<QString, int> before = tableCounts(db);
        try
        {
            SuiteSchema::migrate(db);
            QFAIL("a newer schema was migrated");
        }
        catch (const RuntimeError& error)
        {
            QVERIFY2(error.description().contains(QLatin1String("newer")), qPrintable(error.description()));
        }
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion + 1);
        QCOMPARE(tableCounts(db), before);
    }

    void foreignDatabaseIsRefused()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        db.exec(QStringLiteral("CREATE TABLE patients (name VARCHAR(20))"));
        db.exec(QStringLiteral("INSERT INTO patients (name) VALUES (?)"), {QStringLiteral("someone")});
        QVERIFY_THROWS_EXCEPTION(RuntimeError, SuiteSchema::migrate(db));
        QCOMPARE(SuiteSchema::version(db), 0);
        QCOMPARE(count(db, QStringLiteral("patients")), 1);
    }

    void integrityCheckNamesMissingTablesAndOldVersions()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 1);
        const QStringList problems = SuiteSchema::checkIntegrity(db);
        QVERIFY(problems.contains(QStringLiteral("The schema has version 1; this program needs version %1.")
                                      .arg(SuiteSchema::CurrentVersion)));
        QVERIFY(problems.contains(QStringLiteral("The table audit_log is missing.")));
    }

    void integrityCheckFindsEmptyCatalogue()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        db.exec(QStringLiteral("DELETE FROM variables WHERE tab = ?"), {1});
        QCOMPARE(SuiteSchema::checkIntegrity(db), QStringList{QStringLiteral("The catalogue has no variable for GX.")});
    }

    void integrityCheckFindsBrokenReferences()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        // Each database stores such a row only with its reference checks off.
        const bool postgres = SuiteTestDatabase::onPostgres();
        db.exec(postgres ? QStringLiteral("SET session_replication_role = replica")
                         : QStringLiteral("PRAGMA foreign_keys = OFF"));
        db.exec(QStringLiteral("INSERT INTO visits (patient_id, visit_date, tab) VALUES (?, ?, ?)"),
                {4242, QDate(2024, 1, 1), 0});
        db.exec(postgres ? QStringLiteral("SET session_replication_role = DEFAULT")
                         : QStringLiteral("PRAGMA foreign_keys = ON"));
        QCOMPARE(SuiteSchema::checkIntegrity(db),
                 QStringList{QStringLiteral("The table visits has rows that refer to missing rows of patients.")});
    }

    void integrityCheckFindsReferenceChecksSwitchedOffOnTheServer()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("foreign keys are switched off per table only on PostgreSQL; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        db.exec(QStringLiteral("ALTER TABLE visits DISABLE TRIGGER ALL"));
        // The table's own reference and the one to it, whose checks run on it too.
        QCOMPARE(SuiteSchema::checkIntegrity(db),
                 (QStringList{
                     QStringLiteral("The foreign key results_visit_id_fkey of the table results is switched off."),
                     QStringLiteral("The foreign key visits_patient_id_fkey of the table visits is switched off.")}));
        db.exec(QStringLiteral("ALTER TABLE visits ENABLE TRIGGER ALL"));
        db.exec(QStringLiteral("ALTER TABLE visits ADD CONSTRAINT visits_recent CHECK (visit_date > '2000-01-01') "
                               "NOT VALID"));
        QCOMPARE(SuiteSchema::checkIntegrity(db),
                 QStringList{QStringLiteral("The constraint visits_recent of the table visits has not been checked on "
                                            "the stored rows.")});
        db.exec(QStringLiteral("ALTER TABLE visits DROP CONSTRAINT visits_recent"));

        // A unique index built concurrently over rows that break it stays behind, invalid.
        const int patient =
            db.scalar(QStringLiteral("INSERT INTO patients (id_num, id_key, last_name, last_key) "
                                     "VALUES (?, ?, ?, ?) RETURNING patient_id"),
                      {QStringLiteral("A1"), QStringLiteral("a1"), QStringLiteral("A"), QStringLiteral("a")})
                .toInt();
        for (int i = 0; i < 2; ++i)
            db.exec(QStringLiteral("INSERT INTO visits (patient_id, visit_date, tab) VALUES (?, ?, ?)"),
                    {patient, QDate(2024, 1, 1), 0});
        QVERIFY_THROWS_EXCEPTION(RuntimeError,
                                 db.exec(QStringLiteral("CREATE UNIQUE INDEX CONCURRENTLY visits_one_a_day ON visits "
                                                        "(patient_id, visit_date)")));
        QCOMPARE(SuiteSchema::checkIntegrity(db),
                 QStringList{QStringLiteral("The index visits_one_a_day of the table visits is not valid; rebuild it "
                                            "(REINDEX).")});
    }

    void searchKeysCompareByCodePointOnTheServer()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("SQLite compares every text by code point; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 2);
        fillVersionOne(db);
        SuiteSchema::migrate(db);
        QSqlQuery columns = db.exec(QStringLiteral("SELECT column_name, collation_name FROM information_schema.columns "
                                                   "WHERE table_schema = current_schema() AND table_name = 'patients' "
                                                   "AND column_name LIKE '%_key' ORDER BY column_name"));
        QStringList collations;
        while (columns.next())
            collations.append(columns.value(0).toString() + u'=' + columns.value(1).toString());
        QCOMPARE(collations, (QStringList{QStringLiteral("first_key=C"), QStringLiteral("id_key=C"),
                                          QStringLiteral("last_key=C"), QStringLiteral("mid_key=C")}));
        QCOMPARE(db.scalar(QStringLiteral("SELECT first_key FROM patients WHERE id_key = ?"), {QStringLiteral("qc900")})
                     .toString(),
                 QStringLiteral("máire"));
    }

    void aSubjectsVisitsOfATabAreOneStretchOfAnIndex()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 2);
        fillVersionOne(db);
        SuiteSchema::migrate(db);
        const QString visits =
            QStringLiteral("SELECT visit_id, visit_date FROM visits WHERE patient_id = 1 AND tab = 0 "
                           "AND visit_date <= '2024-06-30' ORDER BY visit_date, visit_id");
        QStringList plan;
        if (SuiteTestDatabase::onPostgres())
        {
            db.exec(QStringLiteral("SET enable_seqscan = off"));
            QSqlQuery explain = db.exec(QStringLiteral("EXPLAIN ") + visits);
            while (explain.next())
                plan.append(explain.value(0).toString().trimmed());
            db.exec(QStringLiteral("RESET enable_seqscan"));
            const QString lines = plan.join(u'\n');
            QVERIFY2(lines.contains(QLatin1String("Index Scan using visits_patient_tab_date")) ||
                         lines.contains(QLatin1String("Index Only Scan using visits_patient_tab_date")),
                     qPrintable(lines));
        }
        else
        {
            QSqlQuery explain = db.exec(QStringLiteral("EXPLAIN QUERY PLAN ") + visits);
            while (explain.next())
                plan.append(explain.value(3).toString());
            // Only the index, already in date order.
            QCOMPARE(plan, QStringList{QStringLiteral("SEARCH visits USING COVERING INDEX visits_patient_tab_date "
                                                      "(patient_id=? AND tab=? AND visit_date<?)")});
        }
    }

    void aChartsReadingsComeFromTheIndexesAlone()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("SQLite's indexes end with the visit and its readings are stored in key order already");
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 3);
        fillVersionOne(db);
        SuiteSchema::migrate(db);
        SuiteSchema::refreshStatistics(db);
        // The tables are tiny, so the planner is kept from reading them whole.
        db.exec(QStringLiteral("SET enable_seqscan = off"));
        db.exec(QStringLiteral("SET enable_bitmapscan = off"));
        QSqlQuery explain =
            db.exec(QStringLiteral("EXPLAIN (ANALYZE, COSTS OFF) SELECT v.visit_date, r.result_value FROM visits v "
                                   "JOIN results r ON r.visit_id = v.visit_id WHERE v.patient_id = 1 AND v.tab = 0 "
                                   "AND r.table_id = 1 AND r.var_id = 1 AND v.visit_date <= '2024-06-30' "
                                   "ORDER BY v.visit_date, v.visit_id"));
        QStringList plan;
        while (explain.next())
            plan.append(explain.value(0).toString().trimmed());
        db.exec(QStringLiteral("RESET enable_seqscan"));
        db.exec(QStringLiteral("RESET enable_bitmapscan"));
        const QString lines = plan.join(u'\n');
        QVERIFY2(lines.contains(QLatin1String("Index Only Scan using visits_patient_tab_date")), qPrintable(lines));
        QVERIFY2(lines.contains(QLatin1String("Index Only Scan using results_pkey")), qPrintable(lines));
        // Already in the reports' order, and every page marked all-visible by
        // the vacuum, so no row is read from the tables.
        QVERIFY2(!lines.contains(QLatin1String("Sort")), qPrintable(lines));
        QCOMPARE(plan.filter(QStringLiteral("Heap Fetches:")),
                 (QStringList{QStringLiteral("Heap Fetches: 0"), QStringLiteral("Heap Fetches: 0")}));
        QVERIFY2(lines.contains(QLatin1String("rows=5 loops=1")), qPrintable(lines));
    }

    void statisticsAreRefreshed()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        fillVersionOne(db);
        const QString statistics =
            SuiteTestDatabase::onPostgres()
                ? QStringLiteral("SELECT COUNT(*) FROM pg_stat_user_tables "
                                 "WHERE relname = 'patients' AND last_analyze IS NOT NULL")
                : QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE name = 'sqlite_stat1'");
        QCOMPARE(db.scalar(statistics).toInt(), 0);
        SuiteSchema::refreshStatistics(db);
        QCOMPARE(db.scalar(statistics).toInt(), 1);
        if (!SuiteTestDatabase::onPostgres())
            QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM sqlite_stat1 WHERE tbl = 'patients'")).toInt() > 0);
    }
};

CALVEX_TEST(TestSuiteSchema)
#include "TestSuiteSchema.moc"
