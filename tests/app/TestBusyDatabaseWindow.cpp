#include "ScopedServerSession.h"
#include "SuiteWindow.h"

#include "common/TestMain.h"
#include "platform/Process.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"
#include "widgets/ComboList.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

// The real window on a demo database that another program is writing: Save
// waits no longer than "Database Timeout Seconds", ends with the program's
// message in the window's usual box, and the window goes on working.
class TestBusyDatabaseWindow : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ForgetSuiteComponents(); }

    void aSaveBlockedByAnotherWriterEndsWithTheMessage()
    {
        const QString sqlite = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
        if (sqlite.isEmpty())
            QSKIP("the sqlite3 program (Debian package sqlite3) writes from another process");
        ProgramState state;
        ScopedRegistryFile registry;
        const QString database = registry.useDemoDatabase();
        registry.setValue(QStringLiteral("Database Timeout Seconds"), 1);
        QVERIFY(RunProcess(frmMain::DatabaseQueryCommandLine(QCoreApplication::applicationDirPath()), true));
        RegisterSuiteComponents();
        ResetResourceServer();
        RecordingMessageService boxes;
        std::unique_ptr<frmMain> window = StartSuiteWindow(state, boxes);
        QVERIFY(window);
        ReportTabsPanel& tabs = *window->ReportTabs();
        const qint32 id = ComboList::ItemData(tabs.cboReports[0], 1);
        const int rows = tabs.msfgVariable[0]->Rows();

        // Another program begins writing and keeps the file's write lock.
        QProcess writer;
        writer.start(sqlite, {database});
        QVERIFY(writer.waitForStarted());
        writer.write("BEGIN IMMEDIATE;\nINSERT INTO audit_log (logged_at, user_name, application, event_kind) "
                     "VALUES ('2025-01-01 00:00:00', 'other', 1, 'writing');\n");
        ScopedServerSession probe(SuiteSettings::fromRegistry(), QStringLiteral("probe"));
        QVERIFY(probe.exec(QStringLiteral("PRAGMA busy_timeout = 0")));
        const auto otherWrites = [&probe] {
            if (!probe.exec(QStringLiteral("BEGIN IMMEDIATE")))
                return true;
            probe.exec(QStringLiteral("ROLLBACK"));
            return false;
        };
        QTRY_VERIFY_WITH_TIMEOUT(otherWrites(), 10000);

        QElapsedTimer clock;
        clock.start();
        tabs.cmdSave->click();
        QVERIFY2(clock.elapsed() < 4000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, QStringLiteral("The QC database did not answer within 1 second. Another "
                                                   "workstation may be changing the same data, or the server is "
                                                   "busy; try again in a moment."));
        QCOMPARE(boxes.last().style, 48);
        QCOMPARE(boxes.last().title, GetResourceText(4052));
        // Nothing changed, and the window goes on: another definition opens.
        QCOMPARE(ComboList::ItemData(tabs.cboReports[0], 1), id);
        QCOMPARE(tabs.msfgVariable[0]->Rows(), rows);
        ComboList::SetListIndex(tabs.cboReports[0], 2);
        QCOMPARE(boxes.count(), 1);
        QVERIFY(tabs.msfgVariable[0]->Rows() > 2);

        // Once the other program is done, Save saves.
        writer.write("COMMIT;\n.quit\n");
        writer.closeWriteChannel();
        QVERIFY(writer.waitForFinished());
        const qint32 second = ComboList::ItemData(tabs.cboReports[0], 2);
        tabs.cmdSave->click();
        QCOMPARE(boxes.count(), 1);
        QVERIFY(ComboList::ItemData(tabs.cboReports[0], 2) > second);
        window->Unload();
        SuiteDatabase::closeAllConnections();
    }
};

CALVEX_TEST(TestBusyDatabaseWindow)
#include "TestBusyDatabaseWindow.moc"
