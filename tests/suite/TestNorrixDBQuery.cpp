#include "common/TestMain.h"

#include "NorrixDBQueryRun.h"
#include "SuiteTestDatabase.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSetup.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlQuery>
#include <QTest>

// The database tool as the program starts it ("NorrixDBQuery auto") and as the
// administrator checks a database ("NorrixDBQuery check").
class TestNorrixDBQuery : public QObject
{
    Q_OBJECT

private:
    using Run = NorrixDBQueryRun;

    static QString toolPath() { return NorrixDBQueryRun::toolPath(); }

    // Runs the tool with the test's key file.
    static Run run(const QStringList& arguments = {QStringLiteral("auto")})
    {
        return NorrixDBQueryRun::start(arguments);
    }

    static void checkOneLineFailure(const Run& result)
    {
        QVERIFY2(result.exitCode != 0, qPrintable(result.out));
        QVERIFY(result.err.endsWith(u'\n'));
        QCOMPARE(result.err.count(u'\n'), 1);
        QVERIFY(result.err.trimmed().size() > 10);
    }

    static int count(SuiteDatabase& db, const QString& table)
    {
        return db.scalar(QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
    }

    static Run check() { return run({QStringLiteral("check")}); }

    // Runs statement with the database's reference checks off, as a restore
    // or a repair by hand might.
    static void withoutReferenceChecks(SuiteDatabase& db, const QString& statement)
    {
        const bool postgres = SuiteTestDatabase::onPostgres();
        db.exec(postgres ? QStringLiteral("SET session_replication_role = replica")
                         : QStringLiteral("PRAGMA foreign_keys = OFF"));
        db.exec(statement);
        db.exec(postgres ? QStringLiteral("SET session_replication_role = DEFAULT")
                         : QStringLiteral("PRAGMA foreign_keys = ON"));
    }

    static const QString& orphanReadings()
    {
        static const QString problem =
            QStringLiteral("The table results has rows that refer to missing rows of visits.");
        return problem;
    }

private slots:
    void initTestCase() { QVERIFY2(QFile::exists(toolPath()), qPrintable(toolPath())); }

    void createsAndFillsTheEmbeddedDemoDatabase()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Demo Database"), 1);
        const Run first = run();
        QCOMPARE(first.err, QString());
        QCOMPARE(first.exitCode, 0);
        SuiteDatabase& db = test.db();
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        QVERIFY(count(db, QStringLiteral("patients")) > 300);
        QCOMPARE(count(db, QStringLiteral("qc_reports")), 8);
        QCOMPARE(SuiteSchema::checkIntegrity(db), QStringList());
        QVERIFY2(first.out.contains(QLatin1String(", checked)")), qPrintable(first.out));
        const Run checked = check();
        QCOMPARE(checked.err, QString());
        QCOMPARE(checked.out, QStringLiteral("ok\n"));
        QCOMPARE(checked.exitCode, 0);

        // Later starts keep what users did in between and add nothing.
        ReportInfo info;
        NorrixReportStore().SaveReport(QStringLiteral("Kept"), info);
        const int patients = count(db, QStringLiteral("patients"));
        const int results = count(db, QStringLiteral("results"));
        const Run second = run();
        QCOMPARE(second.exitCode, 0);
        QVERIFY2(!second.out.contains(QLatin1String("checked")), qPrintable(second.out));
        QCOMPARE(count(db, QStringLiteral("patients")), patients);
        QCOMPARE(count(db, QStringLiteral("results")), results);
        QCOMPARE(count(db, QStringLiteral("qc_reports")), 9);
        QCOMPARE(NorrixReportStore().CountReportsNamed(QStringLiteral("kept")), 1);
    }

