#include "WindowSave.h"
#include "common/TestMain.h"

#include "OtherSqliteWriter.h"
#include "ScopedServerSession.h"
#include "SuiteTestDatabase.h"
#include "common/ExclusiveSqliteLock.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTest>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>

// Every wait for the database ends within "Database Timeout Seconds", with the
// program's own message, and the program goes on working afterwards.
class TestDatabaseTimeouts : public QObject
{
    Q_OBJECT

private:
    static QString timeoutMessage(int seconds)
    {
        return QStringLiteral("The QC database did not answer within %1 seconds. Another workstation may be changing "
                              "the same data, or the server is busy; try again in a moment.")
            .arg(seconds);
    }

    static ReportInfo definition(SuiteDatabase& db)
    {
        SuiteDataLoader loader(db);
        ReportVariable fvc;
        fvc.TableID = loader.tableId(0, QStringLiteral("Pre"));
        fvc.ParamsDefID = loader.variableId(0, QStringLiteral("FVC"));
        fvc.VarName = QStringLiteral("FVC");
        fvc.ShowInGraph = true;
        fvc.ShowInTable = true;
        fvc.DecimalPlaces = 2;
        ReportInfo info;
        info.TestTab = 0;
        info.Variables = {fvc};
        return info;
    }

    // A new schema with two definitions of definition()'s variable saved,
    // "DLCO" and "Other" (info), and "Database Timeout Seconds" 2. The ID of "DLCO".
    static qint32 twoDefinitionsToSave(SuiteTestDatabase& test, ReportInfo& info)
    {
        test.createSchema();
        info = definition(test.db());
        const qint32 id = NorrixReportStore().SaveReport(QStringLiteral("DLCO"), info);
        NorrixReportStore().SaveReport(QStringLiteral("Other"), info);
        test.setValue(QStringLiteral("Database Timeout Seconds"), 2);
        return id;
    }

    // The error call raised, and how long it took; fails the test when it raised none.
    static RuntimeError timed(const std::function<void()>& call, qint64& milliseconds)
    {
        QElapsedTimer clock;
        clock.start();
        try
        {
            call();
        }
        catch (const RuntimeError& error)
        {
            milliseconds = clock.elapsed();
            return error;
        }
        milliseconds = clock.elapsed();
        return RuntimeError(0, QString(), QStringLiteral("no error"));
    }

private slots:
    void theTimeoutIsASettingOfTheKey()
    {
        SuiteTestDatabase test;
        QCOMPARE(test.settings().timeoutSeconds, 15); // missing
        const QList<QPair<QVariant, int>> values{{5, 5},   {QStringLiteral("7"), 7},     {0, 15},
                                                 {-3, 15}, {QStringLiteral("soon"), 15}, {999999, 3600}};
        for (const auto& [value, seconds] : values)
        {
            test.setValue(QStringLiteral("Database Timeout Seconds"), value);
            QCOMPARE(test.settings().timeoutSeconds, seconds);
        }

        // The connection takes it on, and follows a change of the key.
        for (const int seconds : {5, 7})
        {
            test.setValue(QStringLiteral("Database Timeout Seconds"), seconds);
            SuiteDatabase db(test.settings(), SuiteDatabase::OpenMode::CreateIfMissing);
            if (SuiteTestDatabase::onPostgres())
            {
                QCOMPARE(db.scalar(QStringLiteral("SELECT current_setting('statement_timeout')")).toString(),
                         QStringLiteral("%1s").arg(seconds));
                QCOMPARE(db.scalar(QStringLiteral("SELECT current_setting('lock_timeout')")).toString(),
                         QStringLiteral("%1s").arg(seconds));
            }
            else
            {
                QCOMPARE(db.scalar(QStringLiteral("PRAGMA busy_timeout")).toInt(), seconds * 1000);
            }
        }
    }

