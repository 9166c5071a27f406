#include "SuiteWindow.h"

#include "common/TestMain.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/StringServer.h"
#include "reports/PanelDriving.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteComponents.h"
#include "widgets/ComboList.h"

using namespace PanelDriving;

// The program cannot start on a tab without a saved definition, so the real
// window on the suite's store never leaves a tab without one, and files a
// definition on the tab it was made on.
class TestEveryTabKeepsADefinition : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ScopedRegistryFile> m_registry;
    RecordingMessageService m_boxes;

    // The program's state of the test; every test starts on a fresh one.
    std::unique_ptr<ProgramState> m_state;

    std::unique_ptr<frmMain> startWindow() { return StartSuiteWindow(*m_state, m_boxes); }

    // The saved definitions of a tab, by name, as the store lists them.
    static QMap<QString, qint32> storedOnTab(int tab)
    {
        QMap<QString, qint32> reports;
        RecordsetPtr list = NorrixReportStore().ListReports();
        for (list->MoveFirst(); !list->IsEOF(); list->MoveNext())
        {
            if (list->Value(QStringLiteral("QCReportType")).toInt() == tab)
                reports.insert(list->Value(QStringLiteral("QCReportName")).toString(),
                               list->Value(QStringLiteral("QCReportID")).toInt());
        }
        return reports;
    }

private slots:
    void init()
    {
        m_state = std::make_unique<ProgramState>();
        m_registry = std::make_unique<ScopedRegistryFile>();
        m_registry->useDemoDatabase();
        RegisterSuiteComponents();
        ResetResourceServer();
        m_boxes.clear();
    }

    void cleanup()
    {
        ForgetSuiteComponents();
        m_registry.reset();
    }

    void anEmptyGridIsSavedOnItsOwnTab_data()
    {
        QTest::addColumn<int>("tab");
        QTest::newRow("PF") << 0;
        QTest::newRow("GX") << 1;
    }

    void anEmptyGridIsSavedOnItsOwnTab()
    {
        QFETCH(int, tab);
        QString name;
        {
            std::unique_ptr<frmMain> window = startWindow();
            QVERIFY(window);
            ReportTabsPanel& tabs = *window->ReportTabs();
            clickTab(tabs, tab);
            // The tab's last saved definition (start-up opens the first one),
            // every row removed, saved again.
            QVERIFY(tabs.cboReports[tab]->count() > 2);
            ComboList::SetListIndex(tabs.cboReports[tab], tabs.cboReports[tab]->count() - 1);
            name = tabs.cboReports[tab]->currentText();
            while (tabs.msfgVariable[tab]->Rows() > 2)
            {
                clickRow(tabs.msfgVariable[tab], 1);
                click(tabs.cmdVarRemove[tab]);
            }
            click(tabs.cmdSave);
            QCOMPARE(m_boxes.count(), 0);
            window->Unload();
        }
        QVERIFY2(storedOnTab(tab).contains(name), qPrintable(name));
        QVERIFY(!storedOnTab(1 - tab).contains(name));

        // The next start lists it on its tab and opens it.
        std::unique_ptr<frmMain> window = startWindow();
        QVERIFY2(window, m_boxes.count() ? qPrintable(m_boxes.last().text) : "the program ended");
        ReportTabsPanel& tabs = *window->ReportTabs();
        QVERIFY(tabs.cboReports[tab]->findText(name) > 0);
        QCOMPARE(tabs.cboReports[1 - tab]->findText(name), -1);
        window->Unload();
    }

    void deleteIsDisabledForATabsOnlyDefinition()
    {
        {
            std::unique_ptr<frmMain> window = startWindow(); // creates the demo database
            QVERIFY(window);
            window->Unload();
        }
        // All but one of the PF definitions go, through the store.
        const QMap<QString, qint32> pf = storedOnTab(0);
        QVERIFY(pf.size() >= 2);
        const QString kept = pf.firstKey();
        for (auto it = std::next(pf.cbegin()); it != pf.cend(); ++it)
            QCOMPARE(NorrixReportStore().DeleteReport(it.value(), QString()), 0);
        QVERIFY(!NorrixReportStore().CanDeleteReport(pf.value(kept), QString()));

        std::unique_ptr<frmMain> window = startWindow();
        QVERIFY(window);
        ReportTabsPanel& tabs = *window->ReportTabs();
        clickTab(tabs, 0);
        QCOMPARE(tabs.cboReports[0]->currentText(), kept);
        // The start-up enables Delete for a tab with saved reports; the store
        // refuses to take the last one, and says why.
        QVERIFY(tabs.cmdDelete->isEnabled());
        m_boxes.queueAnswer(MsgAnswer::Yes);
        click(tabs.cmdDelete);
        QCOMPARE(m_boxes.count(), 2);
        QCOMPARE(m_boxes.last().style, int(MsgStyle::Exclamation));
        QVERIFY2(m_boxes.last().text.contains(QStringLiteral("only saved report")), qPrintable(m_boxes.last().text));
        QCOMPARE(tabs.cboReports[0]->currentText(), kept);
        QVERIFY(storedOnTab(0).contains(kept));
        m_boxes.clear();
        // Chosen from the list, it has Delete disabled.
        ComboList::SetListIndex(tabs.cboReports[0], 0);
        QVERIFY(choose(tabs.cboReports[0], kept));
        QVERIFY(!tabs.cmdDelete->isEnabled());
        // A tab with several keeps Delete for each of them.
        clickTab(tabs, 1);
        QVERIFY(tabs.cboReports[1]->count() > 2);
        ComboList::SetListIndex(tabs.cboReports[1], tabs.cboReports[1]->count() - 1);
        QVERIFY(tabs.cmdDelete->isEnabled());
        // A second PF definition makes the first one deletable again.
        clickTab(tabs, 0);
        answerSaveAs(QStringLiteral("Second"));
        click(tabs.cmdSaveAs);
        QCOMPARE(m_boxes.count(), 0);
        QVERIFY(choose(tabs.cboReports[0], kept));
        QVERIFY(tabs.cmdDelete->isEnabled());
        window->Unload();
    }
};

CALVEX_TEST(TestEveryTabKeepsADefinition)
#include "TestEveryTabKeepsADefinition.moc"
