#include "SuiteWindow.h"

#include "common/TestMain.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/Process.h"
#include "platform/StringServer.h"
#include "suite/SuiteComponents.h"
#include "widgets/ComboList.h"

#include <QCoreApplication>
#include <QFileInfo>

// The real window on the suite's own components and a demo database that
// NorrixDBQuery creates at the window's start-up.
class TestDemoWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QString tool = QCoreApplication::applicationDirPath() + QStringLiteral("/NorrixDBQuery");
        QVERIFY2(QFileInfo(tool).isExecutable(), "NorrixDBQuery is built beside the tests");
    }

    void cleanup() { ForgetSuiteComponents(); }

    void startsOnTheDemoDatabaseAndOpensTheFirstDefinitions()
    {
        ProgramState state;
        ScopedRegistryFile registry;
        const QString database = registry.useDemoDatabase();
        // The database of an earlier start; this start brings it up to date again.
        QVERIFY(RunProcess(frmMain::DatabaseQueryCommandLine(QCoreApplication::applicationDirPath()), true));
        QVERIFY(QFileInfo(database).isFile());
        RegisterSuiteComponents();
        ResetResourceServer();
        RecordingMessageService boxes;

        frmMain window(state);
        window.Form_Load();
        for (const RecordingMessageService::Box& box : boxes.boxes())
            qWarning() << "box:" << box.text << box.style << box.title;
        QCOMPARE(boxes.count(), 0);
        QVERIFY(!state.exitRequested);

        // The lists hold what the store lists, tab by tab, after the placeholder.
        auto store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        RecordsetPtr reports = store->ListReports();
        QStringList expected[2] = {{QStringLiteral("(New Report)")}, {QStringLiteral("(New Report)")}};
        for (; !reports->IsEOF(); reports->MoveNext())
            expected[reports->Value(QStringLiteral("QCReportType")).toInt()].append(
                reports->Value(QStringLiteral("QCReportName")).toString());
        ReportTabsPanel& tabs = *window.ReportTabs();
        for (int t = 0; t < 2; ++t)
        {
            QVERIFY2(expected[t].size() >= 2, "the demo has definitions on both tabs");
            QStringList listed;
            for (int i = 0; i < tabs.cboReports[t]->count(); ++i)
                listed.append(tabs.cboReports[t]->itemText(i));
            QCOMPARE(listed, expected[t]);

            // The first definition is open in the tab's grid.
            QCOMPARE(tabs.cboReports[t]->currentIndex(), 1);
            FlexGrid* grid = tabs.msfgVariable[t];
            const qint32 id = ComboList::ItemData(tabs.cboReports[t], 1);
            QCOMPARE(grid->Tag(), QString::number(id));
            qint32 tab = -1;
            RecordsetPtr rows = store->OpenReport(id, false, tab);
            QCOMPARE(tab, t);
            QCOMPARE(grid->Rows(), rows->RecordCount() + 2);
            for (int r = 1; !rows->IsEOF(); ++r, rows->MoveNext())
            {
                QCOMPARE(grid->TextMatrix(r, 1), rows->Value(QStringLiteral("ParamsUserName")).toString().trimmed());
                QCOMPARE(grid->TextMatrix(r, 6), rows->Value(QStringLiteral("ParamsDefID")).toString());
            }
            QVERIFY(tabs.cboVariable[t]->count() > 0);
            QVERIFY(tabs.cboTable[t]->count() > 0);
            QVERIFY(!window.IsModified(t));
        }
        QCOMPARE(tabs.CurrentTab(), 0);
        QCOMPARE(window.windowTitle(), QStringLiteral("Calvex QC Reports"));
        QVERIFY(state.blnAppReady);
        QVERIFY(!state.strStartupPrinter.isEmpty());
        window.Unload();
    }

    void firstStartCreatesTheDemoDatabase()
    {
        ProgramState state;
        ScopedRegistryFile registry;
        const QString database = registry.useDemoDatabase();
        RegisterSuiteComponents();
        ResetResourceServer();
        RecordingMessageService boxes;

        frmMain window(state);
        window.Form_Load();
        QCOMPARE(boxes.count(), 0);
        QVERIFY(QFileInfo(database).isFile());
        QCOMPARE(window.ReportTabs()->cboReports[1]->currentIndex(), 1);
    }
};

CALVEX_TEST(TestDemoWindow)
#include "TestDemoWindow.moc"