    void aServerThatDoesNotAnswerTheConnectionIsGivenUp()
    {
        // A port where the system takes the connection and nobody answers.
        const int silent = ::socket(AF_INET, SOCK_STREAM, 0);
        QVERIFY(silent >= 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        QVERIFY(::bind(silent, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
        QVERIFY(::listen(silent, 4) == 0);
        QVERIFY(::getsockname(silent, reinterpret_cast<sockaddr*>(&address), &length) == 0);
        const auto closeSilent = qScopeGuard([silent] { ::close(silent); });
        SuiteTestDatabase test;
        SuiteSettings settings;
        settings.driver = SuiteSettings::PostgresDriver;
        settings.host = QStringLiteral("127.0.0.1");
        settings.port = ntohs(address.sin_port);
        settings.databaseName = QStringLiteral("calvex_test_silent");
        settings.user = QStringLiteral("nobody");
        settings.timeoutSeconds = 2;
        SuiteDatabase db(settings);
        qint64 milliseconds = 0;
        const RuntimeError error = timed([&] { db.open(); }, milliseconds);
        QCOMPARE(error.number(), SuiteDatabase::ErrorCannotOpen);
        QVERIFY2(milliseconds >= 1500 && milliseconds < 6000, qPrintable(QString::number(milliseconds)));
        // The program's words; the driver's own text only as the detail.
        QCOMPARE(error.description(), QStringLiteral("The QC database cannot be opened: the database server cannot "
                                                     "be reached, or it did not accept the sign-in (%1).")
                                          .arg(settings.describe()));
        QVERIFY2(error.detail().contains(QLatin1String("timeout"), Qt::CaseInsensitive), qPrintable(error.detail()));
    }

    void aLockHeldOnTheServerEndsASaveWithinTheTimeout()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("a lock held on a database server; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        ReportInfo info;
        const qint32 id = twoDefinitionsToSave(test, info);

        // Another session holds the definitions' table as LOCK TABLE does.
        ScopedServerSession other(test.settings(), QStringLiteral("holder"));
        QVERIFY2(other.exec(QStringLiteral("BEGIN")) &&
                     other.exec(QStringLiteral("LOCK TABLE qc_reports IN ACCESS EXCLUSIVE MODE")),
                 qPrintable(other.error()));

        NorrixReportStore store;
        qint64 milliseconds = 0;
        RuntimeError error = timed([&] { SaveAsTheWindowDoes(store, id, QStringLiteral("DLCO"), info); }, milliseconds);
        QCOMPARE(error.number(), SuiteDatabase::ErrorTimedOut);
        QCOMPARE(error.description(), timeoutMessage(2));
        QVERIFY2(error.detail().contains(QLatin1String("canceling statement due to")), qPrintable(error.detail()));
        QVERIFY2(milliseconds >= 1900 && milliseconds < 5000, qPrintable(QString::number(milliseconds)));

        // Reading the list waits no longer either.
        error = timed([&] { store.ListReports(); }, milliseconds);
        QCOMPARE(error.number(), SuiteDatabase::ErrorTimedOut);
        QVERIFY2(milliseconds < 5000, qPrintable(QString::number(milliseconds)));

        // Once the lock is gone the same store saves.
        QVERIFY(other.exec(QStringLiteral("ROLLBACK")));
        const qint32 saved = SaveAsTheWindowDoes(store, id, QStringLiteral("DLCO"), info);
        QVERIFY(saved > id);
        QCOMPARE(store.CountReportsNamed(QStringLiteral("DLCO")), 1);
    }

    void aStatementThatRunsTooLongIsEnded()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("a statement that the server runs on; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Database Timeout Seconds"), 1);
        SuiteDatabase db(test.settings());
        qint64 milliseconds = 0;
        const RuntimeError error = timed([&] { db.exec(QStringLiteral("SELECT pg_sleep(?)"), {10}); }, milliseconds);
        QCOMPARE(error.number(), SuiteDatabase::ErrorTimedOut);
        QCOMPARE(error.description(), QStringLiteral("The QC database did not answer within 1 second. Another "
                                                     "workstation may be changing the same data, or the server is "
                                                     "busy; try again in a moment."));
        QVERIFY2(milliseconds < 4000, qPrintable(QString::number(milliseconds)));
        QCOMPARE(db.scalar(QStringLiteral("SELECT 6 * 7")).toInt(), 42);
    }

    void aStalledServerBackendEndsAFindWithinTheTimeout()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("a server backend that stops answering; this runs in the PostgreSQL run");
        SuiteTestDatabase test;
        test.fillDemo();
        test.setValue(QStringLiteral("Database Timeout Seconds"), 2);
        QCOMPARE(NorrixPatientQuery().FindByIdNum(QStringLiteral("QC001"))->RecordCount(), 1);
        // The backend of the program's connection stops, as a stalled one
        // does: it can no more enforce its own statement timeout.
        const qint64 backend =
            SuiteDatabase(test.settings()).scalar(QStringLiteral("SELECT pg_backend_pid()")).toLongLong();
        QVERIFY(backend > 0);
        QVERIFY(::kill(pid_t(backend), SIGSTOP) == 0);
        const auto resume = qScopeGuard([backend] { ::kill(pid_t(backend), SIGCONT); });

        qint64 milliseconds = 0;
        const RuntimeError error =
            timed([] { NorrixPatientQuery().FindByIdNum(QStringLiteral("QC001")); }, milliseconds);
        QCOMPARE(error.number(), SuiteDatabase::ErrorTimedOut);
        QCOMPARE(error.description(), timeoutMessage(2));
        QVERIFY2(milliseconds >= 2000 && milliseconds < 7000, qPrintable(QString::number(milliseconds)));

        // The next search connects anew and is answered.
        QCOMPARE(NorrixPatientQuery().FindByIdNum(QStringLiteral("QC001"))->RecordCount(), 1);
    }

