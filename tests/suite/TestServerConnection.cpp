#include "OpenedDefinition.h"
#include "WindowSave.h"
#include "common/TestMain.h"

#include "ScopedServerSession.h"
#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"

#include <QProcess>
#include <QTest>

// A server connection that is lost between actions (a restart, a terminated
// backend) is made again by the next action, which then succeeds; a server
// that stays away gives one message in the program's words.
class TestServerConnection : public QObject
{
    Q_OBJECT

private:
    // The backend of the program's connection to the test database.
    static qint32 programBackend()
    {
        return SuiteDatabase(SuiteSettings::fromRegistry()).scalar(QStringLiteral("SELECT pg_backend_pid()")).toInt();
    }

    // Another session has the server end the program's connection, as an
    // administrator's pg_terminate_backend does.
    static void terminateProgramConnection(SuiteTestDatabase& test)
    {
        const qint32 backend = programBackend();
        ScopedServerSession admin(test.settings(), QStringLiteral("admin"));
        QVERIFY2(admin.scalar(QStringLiteral("SELECT pg_terminate_backend(%1)").arg(backend)).toBool(),
                 qPrintable(admin.error()));
        // The backend is gone once the server no longer lists it.
        QTRY_VERIFY(
            admin.scalar(QStringLiteral("SELECT COUNT(*) FROM pg_stat_activity WHERE pid = %1").arg(backend)).toInt() ==
            0);
    }

    static bool controlServer(const QString& command)
    {
        QProcess control;
        control.start(qEnvironmentVariable("CALVEX_TEST_PG_CONTROL"), {command});
        return control.waitForFinished(120000) && control.exitStatus() == QProcess::NormalExit &&
               control.exitCode() == 0;
    }

    // The first saved definition of the demo, and its variables.
    static qint32 firstDefinition(NorrixReportStore& store, QString& name, ReportInfo& info)
    {
        RecordsetPtr list = store.ListReports();
        name = list->Value(QStringLiteral("QCReportName")).toString();
        const qint32 id = list->Value(QStringLiteral("QCReportID")).toInt();
        info = OpenedDefinition(store, id);
        return id;
    }

private slots:
    // Skipped test by test: a skip in initTestCase would end every class
    // that runs after this one in the same process (the PostgreSQL run).
    void init()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("only a database server connection can be lost; this runs in the PostgreSQL run");
    }

    void aTerminatedConnectionThenFindAndSaveSucceed()
    {
        SuiteTestDatabase test;
        test.fillDemo();
        NorrixReportStore store;
        QString name;
        ReportInfo info;
        const qint32 id = firstDefinition(store, name, info);
        const qint32 before = programBackend();

        terminateProgramConnection(test);
        RecordsetPtr found = NorrixPatientQuery().FindByIdNum(QStringLiteral("QC001"));
        QCOMPARE(found->RecordCount(), 1);
        QVERIFY(programBackend() != before);

        terminateProgramConnection(test);
        const qint32 saved = SaveAsTheWindowDoes(store, id, name, info);
        QVERIFY(saved > id);
        QCOMPARE(store.CountReportsNamed(name), 1);
        qint32 tab = -1;
        QCOMPARE(store.OpenReport(saved, false, tab)->RecordCount(), int(info.Variables.size()));
    }

    void aConnectionLostInsideASaveLeavesTheDefinitionAsItWas()
    {
        SuiteTestDatabase test;
        test.fillDemo();
        NorrixReportStore store;
        QString name;
        ReportInfo info;
        const qint32 id = firstDefinition(store, name, info);

        store.BeginTrans();
        QCOMPARE(store.DeleteReport(id, QString()), 0);
        terminateProgramConnection(test);
        try
        {
            store.SaveReport(name, info);
            QFAIL("a save went on after its transaction was lost");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorConnectionLost);
            QCOMPARE(error.description(), QStringLiteral("The connection to the QC database was lost before the "
                                                         "request was done. Try again: the program connects anew."));
        }
        store.RollbackTrans();

        // The server dropped the delete with the connection; the next Save works.
        qint32 tab = -1;
        QVERIFY(store.OpenReport(id, false, tab));
        QVERIFY(SaveAsTheWindowDoes(store, id, name, info) > id);
        QCOMPARE(store.CountReportsNamed(name), 1);
    }

    void aServerStoppedAndStartedMidSession()
    {
        if (qEnvironmentVariableIsEmpty("CALVEX_TEST_PG_CONTROL"))
            QSKIP("run-postgres.sh names the script that stops and starts the test server");
        SuiteTestDatabase test;
        test.fillDemo();
        test.setValue(QStringLiteral("Database Timeout Seconds"), 3);
        NorrixReportStore store;
        QString name;
        ReportInfo info;
        const qint32 id = firstDefinition(store, name, info);

        QVERIFY(controlServer(QStringLiteral("stop")));
        // While it stays away: one message in the program's words, the
        // driver's text as its detail.
        try
        {
            store.ListReports();
            QFAIL("a stopped server listed definitions");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), SuiteDatabase::ErrorCannotOpen);
            QCOMPARE(error.description(), QStringLiteral("The QC database cannot be opened: the database server "
                                                         "cannot be reached, or it did not accept the sign-in (%1).")
                                              .arg(test.settings().describe()));
            QVERIFY2(!error.detail().isEmpty(), "the driver's text goes with the message as its detail");
            QVERIFY(!error.description().contains(error.detail()));
        }
        QVERIFY(controlServer(QStringLiteral("start")));

        // The next actions succeed.
        QVERIFY(NorrixPatientQuery().FindByName(QStringLiteral("Control"), QString(), QString())->RecordCount() > 1);
        QVERIFY(SaveAsTheWindowDoes(store, id, name, info) > id);

        // A restart between two actions: the next one succeeds too.
        QVERIFY(controlServer(QStringLiteral("stop")));
        QVERIFY(controlServer(QStringLiteral("start")));
        QCOMPARE(store.CountReportsNamed(name), 1);
    }
};

CALVEX_TEST(TestServerConnection)
#include "TestServerConnection.moc"
