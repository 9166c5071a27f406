#include "SuiteWindow.h"

#include "common/TestMain.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/StringServer.h"
#include "reports/PanelDriving.h"
#include "suite/SuiteComponents.h"
#include "widgets/ComboList.h"

#include <QCoreApplication>

using namespace PanelDriving;

// A definition built through the window's controls, saved through the suite's
// store on SQLite, and opened again by a new window.
class TestDefinitionRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ForgetSuiteComponents(); }

    void nineAndNineVariablesComeBackCellByCell()
    {
        ProgramState state;
        ScopedRegistryFile registry;
        registry.useDemoDatabase();
        RegisterSuiteComponents();
        ResetResourceServer();
        RecordingMessageService boxes;
        const QString name = QStringLiteral("Round trip nine and nine");

        Cells built;
        qint32 savedId = 0;
        {
            std::unique_ptr<frmMain> window = StartSuiteWindow(state, boxes);
            QVERIFY(window);
            ReportTabsPanel& tabs = *window->ReportTabs();
            clickTab(tabs, 1);
            click(tabs.cmdNew);
            QCOMPARE(tabs.msfgVariable[1]->Rows(), 2);

            // Eighteen rows, the gas exchange catalogue's variables and tables
            // in turn: the first nine in the graph, the last nine in the table.
            const int variables = tabs.cboVariable[1]->count();
            QVERIFY(variables >= 9);
            for (int i = 0; i < 18; ++i)
            {
                ComboList::SetListIndex(tabs.cboTable[1], i % tabs.cboTable[1]->count());
                ComboList::SetListIndex(tabs.cboVariable[1], i % variables);
                tick(tabs.chkShowIn[2], i < 9);
                tick(tabs.chkShowIn[3], i >= 9);
                click(tabs.cmdVarAdd[1]);
            }
            QCOMPARE(boxes.count(), 0);
            QCOMPARE(tabs.msfgVariable[1]->Rows(), 20);
            QCOMPARE(tabs.lblTotalFor[2]->text(), QStringLiteral("9"));
            QCOMPARE(tabs.lblTotalFor[3]->text(), QStringLiteral("9"));

            // Both are full now.
            tick(tabs.chkShowIn[2], true);
            click(tabs.cmdVarAdd[1]);
            QCOMPARE(boxes.count(), 1);
            QCOMPARE(boxes.last().text, GetResourceText(4078) + QStringLiteral(": 9"));
            QCOMPARE(boxes.last().style, 48);
            QCOMPARE(boxes.last().title, GetResourceText(4052));
            QCOMPARE(tabs.msfgVariable[1]->Rows(), 20);
            boxes.clear();

            built = gridCells(*tabs.msfgVariable[1]);
            answerSaveAs(name);
            click(tabs.cmdSaveAs);
            QCOMPARE(boxes.count(), 0);
            QCOMPARE(tabs.cboReports[1]->currentText(), name);
            const qint32 firstId = ComboList::ItemData(tabs.cboReports[1], tabs.cboReports[1]->currentIndex());
            // Saving again stores it anew under a new ID.
            click(tabs.cmdSave);
            QCOMPARE(boxes.count(), 0);
            savedId = ComboList::ItemData(tabs.cboReports[1], tabs.cboReports[1]->currentIndex());
            QVERIFY(savedId != firstId);
            QVERIFY(!window->IsModified(1));
            window->Unload();
        }

        std::unique_ptr<frmMain> window = StartSuiteWindow(state, boxes);
        QVERIFY(window);
        ReportTabsPanel& tabs = *window->ReportTabs();
        clickTab(tabs, 1);
        QVERIFY(choose(tabs.cboReports[1], name));
        QCOMPARE(ComboList::ItemData(tabs.cboReports[1], tabs.cboReports[1]->currentIndex()), savedId);
        QCOMPARE(boxes.count(), 0);
        const Cells opened = gridCells(*tabs.msfgVariable[1]);
        QCOMPARE(opened.size(), 18);
        for (int r = 0; r < 18; ++r)
            QCOMPARE(opened.at(r), built.at(r));
        QCOMPARE(tabs.lblTotalFor[2]->text(), QStringLiteral("9"));
        QCOMPARE(tabs.lblTotalFor[3]->text(), QStringLiteral("9"));
        QVERIFY(!window->IsModified(1));
        window->Unload();
    }
};

CALVEX_TEST(TestDefinitionRoundTrip)
#include "TestDefinitionRoundTrip.moc"
