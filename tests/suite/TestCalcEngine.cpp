#include "common/TestMain.h"

#include "ScopedUserName.h"
#include "SuiteTestDatabase.h"
#include "platform/Clock.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteUser.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlQuery>
#include <QTest>

#include <pwd.h>
#include <unistd.h>

class TestCalcEngine : public QObject
{
    Q_OBJECT

private:
    struct AuditRow
    {
        QString loggedAt;
        QString user;
        int application;
        QString kind;
        QVariant eventCode;
        QVariant patient;
        QVariant autoLogout;
    };

    static QList<AuditRow> auditLog(SuiteDatabase& db)
    {
        QList<AuditRow> rows;
        QSqlQuery query = db.exec(QStringLiteral("SELECT logged_at, user_name, application, event_kind, event_code, "
                                                 "patient_id_num, auto_logout FROM audit_log ORDER BY entry_id"));
        while (query.next())
        {
            const QVariant at = query.value(0);
            const QString loggedAt = at.typeId() == QMetaType::QDateTime
                                         ? at.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                                         : at.toString();
            rows.append({loggedAt, query.value(1).toString(), query.value(2).toInt(), query.value(3).toString(),
                         query.value(4), query.value(5), query.value(6)});
        }
        return rows;
    }

    static void addUsers(SuiteDatabase& db)
    {
        SuiteDataLoader loader(db);
        loader.addUser(QStringLiteral("LabChief"), QStringLiteral("Chief"), {500, 501}, 30, false);
        loader.addUser(QStringLiteral("viewer"), QStringLiteral("Viewer"), {500}, 0, false);
        loader.addUser(QStringLiteral("nobody"), QStringLiteral("No Rights"), {}, 5, false);
        loader.addUser(QStringLiteral("gone"), QStringLiteral("Gone"), {500, 501}, 30, true);
    }

private slots:
    void cleanup() { Clock::pin(QDateTime()); }