    void twoStartsAtOnceOnANewServerDatabaseBothSucceed()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("workstations starting at once on one server database; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Demo Database"), 1);
        SuiteDatabase::closeAllConnections();
        // Two workstations start the program, and with it the tool, at the same moment.
        QProcess first;
        QProcess second;
        first.start(toolPath(), {QStringLiteral("auto")});
        second.start(toolPath(), {QStringLiteral("auto")});
        QVERIFY(first.waitForFinished(240000) && second.waitForFinished(240000));
        for (QProcess* tool : {&first, &second})
        {
            QCOMPARE(tool->exitStatus(), QProcess::NormalExit);
            QVERIFY2(tool->exitCode() == 0, tool->readAllStandardError().constData());
        }
        // One of them set it up, the other found it done.
        const QString outputs = QString::fromUtf8(first.readAllStandardOutput() + second.readAllStandardOutput());
        QCOMPARE(outputs.count(QLatin1String("demo data filled")), 1);
        SuiteDatabase& db = test.db();
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        QCOMPARE(count(db, QStringLiteral("users")), 3);
        QCOMPARE(count(db, QStringLiteral("qc_reports")), 8);
        QCOMPARE(db.scalar(QStringLiteral("SELECT COUNT(*) FROM patients WHERE id_num = 'QC001'")).toInt(), 1);
        QCOMPARE(SuiteSchema::checkIntegrity(db), QStringList());
    }

    void aDatabaseThatIsNotTheDemoStaysEmpty()
    {
        SuiteTestDatabase test;
        const Run result = run();
        QCOMPARE(result.exitCode, 0);
        SuiteDatabase& db = test.db();
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        QCOMPARE(count(db, QStringLiteral("patients")), 0);
        QVERIFY(count(db, QStringLiteral("variables")) > 27); // the catalogue is always there
    }

    // A laboratory's new database gets one definition per tab, so that the
    // program can start on it, and never gets them again.
    void aNewLaboratoryDatabaseGetsItsStarterDefinitionsOnce()
    {
        SuiteTestDatabase test;
        const Run first = run();
        QCOMPARE(first.exitCode, 0);
        QVERIFY2(first.out.contains(QStringLiteral("2 starter report definitions saved")), qPrintable(first.out));
        const auto stored = [&test](qint32 tab) {
            QStringList rows;
            QSqlQuery query = test.db().exec(
                QStringLiteral("SELECT r.name, t.name, v.name, p.show_in_graph, p.show_in_table, p.decimal_places "
                               "FROM qc_reports r JOIN qc_report_params p ON p.report_id = r.report_id "
                               "JOIN test_tables t ON t.table_id = p.table_id JOIN variables v ON v.var_id = p.var_id "
                               "WHERE r.tab = ? ORDER BY p.param_order"),
                {tab});
            while (query.next())
            {
                QStringList row;
                for (int c = 0; c < 6; ++c)
                    row.append(query.value(c).toString());
                rows.append(row.join(u'|'));
            }
            return rows;
        };
        QCOMPARE(
            stored(0),
            (QStringList{QStringLiteral("Spirometry|Pre|FVC|1|1|2"), QStringLiteral("Spirometry|Pre|FEV1|1|1|2"),
                         QStringLiteral("Spirometry|Pre|FEV1/FVC|1|1|0"), QStringLiteral("Spirometry|Pre|PEF|1|1|2")}));
        QCOMPARE(stored(1),
                 (QStringList{QStringLiteral("Exercise|Peak|VO2|1|1|0"), QStringLiteral("Exercise|Peak|VCO2|1|1|0"),
                              QStringLiteral("Exercise|Peak|VE|1|1|1"), QStringLiteral("Exercise|Peak|RER|1|1|2")}));

        // The lab renames and replaces them; later starts add nothing.
        NorrixReportStore store;
        ReportInfo gx;
        gx.TestTab = 1;
        store.SaveReport(QStringLiteral("Our Exercise"), gx);
        const qint32 exercise = store.CountReportsNamed(QStringLiteral("Exercise"));
        QCOMPARE(exercise, 1);
        RecordsetPtr list = store.ListReports();
        for (list->MoveFirst(); !list->IsEOF(); list->MoveNext())
        {
            if (list->Value(QStringLiteral("QCReportName")).toString() == QLatin1String("Exercise"))
                QCOMPARE(store.DeleteReport(list->Value(QStringLiteral("QCReportID")).toInt(), QString()), 0);
        }
        const Run second = run();
        QCOMPARE(second.exitCode, 0);
        QVERIFY2(!second.out.contains(QStringLiteral("starter")), qPrintable(second.out));
        QCOMPARE(count(test.db(), QStringLiteral("qc_reports")), 2);
        QCOMPARE(NorrixReportStore().CountReportsNamed(QStringLiteral("Exercise")), 0);
    }

    void migratesAnOlderSchemaKeepingItsRows()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Demo Database"), 1);
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 1);
        db.exec(QStringLiteral("INSERT INTO patients (id_num, id_key, last_name, last_key) VALUES (?, ?, ?, ?)"),
                {QStringLiteral("OLD1"), QStringLiteral("old1"), QStringLiteral("Elder"), QStringLiteral("elder")});
        const Run result = run();
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.contains(QLatin1String("was 1")));
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
        // A database with patients is no new demo database: nothing is added.
        QCOMPARE(count(db, QStringLiteral("patients")), 1);
        QCOMPARE(db.scalar(QStringLiteral("SELECT last_name FROM patients")).toString(), QStringLiteral("Elder"));
    }

    void refusesANewerSchemaAndChangesNothing()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db);
        db.exec(QStringLiteral("UPDATE schema_version SET version = ?"), {SuiteSchema::CurrentVersion + 1});
        const Run result = run();
        checkOneLineFailure(result);
        QVERIFY(result.err.contains(QLatin1String("newer")));
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion + 1);
    }

    void refusesADatabaseOfAnotherKind()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Demo Database"), 1);
        SuiteDatabase& db = test.db();
        db.exec(QStringLiteral("CREATE TABLE invoices (amount INTEGER)"));
        db.exec(QStringLiteral("INSERT INTO invoices (amount) VALUES (?)"), {42});
        checkOneLineFailure(run());
        QCOMPARE(count(db, QStringLiteral("invoices")), 1);
        QCOMPARE(SuiteSchema::version(db), 0);
    }

    void unreachableDatabaseFailsWithOneLine()
    {
        SuiteTestDatabase test;
        QFile blocker(test.tempPath(QStringLiteral("not-a-folder")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), test.tempPath(QStringLiteral("not-a-folder/qc.sqlite")));
        Run result = run();
        checkOneLineFailure(result);
        QVERIFY(result.err.startsWith(QLatin1String("The QC database cannot be opened")));

        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QPSQL"));
        test.setValue(QStringLiteral("Database Host"), QStringLiteral("127.0.0.1"));
        test.setValue(QStringLiteral("Database Port"), 1);
        test.setValue(QStringLiteral("Database Name"), QStringLiteral("calvex_test_absent"));
        result = run();
        checkOneLineFailure(result);
        QVERIFY(result.err.startsWith(QLatin1String("The QC database cannot be opened")));
    }

    void createsTheFolderOfANewDatabaseFile()
    {
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("Norrix/data/new.sqlite"));
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), path);
        QCOMPARE(run().exitCode, 0);
        QVERIFY(QFile::exists(path));
    }

    void anUnknownCommandIsAUsageError()
    {
        SuiteTestDatabase test;
        for (const QStringList& arguments : {QStringList(), QStringList{QStringLiteral("drop")},
                                             QStringList{QStringLiteral("auto"), QStringLiteral("extra")},
                                             QStringList{QStringLiteral("catalogue"), QStringLiteral("extra")},
                                             QStringList{QStringLiteral("check"), QStringLiteral("auto")}})
        {
            const Run result = run(arguments);
            QCOMPARE(result.exitCode, 2);
            QCOMPARE(result.err,
                     QStringLiteral("Usage: NorrixDBQuery auto | check | catalogue | import FILE.csv [--dry-run]\n"));
        }
        QCOMPARE(SuiteSchema::version(test.db()), 0); // nothing was created
    }

    void autoOnACurrentDatabaseLeavesTheWholeDatabaseChecksOut()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Demo Database"), 1);
        const int before = SuiteSchema::checksRun();
        const SuiteSetup::Outcome created = SuiteSetup::runAuto(test.settings());
        QVERIFY(created.checked);
        QCOMPARE(SuiteSchema::checksRun(), before + 1);

        const SuiteSetup::Outcome again = SuiteSetup::runAuto(test.settings());
        QVERIFY(!again.checked);
        QVERIFY(!again.demoFilled);
        QCOMPARE(again.version, SuiteSchema::CurrentVersion);
        QCOMPARE(SuiteSchema::checksRun(), before + 1);
    }

    void checkFindsReadingsWhoseVisitWasRemoved()
    {
        SuiteTestDatabase test;
        test.fillDemo();
        SuiteDatabase& db = test.db();
        QCOMPARE(check().out, QStringLiteral("ok\n"));
        withoutReferenceChecks(
            db, QStringLiteral("DELETE FROM visits WHERE visit_id = (SELECT MIN(visit_id) FROM visits)"));

        // The start does not read the readings, so it goes on as before.
        const Run start = run();
        QCOMPARE(start.err, QString());
        QCOMPARE(start.exitCode, 0);
        QVERIFY2(!start.out.contains(QLatin1String("checked")), qPrintable(start.out));

        const Run result = check();
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, orphanReadings() + u'\n');
    }

    void checkFindsADamagedPage()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("the server keeps its own files; a damaged page is a test of the SQLite file");
        SuiteTestDatabase test;
        test.fillDemo();
        SuiteDatabase& db = test.db();
        const qint64 pageSize = db.scalar(QStringLiteral("PRAGMA page_size")).toLongLong();
        const qint64 page =
            db.scalar(QStringLiteral("SELECT rootpage FROM sqlite_master WHERE name = 'results'")).toLongLong();
        QVERIFY(page > 1);
        SuiteDatabase::closeAllConnections();

        // The first page of the readings' tree is overwritten with zeros.
        QProcess dd;
        dd.start(QStringLiteral("dd"),
                 {QStringLiteral("if=/dev/zero"), QStringLiteral("of=") + test.settings().databaseName,
                  QStringLiteral("bs=%1").arg(pageSize), QStringLiteral("seek=%1").arg(page - 1),
                  QStringLiteral("count=1"), QStringLiteral("conv=notrunc")});
        QVERIFY(dd.waitForFinished(30000));
        QCOMPARE(dd.exitCode(), 0);

        const Run start = run();
        QCOMPARE(start.exitCode, 0);
        const Run result = check();
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.out.startsWith(QLatin1String("The database file is damaged: ")),
                 qPrintable(result.out + result.err));
    }

    void autoChecksTheDatabaseItMigrated()
    {
        SuiteTestDatabase test;
        SuiteDatabase& db = test.db();
        SuiteSchema::migrate(db, 2);
        db.exec(QStringLiteral("INSERT INTO patients (id_num, id_key, last_name, last_key) VALUES (?, ?, ?, ?)"),
                {QStringLiteral("OLD1"), QStringLiteral("old1"), QStringLiteral("Elder"), QStringLiteral("elder")});
        db.exec(QStringLiteral("INSERT INTO visits (patient_id, visit_date, tab) VALUES "
                               "((SELECT patient_id FROM patients), '2024-01-01', 0)"));
        db.exec(QStringLiteral("INSERT INTO results (visit_id, table_id, var_id, result_value) VALUES "
                               "((SELECT visit_id FROM visits), (SELECT MIN(table_id) FROM test_tables), "
                               "(SELECT MIN(var_id) FROM variables), 1.5)"));
        withoutReferenceChecks(db, QStringLiteral("DELETE FROM visits"));

        const Run result = run();
        checkOneLineFailure(result);
        QVERIFY2(result.err.contains(orphanReadings()), qPrintable(result.err));
        // The migration itself stands.
        QCOMPARE(SuiteSchema::version(db), SuiteSchema::CurrentVersion);
    }

    void checkOfAMissingDatabaseFailsWithOneLine()
    {
        SuiteTestDatabase test;
        if (SuiteTestDatabase::onPostgres())
            test.setValue(QStringLiteral("Database Name"), QStringLiteral("calvex_test_absent"));
        const Run result = check();
        checkOneLineFailure(result);
        QVERIFY(result.err.startsWith(QLatin1String("The QC database cannot be opened")));
        if (!SuiteTestDatabase::onPostgres())
            QVERIFY(!QFile::exists(test.settings().databaseName));
    }

    void helpAndVersionTouchNoDatabase()
    {
        SuiteTestDatabase test;
        for (const QString& option : {QStringLiteral("--help"), QStringLiteral("-h")})
        {
            const Run result = run({option});
            QCOMPARE(result.exitCode, 0);
            QCOMPARE(result.err, QString());
            QVERIFY2(result.out.startsWith(QStringLiteral(
                         "Usage: NorrixDBQuery auto | check | catalogue | import FILE.csv [--dry-run]\n\nCommands:\n")),
                     qPrintable(result.out));
            for (const char* line : {"\n  auto ", "\n  check ", "\n  catalogue ", "\n  import FILE.csv [--dry-run]\n",
                                     "\n  --version ", "\nExit status:\n  0  done\n"})
                QVERIFY2(result.out.contains(QLatin1String(line)), line);
        }
        const Run version = run({QStringLiteral("--version")});
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.out, QStringLiteral("NorrixDBQuery %1.%2.%3\n")
                                  .arg(CALVEX_VERSION_MAJOR)
                                  .arg(CALVEX_VERSION_MINOR)
                                  .arg(CALVEX_VERSION_PATCH));
        QCOMPARE(version.err, QString());
        QCOMPARE(SuiteSchema::version(test.db()), 0);
    }
};

CALVEX_TEST(TestNorrixDBQuery)
#include "TestNorrixDBQuery.moc"
