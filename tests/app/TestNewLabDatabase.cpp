#include "SuiteWindow.h"

#include "NorrixDBQueryRun.h"
#include "SuiteTestDatabase.h"
#include "common/TestMain.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/StringServer.h"
#include "reports/PanelDriving.h"
#include "suite/SuiteComponents.h"
#include "widgets/ComboList.h"

#include <QCoreApplication>

using namespace PanelDriving;

// A laboratory's own database, new and without demo data, made by the
// database tool: the program opens ready on it, with a starter definition on
// each tab. Runs on SQLite, and once more on the
// PostgreSQL test server (app.PostgreSQL).
class TestNewLabDatabase : public QObject
{
    Q_OBJECT

private:
    RecordingMessageService m_boxes;

    // The program's state of the test; every test starts on a fresh one.
    std::unique_ptr<ProgramState> m_state;

    std::unique_ptr<frmMain> startWindow() { return StartSuiteWindow(*m_state, m_boxes); }

    static QStringList items(QComboBox* list)
    {
        QStringList texts;
        for (int i = 0; i < list->count(); ++i)
            texts.append(list->itemText(i));
        return texts;
    }

private slots:
    void cleanup() { ForgetSuiteComponents(); }

    void theFirstStartOpensTheStarterDefinitions()
    {
        m_state = std::make_unique<ProgramState>();
        SuiteTestDatabase test; // nothing in it yet
        test.setValue(QStringLiteral("Executable Path"), QCoreApplication::applicationDirPath());
        test.setValue(QStringLiteral("Demo Database"), 0);
        test.setValue(QStringLiteral("SI Unit"), QStringLiteral("0"));
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        test.setValue(QStringLiteral("Default Auto Logout Minutes"), 0);
        RegisterSuiteComponents();
        ResetResourceServer();
        const QString placeholder = QStringLiteral("(") + GetResourceText(4114) + QStringLiteral(")");

        // The administrator makes the database once, as the set-up guide says.
        const NorrixDBQueryRun tool = NorrixDBQueryRun::start({QStringLiteral("auto")});
        QVERIFY2(tool.exitCode == 0, qPrintable(tool.err));

        for (int start = 1; start <= 2; ++start)
        {
            std::unique_ptr<frmMain> window = startWindow();
            QVERIFY2(window, m_boxes.count() ? qPrintable(m_boxes.last().text) : "the program ended");
            ReportTabsPanel& tabs = *window->ReportTabs();
            QCOMPARE(items(tabs.cboReports[0]), (QStringList{placeholder, QStringLiteral("Spirometry")}));
            QCOMPARE(items(tabs.cboReports[1]), (QStringList{placeholder, QStringLiteral("Exercise")}));

            // Each opens with its variables.
            QVERIFY(choose(tabs.cboReports[0], QStringLiteral("Spirometry")));
            QCOMPARE(tabs.msfgVariable[0]->Rows(), 6);
            QCOMPARE(tabs.msfgVariable[0]->TextMatrix(3, 1), QStringLiteral("FEV1/FVC"));
            clickTab(tabs, 1);
            QVERIFY(choose(tabs.cboReports[1], QStringLiteral("Exercise")));
            QCOMPARE(tabs.msfgVariable[1]->Rows(), 6);
            QCOMPARE(tabs.msfgVariable[1]->TextMatrix(1, 1), QStringLiteral("VO2"));
            QCOMPARE(tabs.msfgVariable[1]->TextMatrix(4, 1), QStringLiteral("RER"));
            // Chosen from the list, the only definition of its tab has Delete disabled.
            ComboList::SetListIndex(tabs.cboReports[1], 0);
            QVERIFY(choose(tabs.cboReports[1], QStringLiteral("Exercise")));
            QVERIFY(!tabs.cmdDelete->isEnabled());
            QCOMPARE(m_boxes.count(), 0);
            window->Unload();
        }
    }
};

CALVEX_TEST(TestNewLabDatabase)
#include "TestNewLabDatabase.moc"
