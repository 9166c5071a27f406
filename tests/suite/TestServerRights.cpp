#include "common/TestMain.h"

#include "ScopedServerSession.h"
#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSqlQuery>
#include <QTest>

#include <functional>

// On a PostgreSQL server the user is the server's login, and the rights are
// what the server lets the login do: set up with the README's commands, a
// login with right 500 only cannot change report definitions, neither
// through the program's store nor with its own SQL.
class TestServerRights : public QObject
{
    Q_OBJECT

private:
    // The README's commands: the two groups of rights, once per database,
    // then a login of each kind.
    static QStringList readmeCommands(const QString& database, const QString& owner)
    {
        return {
            QStringLiteral("CREATE ROLE calvex_qc_run NOLOGIN"),
            QStringLiteral("GRANT CONNECT ON DATABASE %1 TO calvex_qc_run").arg(database),
            QStringLiteral("GRANT USAGE ON SCHEMA public TO calvex_qc_run"),
            QStringLiteral("GRANT SELECT ON ALL TABLES IN SCHEMA public TO calvex_qc_run"),
            QStringLiteral("GRANT INSERT ON audit_log TO calvex_qc_run"),
            QStringLiteral("ALTER DEFAULT PRIVILEGES FOR ROLE %1 IN SCHEMA public GRANT SELECT ON TABLES TO "
                           "calvex_qc_run")
                .arg(owner),
            QStringLiteral("CREATE ROLE calvex_qc_edit NOLOGIN IN ROLE calvex_qc_run"),
            QStringLiteral("GRANT INSERT, UPDATE, DELETE ON qc_reports, qc_report_params TO calvex_qc_edit"),
            QStringLiteral("CREATE ROLE anna LOGIN PASSWORD 'change-me' IN ROLE calvex_qc_run"),
            QStringLiteral("CREATE ROLE bert LOGIN PASSWORD 'change-me' IN ROLE calvex_qc_edit"),
        };
    }

    // A demo database whose logins and groups are set up as the README shows.
    static void setUp(SuiteTestDatabase& test)
    {
        test.fillDemo();
        SuiteDatabase& admin = test.db();
        for (const QString& role : {QStringLiteral("anna"), QStringLiteral("bert"), QStringLiteral("formerstaff"),
                                    QStringLiteral("calvex_qc_edit"), QStringLiteral("calvex_qc_run")})
        {
            if (admin.scalar(QStringLiteral("SELECT 1 FROM pg_roles WHERE rolname = ?"), {role}).isNull())
                continue;
            admin.exec(QStringLiteral("DROP OWNED BY ") + role);
            admin.exec(QStringLiteral("DROP ROLE ") + role);
        }
        for (const QString& sql : readmeCommands(test.settings().databaseName, test.settings().user))
            admin.exec(sql);
    }

    static SuiteSettings loginAs(SuiteTestDatabase& test, const QString& login)
    {
        test.setValue(QStringLiteral("Database User"), login);
        return test.settings();
    }

    static RuntimeError refusal(const std::function<void()>& call)
    {
        try
        {
            call();
        }
        catch (const RuntimeError& error)
        {
            return error;
        }
        return RuntimeError(0, QString(), QStringLiteral("no error"));
    }

    struct Rendered
    {
        int exitCode = -1;
        QString err;
    };

    // calvex-qc-render of the demo's Spirometry report of QC001 to pdf, as
    // the key file's login.
    static Rendered renderAsTheLogin(const QString& pdf)
    {
        QProcess render;
        render.start(QDir(qEnvironmentVariable("CALVEX_BIN_DIR")).filePath(QStringLiteral("calvex-qc-render")),
                     {QStringLiteral("--tab"), QStringLiteral("PF"), QStringLiteral("--report"),
                      QStringLiteral("Spirometry"), QStringLiteral("--subject"), QStringLiteral("QC001"),
                      QStringLiteral("--from"), QStringLiteral("01/01/2024"), QStringLiteral("--to"),
                      QStringLiteral("06/30/2024"), QStringLiteral("--out"), pdf});
        if (!render.waitForFinished(60000))
            render.kill();
        return {render.exitStatus() == QProcess::NormalExit ? render.exitCode() : -1,
                QString::fromUtf8(render.readAllStandardError())};
    }

