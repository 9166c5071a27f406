#include "OtherSqliteWriter.h"
#include "SuiteWindow.h"

#include "common/TestMain.h"
#include "platform/Process.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"
#include "widgets/ComboList.h"

#include <QCoreApplication>
#include <QElapsedTimer>

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
        if (!OtherSqliteWriter::shellInstalled())
            QSKIP("the sqlite3 program (Debian package sqlite3) writes from another process");
        ProgramState state;
        ScopedRegistryFile registry;
        registry.useDemoDatabase();
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
        OtherSqliteWriter writer(SuiteSettings::fromRegistry());
        QVERIFY2(writer.writing(), qPrintable(writer.whyNot()));

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
        QVERIFY(writer.commit());
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
