#include "EditingControls.h"
#include "SuiteWindow.h"

#include "common/ScopedReadOnlyFolder.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "output/RecordingTarget.h"
#include "platform/Process.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"
#include "widgets/ComboList.h"

#include <QCoreApplication>

// The real window on a demo database that cannot be written (a read-only
// file, folder or mount): it starts, says once why editing is off, chooses a
// subject and prints; once the database can be written again, editing comes
// back when the window is next activated and Save writes, without a restart.
class TestReadOnlyDatabaseWindow : public QObject
{
    Q_OBJECT

private:
    static bool enabled(frmMain& window, const char* name)
    {
        auto* control = window.findChild<QWidget*>(QLatin1String(name));
        if (!control)
            qFatal("no control %s", name);
        return control->isEnabled();
    }

private slots:
    void cleanup() { ForgetSuiteComponents(); }

    void aReadOnlyDatabaseServesReportsAndEditingComesBack()
    {
        ScopedReadOnlyFolder folder;
        if (!folder.usable())
            QSKIP(qPrintable(QStringLiteral("no read-only folder can be had: ") + folder.whyNot()));
        ProgramState state;
        ScopedRegistryFile registry;
        registry.useDemoDatabase(folder.filePath(QStringLiteral("norrix-demo.sqlite")));
        QVERIFY(RunProcess(frmMain::DatabaseQueryCommandLine(QCoreApplication::applicationDirPath()), true));
        QVERIFY(folder.makeReadOnly());
        RegisterSuiteComponents();
        ResetResourceServer();
        RecordingMessageService boxes;

        frmMain window(state);
        window.Form_Load();
        QVERIFY(!state.exitRequested);
        // Told once, why.
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().style, 64);
        QCOMPARE(boxes.last().title, GetResourceText(4052));
        QVERIFY2(boxes.last().text.startsWith(QLatin1String("The QC database is read-only (")) &&
                     boxes.last().text.endsWith(QLatin1String("Reports can be chosen, previewed and printed, but "
                                                              "report definitions cannot be changed until it can be "
                                                              "written again.")),
                 qPrintable(boxes.last().text));
        for (const char* name : kEditingControls)
            QVERIFY2(!enabled(window, name), name);
        ReportTabsPanel& tabs = *window.ReportTabs();
        QCOMPARE(tabs.cboReports[0]->currentIndex(), 1);
        QVERIFY(tabs.msfgVariable[0]->Rows() > 2);

        // A subject is chosen: its notification is not written, and stops nothing.
        SubjectSearchPanel& search = *window.SubjectSearch();
        search.optFindBy[0]->setChecked(true);
        search.txtPatient->setText(QStringLiteral("QC001"));
        search.cmdFind_Click();
        QCOMPARE(search.txtPatientID->text(), QStringLiteral("QC001"));
        QCOMPARE(state.strCurrentPatientID, QStringLiteral("QC001"));
        QCOMPARE(state.strNotifiedPatientID, QStringLiteral("QC001"));

        // A report is printed.
        auto printer = std::make_shared<RecordingTarget>();
        state.objPrint = printer;
        state.strStartupPrinter = printer->DeviceName();
        window.DateRange()->mskDate[0]->SetText(QStringLiteral("01/01/2024"));
        window.DateRange()->mskDate[1]->SetText(QStringLiteral("06/30/2024"));
        window.ReportRun()->cmdPrint_Click();
        QCOMPARE(printer->countOf(RecordedOp::Kind::EndDoc), 1);
        QVERIFY(printer->countOf(RecordedOp::Kind::NewPage) >= 1);
        QCOMPARE(boxes.count(), 1);

        // Writable again: the next activation of the window gives editing back.
        QVERIFY(folder.makeWritable());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.activateWindow();
        QTRY_VERIFY(enabled(window, "cmdNew"));
        QVERIFY(state.blnCanEditReports);
        for (const char* name : {"cmdSave", "cmdSaveAs", "cmdDelete", "cboTable(0)", "cboVariable(0)", "chkShowIn(0)",
                                 "chkShowIn(3)", "cmdVarAdd(0)"})
            QVERIFY2(enabled(window, name), name);

        // Save writes at once: the definition is stored anew under a new ID.
        const qint32 before = ComboList::ItemData(tabs.cboReports[0], 1);
        tabs.cmdSave->click();
        QCOMPARE(boxes.count(), 1);
        const qint32 after = ComboList::ItemData(tabs.cboReports[0], 1);
        QVERIFY(after > before);
        auto store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        qint32 tab = -1;
        QVERIFY(store->OpenReport(after, false, tab));
        QVERIFY(!store->OpenReport(before, false, tab));
        window.Unload();
        SuiteDatabase::closeAllConnections();
    }
};

CALVEX_TEST(TestReadOnlyDatabaseWindow)
#include "TestReadOnlyDatabaseWindow.moc"