    // A login that may read the suite's own tables (who it is, the schema's
    // version) and write the audit log, but not read the QC data.
    static void createLoginWithoutRight500(SuiteTestDatabase& test, const QString& login)
    {
        SuiteDatabase& admin = test.db();
        if (!admin.scalar(QStringLiteral("SELECT 1 FROM pg_roles WHERE rolname = ?"), {login}).isNull())
        {
            admin.exec(QStringLiteral("DROP OWNED BY ") + login);
            admin.exec(QStringLiteral("DROP ROLE ") + login);
        }
        admin.exec(QStringLiteral("CREATE ROLE ") + login + QStringLiteral(" LOGIN"));
        admin.exec(QStringLiteral("GRANT USAGE ON SCHEMA public TO ") + login);
        admin.exec(QStringLiteral("GRANT SELECT ON schema_version, users, user_rights TO ") + login);
        admin.exec(QStringLiteral("GRANT INSERT ON audit_log TO ") + login);
    }

private slots:
    // Skipped test by test: a skip in initTestCase would end every class
    // that runs after this one in the same process (the PostgreSQL run).
    void init()
    {
        if (!SuiteTestDatabase::onPostgres())
            QSKIP("the rights of a server's logins; this runs in the PostgreSQL run");
    }

    void aLoginWithRight500OnlyIsRefusedByTheServer()
    {
        SuiteTestDatabase test;
        setUp(test);
        ScopedServerSession anna(loginAs(test, QStringLiteral("anna")), QStringLiteral("anna"));
        QVERIFY2(anna.isOpen(), qPrintable(anna.error()));
        QVERIFY(anna.scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports")).toInt() > 0);
        for (const QString& change :
             {QStringLiteral("INSERT INTO qc_reports (name, name_key, tab) VALUES ('Mine', 'mine', 0)"),
              QStringLiteral("UPDATE qc_reports SET name = 'Renamed'"), QStringLiteral("DELETE FROM qc_report_params"),
              QStringLiteral("INSERT INTO qc_report_params (report_id, param_order, table_id, var_id, "
                             "show_in_graph, show_in_table, decimal_places) SELECT report_id, 99, table_id, var_id, "
                             "1, 1, 2 FROM qc_report_params LIMIT 1")})
        {
            QVERIFY2(!anna.exec(change), qPrintable(change));
            QVERIFY2(anna.error().contains(QLatin1String("permission denied for table qc_report")),
                     qPrintable(anna.error()));
        }
        // Nor can the login give itself the right.
        QVERIFY(!anna.exec(QStringLiteral("INSERT INTO user_rights (user_name, right_number) "
                                          "VALUES ('labtech', 501)")));
        QVERIFY(!anna.exec(QStringLiteral("GRANT calvex_qc_edit TO anna")));
    }

    void theStoreRefusesTheLoginsSaveAndDelete()
    {
        SuiteTestDatabase test;
        setUp(test);
        const qint32 before = test.db().scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports")).toInt();
        const qint32 id = test.db().scalar(QStringLiteral("SELECT MIN(report_id) FROM qc_reports")).toInt();
        loginAs(test, QStringLiteral("anna"));
        // The variable any program can set counts for nothing on a server.
        qputenv("USER", "labmanager");

        NorrixCalcEngine engine;
        QCOMPARE(engine.OpenApplication(6), 0);
        QVERIFY(engine.HasRight(500));
        QVERIFY(!engine.HasRight(501));
        QCOMPARE(engine.StartCheck(), 0);

        NorrixReportStore store;
        const RuntimeError save = refusal([&] { store.SaveReport(QStringLiteral("Mine"), ReportInfo()); });
        QCOMPARE(save.number(), SuiteDatabase::ErrorPermissionDenied);
        QCOMPARE(save.description(), QStringLiteral("The user \"anna\" may not change QC report definitions "
                                                    "(right 501); nothing was changed."));
        const RuntimeError remove = refusal([&] { store.DeleteReport(id, QString()); });
        QCOMPARE(remove.description(), save.description());
        QVERIFY(!store.CanDeleteReport(id, QString()));
        QCOMPARE(store.ListReports()->RecordCount(), before);

        // The login's session is what the audit log names.
        engine.PatientNotify(9, 6, 0, QStringLiteral("QC001"));
        QCOMPARE(test.db()
                     .scalar(QStringLiteral("SELECT user_name FROM audit_log WHERE event_kind = ?"),
                             {NorrixCalcEngine::AuditPatientTaken})
                     .toString(),
                 QStringLiteral("anna"));
        QCOMPARE(test.db().scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports")).toInt(), before);
    }

    void aLoginWithRight501Saves()
    {
        SuiteTestDatabase test;
        setUp(test);
        loginAs(test, QStringLiteral("bert"));
        qputenv("USER", "labtech");
        NorrixCalcEngine engine;
        QVERIFY(engine.HasRight(500));
        QVERIFY(engine.HasRight(501));

        NorrixReportStore store;
        ReportInfo info;
        info.TestTab = 1;
        const qint32 id = store.SaveReport(QStringLiteral("Bert's"), info);
        QCOMPARE(test.db().scalar(QStringLiteral("SELECT saved_by FROM qc_reports WHERE report_id = ?"), {id}),
                 QVariant(QStringLiteral("bert")));
        QVERIFY(store.CanDeleteReport(id, QString()));
        QCOMPARE(store.DeleteReport(id, QString()), 0);
    }

    void rightsListedInTheDatabaseDoNotWidenTheServers()
    {
        SuiteTestDatabase test;
        setUp(test);
        SuiteDataLoader(test.db()).addUser(QStringLiteral("Anna"), QStringLiteral("Anna"), {500, 501}, 20, false);
        loginAs(test, QStringLiteral("anna"));
        NorrixCalcEngine engine;
        QVERIFY(engine.HasRight(500));
        QVERIFY(!engine.HasRight(501));
        QCOMPARE(engine.AutoLogoutMinutes(), 20); // the rest of the entry holds
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().SaveReport(QStringLiteral("Mine"), {}));
    }

    void theServersLoginIsTheUserNotTheUserVariable()
    {
        SuiteTestDatabase test;
        setUp(test);
        // The demo lists formerstaff as disabled.
        test.db().exec(QStringLiteral("CREATE ROLE formerstaff LOGIN IN ROLE calvex_qc_edit"));
        loginAs(test, QStringLiteral("formerstaff"));
        qputenv("USER", "labmanager");
        QCOMPARE(NorrixCalcEngine().StartCheck(), NorrixCalcEngine::StartUserDisabled);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().SaveReport(QStringLiteral("Mine"), {}));

        loginAs(test, QStringLiteral("bert"));
        qputenv("USER", "formerstaff");
        QCOMPARE(NorrixCalcEngine().StartCheck(), NorrixCalcEngine::StartAllowed);
    }