    void opensTheSessionOfThisProgramOnly()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ScopedUserName user(test, "viewer", {500});
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(CalcEngine::ApplicationNumber), 0);
        QCOMPARE(engine.OpenApplication(5), NorrixCalcEngine::OpenUnknownApplication);
        const QList<AuditRow> log = auditLog(test.db());
        QCOMPARE(log.size(), 1);
        QCOMPARE(log.at(0).kind, NorrixCalcEngine::AuditSessionOpened);
        QCOMPARE(log.at(0).application, 6);
        QCOMPARE(log.at(0).user, QStringLiteral("viewer"));
    }

    void rightsAndLogoutOfAListedUser()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("on a server the rights are the login's privileges there (TestServerRights)");
        SuiteTestDatabase test;
        test.createSchema();
        addUsers(test.db());
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        test.setValue(QStringLiteral("Default Auto Logout Minutes"), 99);
        {
            ScopedUserName user(test, "labchief"); // listed as LabChief
            NorrixCalcEngine engine;
            QVERIFY(engine.HasRight(500));
            QVERIFY(engine.HasRight(501));
            QVERIFY(!engine.HasRight(502));
            QCOMPARE(engine.AutoLogoutMinutes(), 30);
        }
        {
            ScopedUserName user(test, "viewer");
            NorrixCalcEngine engine;
            QVERIFY(engine.HasRight(500));
            QVERIFY(!engine.HasRight(501)); // the table, not the site's defaults
            QCOMPARE(engine.AutoLogoutMinutes(), 0);
        }
        {
            ScopedUserName user(test, "nobody");
            NorrixCalcEngine engine;
            QVERIFY(!engine.HasRight(500));
            QVERIFY(!engine.HasRight(501));
            QCOMPARE(engine.AutoLogoutMinutes(), 5);
        }
    }

    void anUnlistedUserGetsTheSiteDefaults()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("on a server the rights are the login's privileges there (TestServerRights)");
        SuiteTestDatabase test;
        test.createSchema();
        addUsers(test.db());
        ScopedUserName user(test, "temp.worker");
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500"));
        test.setValue(QStringLiteral("Default Auto Logout Minutes"), 12);
        {
            NorrixCalcEngine engine;
            QVERIFY(engine.HasRight(500));
            QVERIFY(!engine.HasRight(501));
            QCOMPARE(engine.AutoLogoutMinutes(), 12);
            QCOMPARE(engine.StartCheck(), 0);
        }
        test.setValue(QStringLiteral("Default Rights"), QVariant());
        test.setValue(QStringLiteral("Default Auto Logout Minutes"), QVariant());
        NorrixCalcEngine engine;
        QVERIFY(!engine.HasRight(500));
        QCOMPARE(engine.AutoLogoutMinutes(), 0);
    }

    // A scheduled job may run without USER and USERNAME: the account the
    // process runs as is the user then, not a made-up name.
    void withoutTheVariablesTheAccountIsTheUser()
    {
        const QByteArray user = qgetenv("USER");
        const QByteArray userName = qgetenv("USERNAME");
        const bool hadUser = qEnvironmentVariableIsSet("USER");
        const bool hadUserName = qEnvironmentVariableIsSet("USERNAME");
        qunsetenv("USER");
        qunsetenv("USERNAME");
        const QString name = SuiteUser::currentName();
        if (hadUser)
            qputenv("USER", user);
        if (hadUserName)
            qputenv("USERNAME", userName);
        const passwd* account = getpwuid(geteuid());
        QVERIFY(account && account->pw_name);
        QCOMPARE(name, QString::fromLocal8Bit(account->pw_name));
    }

    void startCheckPassesOnACurrentDatabase()
    {
        SuiteTestDatabase test;
        test.createSchema();
        addUsers(test.db());
        ScopedUserName user(test, "viewer", {500});
        NorrixCalcEngine engine;
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartAllowed);
        QCOMPARE(engine.StartCheckReason(), QString());
    }

    void startCheckRefusesAnUnreachableDatabase()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), test.tempPath(QStringLiteral("nowhere/qc.sqlite")));
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500"));
        test.setValue(QStringLiteral("Default Auto Logout Minutes"), 7);
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        // Rights fall back to the site's defaults, so the start check is the one to tell.
        QVERIFY(engine.HasRight(500));
        QCOMPARE(engine.AutoLogoutMinutes(), 7);
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartDatabaseUnreachable);
        QVERIFY2(engine.StartCheckReason().startsWith(QLatin1String("The QC database cannot be opened: ")),
                 qPrintable(engine.StartCheckReason()));
        // A notification that cannot be written to the audit log does not
        // stop what the user does; it is left out with a warning.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^The audit log entry \"patient taken\" "
                                                                             "was left out: The QC database cannot be "
                                                                             "opened: ")));
        engine.PatientNotify(9, 6, 0, QStringLiteral("QC001"));
    }

    void sessionCreatesTheMissingDemoDatabase()
    {
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("first/start/norrix-demo.sqlite"));
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), path);
        test.setValue(QStringLiteral("Demo Database"), 1);
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        QVERIFY(!QFileInfo::exists(path));
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        QVERIFY(QFileInfo(path).isFile());
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartAllowed);
        QVERIFY(engine.HasRight(501));
    }

    void sessionLeavesAMissingSiteDatabaseMissing()
    {
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("site/qc.sqlite"));
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), path);
        test.setValue(QStringLiteral("Demo Database"), 0);
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartDatabaseUnreachable);
    }

    void startCheckRefusesAnUnreachableServer()
    {
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QPSQL"));
        test.setValue(QStringLiteral("Database Host"), QStringLiteral("127.0.0.1"));
        test.setValue(QStringLiteral("Database Port"), 1);
        test.setValue(QStringLiteral("Database Name"), QStringLiteral("calvex_test_absent"));
        NorrixCalcEngine engine;
        QVERIFY(engine.StartCheck() != 0);
        QVERIFY(engine.StartCheckReason().contains(QLatin1String("cannot be opened")));
    }

    void startCheckRefusesAnOlderSchema()
    {
        SuiteTestDatabase test;
        SuiteSchema::migrate(test.db(), 1);
        NorrixCalcEngine engine;
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartSchemaOutdated);
        QVERIFY(engine.StartCheckReason().contains(QLatin1String("schema version 1")));
        QVERIFY(engine.StartCheckReason().contains(QLatin1String("NorrixDBQuery auto")));
    }

    void startCheckRefusesAnEmptyDatabase()
    {
        SuiteTestDatabase test;
        test.db().open(); // exists, but has no schema
        NorrixCalcEngine engine;
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartSchemaOutdated);
        QCOMPARE(engine.StartCheckReason(),
                 QStringLiteral("The QC database holds none of the suite's tables (%1). Run \"NorrixDBQuery auto\" to "
                                "create them.")
                     .arg(test.settings().describe()));
    }

    void startCheckNamesADamagedFile()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("An SQLite file.");
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("damaged.sqlite"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(8192, 'Q'));
        file.close();
        test.setValue(QStringLiteral("Database Name"), path);
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartDatabaseUnreachable);
        // Not an empty database: the file is no database at all.
        QVERIFY2(engine.StartCheckReason().contains(QLatin1String("file is not a database")),
                 qPrintable(engine.StartCheckReason()));
        engine.CloseApplication(6, false);
        QCOMPARE(QFileInfo(path).size(), 8192);
    }

    void missingRightReasonNamesTheUserAndWhereTheRightsCameFrom()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("on a server the rights are the login's privileges there (TestServerRights)");
        SuiteTestDatabase test;
        test.createSchema();
        addUsers(test.db());
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("501"));
        {
            ScopedUserName user(test, "viewer");
            NorrixCalcEngine engine;
            QCOMPARE(engine.MissingRightReason(500), QString());
            QCOMPARE(engine.MissingRightReason(501),
                     QStringLiteral("The user \"viewer\" does not have right 501 (edit QC report definitions) in the "
                                    "QC database."));
        }
        {
            ScopedUserName user(test, "temp.worker");
            NorrixCalcEngine engine;
            QVERIFY(!engine.HasRight(500));
            QCOMPARE(engine.MissingRightReason(500),
                     QStringLiteral("The user \"temp.worker\" is not listed in the QC database, and the site's "
                                    "\"Default Rights\" (\"501\") do not include right 500 (run QC reports)."));
        }
        {
            test.db().exec(QStringLiteral("DELETE FROM user_rights WHERE user_name = ? AND right_number = ?"),
                           {QStringLiteral("gone"), 500});
            ScopedUserName user(test, "gone");
            NorrixCalcEngine engine;
            QCOMPARE(engine.MissingRightReason(500),
                     QStringLiteral("The user \"gone\" is disabled in the QC database and does not have right 500 "
                                    "(run QC reports)."));
        }
    }

    void missingRightReasonTellsWhyTheDefaultsStoodIn()
    {
        if (SuiteTestDatabase::onPostgres())
            QSKIP("the site's defaults stand in on a SQLite file only");
        SuiteTestDatabase test;
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), test.tempPath(QStringLiteral("nowhere/qc.sqlite")));
        test.setValue(QStringLiteral("Default Rights"), QString());
        ScopedUserName user(test, "viewer");
        NorrixCalcEngine engine;
        QVERIFY(!engine.HasRight(500));
        const QString reason = engine.MissingRightReason(500);
        QVERIFY2(reason.startsWith(QLatin1String("The rights of the user \"viewer\" could not be read, and the site's "
                                                 "\"Default Rights\" (\"\") do not include right 500 (run QC reports). "
                                                 "The QC database cannot be opened: the file ")),
                 qPrintable(reason));
        QVERIFY2(reason.contains(QLatin1String("does not exist")), qPrintable(reason));
    }

    void aSessionThatCouldNotBeLoggedClosesWithoutAsking()
    {
        SuiteTestDatabase test;
        test.db().open(); // exists, but has no audit log
        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        // The close would fail as the session's start did ("no such table"); it is not tried.
        engine.CloseApplication(6, false);
        QVERIFY(!test.db().tableExists(QStringLiteral("audit_log")));
    }

    void startCheckRefusesANewerSchema()
    {
        SuiteTestDatabase test;
        test.createSchema();
        test.db().exec(QStringLiteral("UPDATE schema_version SET version = ?"), {SuiteSchema::CurrentVersion + 1});
        NorrixCalcEngine engine;
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartSchemaNewer);
        QVERIFY(!engine.StartCheckReason().isEmpty());
    }

    void startCheckRefusesADisabledUser()
    {
        SuiteTestDatabase test;
        test.createSchema();
        addUsers(test.db());
        ScopedUserName user(test, "GONE");
        NorrixCalcEngine engine;
        QVERIFY(engine.HasRight(500)); // the stored rights, as they are
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartUserDisabled);
        QCOMPARE(engine.StartCheckReason(), QStringLiteral("The user \"gone\" is disabled in the QC database."));
    }

    void notificationsAndCloseGoToTheAuditLog()
    {
        SuiteTestDatabase test;
        test.createSchema();
        ScopedUserName user(test, "O'Brien");
        NorrixCalcEngine engine;
        Clock::pin(QDateTime(QDate(2025, 3, 4), QTime(9, 15, 30)));
        engine.PatientNotify(CalcEngine::EventPatientTaken, 6, 0, QStringLiteral("QC001"));
        Clock::pin(QDateTime(QDate(2025, 3, 4), QTime(9, 20, 0)));
        engine.PatientNotify(CalcEngine::EventPatientReleased, 6, 0, QStringLiteral("QC001"));
        engine.PatientNotify(CalcEngine::EventPatientTaken, 6, 0, QStringLiteral("x'); DELETE FROM audit_log; --"));
        Clock::pin(QDateTime(QDate(2025, 3, 4), QTime(17, 0, 1)));
        engine.CloseApplication(6, true);

        const QList<AuditRow> log = auditLog(test.db());
        QCOMPARE(log.size(), 4);
        QCOMPARE(log.at(0).loggedAt, QStringLiteral("2025-03-04 09:15:30"));
        QCOMPARE(log.at(0).user, QStringLiteral("O'Brien"));
        QCOMPARE(log.at(0).application, 6);
        QCOMPARE(log.at(0).kind, NorrixCalcEngine::AuditPatientTaken);
        QCOMPARE(log.at(0).eventCode.toInt(), 9);
        QCOMPARE(log.at(0).patient.toString(), QStringLiteral("QC001"));
        QVERIFY(log.at(0).autoLogout.isNull());
        QCOMPARE(log.at(1).loggedAt, QStringLiteral("2025-03-04 09:20:00"));
        QCOMPARE(log.at(1).kind, NorrixCalcEngine::AuditPatientReleased);
        QCOMPARE(log.at(1).eventCode.toInt(), 10);
        QCOMPARE(log.at(2).patient.toString(), QStringLiteral("x'); DELETE FROM audit_log; --"));
        QCOMPARE(log.at(3).loggedAt, QStringLiteral("2025-03-04 17:00:01"));
        QCOMPARE(log.at(3).kind, NorrixCalcEngine::AuditSessionClosed);
        QVERIFY(log.at(3).eventCode.isNull());
        QVERIFY(log.at(3).patient.isNull());
        QCOMPARE(log.at(3).autoLogout.toInt(), 1);

        NorrixCalcEngine().CloseApplication(6, false);
        QCOMPARE(auditLog(test.db()).last().autoLogout.toInt(), 0);
    }

    void unknownNotificationIsRefused()
    {
        SuiteTestDatabase test;
        test.createSchema();
        NorrixCalcEngine engine;
        try
        {
            engine.PatientNotify(11, 6, 0, QStringLiteral("QC001"));
            QFAIL("an unknown notification was accepted");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 5);
        }
        QCOMPARE(auditLog(test.db()).size(), 0);
    }
};

CALVEX_TEST(TestCalcEngine)
#include "TestCalcEngine.moc"