    void aLockedDatabaseFileRefusesTheStartWithinOneTimeout()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("a SQLite file locked by another program; the server's lock timeout has a test of its own");
        SuiteTestDatabase test;
        test.createSchema();
        test.setValue(QStringLiteral("Database Timeout Seconds"), 2);
        SuiteDatabase::closeAllConnections();
        {
            // Another program holds the file so that nobody may even read it.
            const ExclusiveSqliteLock lock(test.settings().databaseName);
            QVERIFY2(lock.held(), qPrintable(lock.whyNot()));

            // The start's questions, as the program asks them: one timeout in
            // all, then the start check tells why.
            QElapsedTimer clock;
            clock.start();
            NorrixCalcEngine engine;
            QCOMPARE(engine.OpenApplication(6), 0);
            QVERIFY(engine.HasRight(500));
            engine.HasRight(501);
            engine.AutoLogoutMinutes();
            QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartDatabaseUnreachable);
            const qint64 milliseconds = clock.elapsed();
            QCOMPARE(engine.StartCheckReason(), timeoutMessage(2));
            QVERIFY2(milliseconds >= 1900 && milliseconds < 4000, qPrintable(QString::number(milliseconds)));
        }
        QCOMPARE(NorrixCalcEngine().StartCheck(), NorrixCalcEngine::StartAllowed);
    }

    void aWriterInAnotherProcessEndsASaveWithinTheBusyTimeout()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("a SQLite file's busy timeout; the server's lock timeout has a test of its own");
        if (!OtherSqliteWriter::shellInstalled())
            QSKIP("the sqlite3 program (Debian package sqlite3) writes from another process");
        SuiteTestDatabase test;
        ReportInfo info;
        const qint32 id = twoDefinitionsToSave(test, info);

        // Another program begins writing and keeps the file's write lock.
        OtherSqliteWriter writer(test.settings());
        QVERIFY2(writer.writing(), qPrintable(writer.whyNot()));

        NorrixReportStore store;
        qint64 milliseconds = 0;
        const RuntimeError error =
            timed([&] { SaveAsTheWindowDoes(store, id, QStringLiteral("DLCO"), info); }, milliseconds);
        QCOMPARE(error.number(), SuiteDatabase::ErrorTimedOut);
        QCOMPARE(error.description(), timeoutMessage(2));
        QCOMPARE(error.detail(), QStringLiteral("database is locked"));
        QVERIFY2(milliseconds >= 1900 && milliseconds < 5000, qPrintable(QString::number(milliseconds)));
        // Reading goes on while the other program writes.
        QCOMPARE(store.ListReports()->RecordCount(), 2);

        QVERIFY(writer.commit());
        QCOMPARE(writer.exitCode(), 0);
        QVERIFY(SaveAsTheWindowDoes(store, id, QStringLiteral("DLCO"), info) > id);
        QCOMPARE(store.ListReports()->RecordCount(), 2);
    }
};

CALVEX_TEST(TestDatabaseTimeouts)
#include "TestDatabaseTimeouts.moc"
