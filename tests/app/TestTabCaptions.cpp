#include "SuiteWindow.h"

#include "common/TestMain.h"
#include "platform/Process.h"
#include "suite/SuiteComponents.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QTabWidget>

// Every caption of both report tabs as the user reads it after a real
// start-up on the suite's own texts: the start-up replaces some of them, the
// others are the window's own, and both tabs read alike.
class TestTabCaptions : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ForgetSuiteComponents(); }

    void bothTabsReadAsTheUserSeesThem()
    {
        ProgramState state;
        ScopedRegistryFile registry;
        registry.useDemoDatabase();
        QVERIFY(RunProcess(frmMain::DatabaseQueryCommandLine(QCoreApplication::applicationDirPath()), true));
        RegisterSuiteComponents();
        ResetResourceServer();
        RecordingMessageService boxes;
        frmMain window{state};
        window.Form_Load();
        QCOMPARE(boxes.count(), 0);
        QVERIFY(!state.exitRequested);

        ReportTabsPanel& tabs = *window.ReportTabs();
        const auto label = [&window](int number) {
            auto* lbl = window.findChild<QLabel*>(QStringLiteral("Label1(%1)").arg(number));
            return lbl ? lbl->text() : QStringLiteral("<missing Label1(%1)>").arg(number);
        };
        QCOMPARE(tabs.sstabReportTabs->tabText(0), QStringLiteral("Pulmonary Function (PF)"));
        QCOMPARE(tabs.sstabReportTabs->tabText(1), QStringLiteral("Gas Exchange (GX)"));

        // Pulmonary Function.
        QCOMPARE(label(17), QStringLiteral("Saved Reports:"));
        QCOMPARE(label(15), QStringLiteral("Table for all variables:"));
        QCOMPARE(label(16), QStringLiteral("Variable:"));
        QCOMPARE(label(13), QStringLiteral("Selected Variables:"));
        QCOMPARE(label(4), QStringLiteral("Total selected for graph:"));
        QCOMPARE(label(5), QStringLiteral("Total selected for table:"));
        QCOMPARE(tabs.chkShowIn[0]->text(), QStringLiteral("Show In &Graph"));
        QCOMPARE(tabs.chkShowIn[1]->text(), QStringLiteral("Show In &Table"));
        QCOMPARE(tabs.cmdVarAdd[0]->text(), QStringLiteral("&Add"));
        QCOMPARE(tabs.cmdVarUpdate[0]->text(), QStringLiteral("&Update"));
        QCOMPARE(tabs.cmdVarRemove[0]->text(), QStringLiteral("Remove"));

        // Gas Exchange.
        QCOMPARE(label(1), QStringLiteral("Saved Reports:"));
        QCOMPARE(label(9), QStringLiteral("Table:"));
        QCOMPARE(label(8), QStringLiteral("Variable:"));
        QCOMPARE(label(12), QStringLiteral("Selected Variables:"));
        QCOMPARE(label(6), QStringLiteral("Total selected for graph:"));
        QCOMPARE(label(7), QStringLiteral("Total selected for table:"));
        QCOMPARE(tabs.chkShowIn[2]->text(), QStringLiteral("Show In Graph"));
        QCOMPARE(tabs.chkShowIn[3]->text(), QStringLiteral("Show In Table"));
        QCOMPARE(tabs.cmdVarAdd[1]->text(), QStringLiteral("&Add"));
        QCOMPARE(tabs.cmdVarUpdate[1]->text(), QStringLiteral("&Update"));
        QCOMPARE(tabs.cmdVarRemove[1]->text(), QStringLiteral("Remove"));

        // Each label sits on its own tab.
        for (int number : {17, 15, 16, 13, 4, 5})
            QVERIFY(tabs.sstabReportTabs->widget(0)->isAncestorOf(
                window.findChild<QLabel*>(QStringLiteral("Label1(%1)").arg(number))));
        for (int number : {1, 9, 8, 12, 6, 7})
            QVERIFY(tabs.sstabReportTabs->widget(1)->isAncestorOf(
                window.findChild<QLabel*>(QStringLiteral("Label1(%1)").arg(number))));
    }
};

CALVEX_TEST(TestTabCaptions)
#include "TestTabCaptions.moc"