    void aLoginWithoutPrivilegesCannotStart()
    {
        SuiteTestDatabase test;
        setUp(test);
        if (!test.db().scalar(QStringLiteral("SELECT 1 FROM pg_roles WHERE rolname = 'calvex_qc_nobody'")).isNull())
        {
            test.db().exec(QStringLiteral("DROP OWNED BY calvex_qc_nobody"));
            test.db().exec(QStringLiteral("DROP ROLE calvex_qc_nobody"));
        }
        test.db().exec(QStringLiteral("CREATE ROLE calvex_qc_nobody LOGIN"));
        loginAs(test, QStringLiteral("calvex_qc_nobody"));
        {
            NorrixCalcEngine engine;
            QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartDatabaseUnreachable);
            QVERIFY2(engine.StartCheckReason().contains(QLatin1String("may not use the database's schema")),
                     qPrintable(engine.StartCheckReason()));
        }
        // With the schema's use, as every login has it in a new database,
        // the tables themselves are refused.
        test.db().exec(QStringLiteral("GRANT USAGE ON SCHEMA public TO calvex_qc_nobody"));
        NorrixCalcEngine engine;
        QCOMPARE(engine.StartCheck(), NorrixCalcEngine::StartDatabaseUnreachable);
        QVERIFY2(engine.StartCheckReason().contains(QLatin1String("permission denied for table schema_version")),
                 qPrintable(engine.StartCheckReason()));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, NorrixReportStore().SaveReport(QStringLiteral("Mine"), {}));
    }

    // The renderer asks the engine as the program's start does: a disabled
    // login and a login without right 500 get no report, one line with the
    // reason and exit status 1; a login with right 500 gets its report.
    void theRendererHoldsTheServersRights()
    {
        SuiteTestDatabase test;
        setUp(test);
        test.db().exec(QStringLiteral("CREATE ROLE formerstaff LOGIN IN ROLE calvex_qc_edit"));
        createLoginWithoutRight500(test, QStringLiteral("calvex_qc_audit"));
        const QString pdf = test.tempPath(QStringLiteral("report.pdf"));
        qputenv("USER", "labmanager");

        loginAs(test, QStringLiteral("formerstaff")); // the demo lists formerstaff as disabled
        Rendered result = renderAsTheLogin(pdf);
        QCOMPARE(result.err, QStringLiteral("calvex-qc-render: The user \"formerstaff\" is disabled in the QC "
                                            "database.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!QFileInfo::exists(pdf));

        loginAs(test, QStringLiteral("calvex_qc_audit"));
        result = renderAsTheLogin(pdf);
        QCOMPARE(result.err, QStringLiteral("calvex-qc-render: The login \"calvex_qc_audit\" does not have right "
                                            "500 (run QC reports): the database server does not grant it the "
                                            "privileges for it.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!QFileInfo::exists(pdf));

        loginAs(test, QStringLiteral("anna"));
        result = renderAsTheLogin(pdf);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(QFileInfo(pdf).size() > 0);
    }

    void cleanup() { qputenv("USER", m_user); }

private:
    QByteArray m_user = qgetenv("USER");
};

CALVEX_TEST(TestServerRights)
#include "TestServerRights.moc"
