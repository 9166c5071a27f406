#include "common/TestMain.h"

#include "NorrixDBQueryRun.h"
#include "OpenedDefinition.h"
#include "SuiteTestDatabase.h"
#include "common/ScopedReadOnlyFolder.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"

#include <QRegularExpression>
#include <QTest>

// A SQLite database that cannot be written (a read-only file, folder or
// mount) serves reports: the subject is chosen, the report's data are read;
// changes are refused and right 501 is withheld with the reason. Once it can
// be written again, the next action writes, without a restart.
class TestReadOnlyDatabase : public QObject
{
    Q_OBJECT

private:
    static int auditEntries(SuiteTestDatabase& test)
    {
        return test.db().scalar(QStringLiteral("SELECT COUNT(*) FROM audit_log")).toInt();
    }

    // The demo's first definition as the run asks the store for its data.
    static ReportInfo firstReport(NorrixReportStore& store, qint32& id)
    {
        RecordsetPtr list = store.ListReports();
        id = list->Value(QStringLiteral("QCReportID")).toInt();
        ReportInfo info = OpenedDefinition(store, id);
        info.PatientID = info.TestTab == 0 ? QStringLiteral("QC001") : QStringLiteral("QC002");
        return info;
    }

    // The demo database as the file qc.sqlite in the folder that is to become read-only.
    static void fillDemoIn(SuiteTestDatabase& test, const ScopedReadOnlyFolder& folder)
    {
        test.setValue(QStringLiteral("Database Name"), folder.filePath(QStringLiteral("qc.sqlite")));
        test.fillDemo();
    }

    // Everything of a report and a subject's choice works.
    static void servesReports(NorrixCalcEngine& engine)
    {
        QCOMPARE(NorrixPatientQuery().FindByIdNum(QStringLiteral("QC001"))->RecordCount(), 1);
        engine.PatientNotify(CalcEngine::EventPatientTaken, 6, 0, QStringLiteral("QC001"));
        NorrixReportStore store;
        qint32 id = 0;
        const ReportInfo info = firstReport(store, id);
        double mean = 0;
        double sd = 0;
        double cv = 0;
        QVERIFY(store.GetGraphData(info, 1, false, mean, sd, cv)->RecordCount() > 20);
        QVERIFY(mean > 0);
        QVERIFY(store.GetTableData(info, false)->RecordCount() > 20);
    }

private slots:
    // Skipped test by test: a skip in initTestCase would end every class
    // that runs after this one in the same process (the PostgreSQL run).
    void init()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("a read-only SQLite file; a server's own files are not the program's to make read-only");
    }

    void aReadOnlyDatabaseServesReportsUntilItCanBeWrittenAgain()
    {
        ScopedReadOnlyFolder folder;
        if (!folder.usable())
            QSKIP(qPrintable(QStringLiteral("no read-only folder can be had: ") + folder.whyNot()));
        SuiteTestDatabase test;
        fillDemoIn(test, folder);
        const int entries = auditEntries(test);
        // The workstation starts while the database is read-only.
        SuiteDatabase::closeAllConnections();
        QVERIFY(folder.makeReadOnly());

        // The database tool of every start finds it current and writes nothing.
        const NorrixDBQueryRun tool = NorrixDBQueryRun::start({QStringLiteral("auto")});
        QVERIFY2(tool.exitCode == 0, qPrintable(tool.err));
        QVERIFY2(tool.out.startsWith(QLatin1String("QC database ready")), qPrintable(tool.out));

        // Nothing is left out of the log with a warning: nothing is tried.
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        QVERIFY(engine.HasRight(500));
        QVERIFY(!engine.HasRight(501));
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartAllowed);
        QCOMPARE(engine.ReadOnlyReason(),
                 QStringLiteral("The QC database is read-only (%1). Reports can be chosen, previewed and printed, "
                                "but report definitions cannot be changed until it can be written again.")
                     .arg(test.settings().describe()));
        servesReports(engine);

        NorrixReportStore store;
        qint32 id = 0;
        const ReportInfo info = firstReport(store, id);
        QVERIFY(!store.CanDeleteReport(id, QString()));
        try
        {
            store.SaveReport(QStringLiteral("Copy"), info);
            QFAIL("a read-only database took a definition");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorReadOnly);
            QCOMPARE(error.description(),
                     QStringLiteral("The QC database is read-only, so report definitions cannot be changed (%1).")
                         .arg(test.settings().describe()));
        }
        QVERIFY_THROWS_EXCEPTION(RuntimeError, store.DeleteReport(id, QString()));
        QCOMPARE(auditEntries(test), entries);

        // Writable again (chmod u+w, a remount): the same objects write at
        // their next action.
        QVERIFY(folder.makeWritable());
        QVERIFY(engine.HasRight(501));
        QCOMPARE(engine.ReadOnlyReason(), QString());
        QVERIFY(store.CanDeleteReport(id, QString()));
        QVERIFY(store.SaveReport(QStringLiteral("Copy"), info) > id);
        engine.PatientNotify(CalcEngine::EventPatientReleased, 6, 0, QStringLiteral("QC001"));
        QCOMPARE(auditEntries(test), entries + 1);
        QCOMPARE(NorrixReportStore().CountReportsNamed(QStringLiteral("Copy")), 1);
    }

    void aDatabaseThatBecomesReadOnlyIsReadOnlyForTheNextAction()
    {
        ScopedReadOnlyFolder folder;
        if (!folder.usable())
            QSKIP(qPrintable(QStringLiteral("no read-only folder can be had: ") + folder.whyNot()));
        SuiteTestDatabase test;
        fillDemoIn(test, folder);
        NorrixCalcEngine engine;
        QVERIFY(engine.HasRight(501));
        // A mount cannot become read-only while a file on it is open for
        // writing; a workstation that started before holds none between actions.
        SuiteDatabase::closeAllConnections();
        QVERIFY(folder.makeReadOnly());
        QVERIFY(!engine.HasRight(501));
        QVERIFY(!engine.ReadOnlyReason().isEmpty());
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().SaveReport(QStringLiteral("Copy"), {}));
        servesReports(engine);
    }

    void aReadOnlyFolderMakesTheDatabaseReadOnly()
    {
        ScopedReadOnlyFolder folder;
        if (!folder.usable())
            QSKIP(qPrintable(QStringLiteral("no read-only folder can be had: ") + folder.whyNot()));
        SuiteTestDatabase test;
        fillDemoIn(test, folder);
        SuiteDatabase::closeAllConnections();
        // The file itself stays writable, but its journal cannot be made beside it.
        if (!folder.makeFolderReadOnly())
            QSKIP("a folder's modes do not stop root; the read-only mount has the tests above");
        NorrixCalcEngine engine;
        QVERIFY(engine.HasRight(500));
        QVERIFY(!engine.HasRight(501));
        servesReports(engine);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().SaveReport(QStringLiteral("Copy"), {}));
        QVERIFY(folder.makeWritable());
        QVERIFY(NorrixReportStore().SaveReport(QStringLiteral("Copy"), {}) > 0);
    }
};

CALVEX_TEST(TestReadOnlyDatabase)
#include "TestReadOnlyDatabase.moc"
