#include "EditingControls.h"
#include "MainWindowFixture.h"

#include "common/TestMain.h"
#include "widgets/ComboList.h"

#include <QSignalSpy>

class TestMainWindowState : public QObject
{
    Q_OBJECT

private slots:
    void withoutEditRightTheEditingControlsAreDisabled()
    {
        MainWindowFixture f;
        f.engine->rights = {CalcEngine::RightRunReports};
        f.window->Form_Load();
        QVERIFY(!f.state.exitRequested);
        for (const char* name : kEditingControls)
            QVERIFY2(!f.control<QWidget>(QLatin1String(name))->isEnabled(), name);
        for (const char* name : {"cboReports(0)", "cboReports(1)", "cmdPreview", "cmdPrint", "cmdPrintSetup", "cmdFind",
                                 "msfgVariable(0)", "cmdHelp", "cmdCancel"})
            QVERIFY2(f.control<QWidget>(QLatin1String(name))->isEnabled(), name);

        // A definition can still be chosen; the editing controls stay disabled.
        ComboList::SetListIndex(f.tabs().cboReports[0], 2);
        QCOMPARE(f.tabs().msfgVariable[0]->Rows(), 3);
        QCOMPARE(f.tabs().msfgVariable[0]->TextMatrix(1, 1), QStringLiteral("PEF"));
        for (const char* name : kEditingControls)
            QVERIFY2(!f.control<QWidget>(QLatin1String(name))->isEnabled(), name);
    }

    void withEditRightTheEditingControlsAreEnabled()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        for (const char* name : kEditingControls)
            QVERIFY2(f.control<QWidget>(QLatin1String(name))->isEnabled(), name);
    }

    void confirmDiscardAsksOnlyForModifiedTabs()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        QVERIFY(f.window->ConfirmDiscardChanges(1, QStringLiteral("title")));
        QCOMPARE(f.boxes.count(), 0);

        f.window->SetReportDirty(1, true);
        QVERIFY(f.window->IsModified(1));
        f.boxes.queueAnswer(MsgAnswer::No);
        QVERIFY(!f.window->ConfirmDiscardChanges(1, QStringLiteral("title")));
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.last().style, 36);
        QCOMPARE(f.boxes.last().title, QStringLiteral("title"));
        QVERIFY(f.window->IsModified(1));

        f.boxes.queueAnswer(MsgAnswer::Yes);
        QVERIFY(f.window->ConfirmDiscardChanges(1, QStringLiteral("title")));
        QVERIFY(!f.window->IsModified(1));
        QVERIFY(!f.window->IsModified(0));
    }

    void confirmDiscardRefusesATabBeyondTheTwo()
    {
        MainWindowFixture f;
        try
        {
            f.window->ConfirmDiscardChanges(2, QString());
            QFAIL("tab 2 does not exist");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 9);
        }
    }

    void changesWhileLoadingNeverCount()
    {
        MainWindowFixture f;
        f.window->SetLoading(true);
        f.window->SetReportDirty(0, true);
        QVERIFY(!f.window->IsModified(0));
        f.window->SetLoading(false);
        f.window->SetReportDirty(0, true);
        QVERIFY(f.window->IsModified(0));
    }

    void newResetsTheDateRange()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.control<MaskEdBox>(QStringLiteral("mskDate(0)"))->SetText(QStringLiteral("01/02/2024"));
        f.control<MaskEdBox>(QStringLiteral("mskDate(1)"))->SetText(QStringLiteral("03/04/2024"));
        f.tabs().cmdNew->click();
        QCOMPARE(f.window->FromDateText(), QString());
        QCOMPARE(f.window->ToDateText(), QStringLiteral("06/15/2024"));
        QCOMPARE(f.tabs().msfgVariable[0]->Rows(), 2);
        QCOMPARE(f.tabs().cboReports[0]->currentIndex(), 0);
    }

    void windowIsComposedOfItsPanels()
    {
        MainWindowFixture f;
        for (const char* name : {"Label1(0)",      "txtPatient",         "optFindBy(0)",    "optFindBy(1)",
                                 "cmdFind",        "fraSelectedPatient", "Label1(10)",      "Label1(11)",
                                 "txtPatientID",   "txtPatientName",     "fraDateRange",    "Label1(2)",
                                 "Label1(3)",      "mskDate(0)",         "mskDate(1)",      "cmdDate(0)",
                                 "cmdDate(1)",     "sstabReportTabs",    "cboReports(0)",   "cboReports(1)",
                                 "cboVarUnits(0)", "cboVarDecPlaces(1)", "cboVarTest(1)",   "lblTotalFor(0)",
                                 "lblTotalFor(3)", "msfgVariable(0)",    "msfgVariable(1)", "cmdPrintSetup",
                                 "cmdPreview",     "cmdPrint",           "cmdHelp",         "cmdCancel",
                                 "ActivityTimer"})
            QVERIFY2(f.window->findChild<QObject*>(QLatin1String(name)), name);
    }

    void tabKeyWalksTheWindowTopToBottom()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
        QWidget* first = f.control<QWidget>(QStringLiteral("txtPatient"));
        first->setFocus();
        QStringList order;
        QWidget* w = first;
        for (int i = 0; i < 40; ++i)
        {
            // The option buttons are one stop: Tab enters the group once.
            order.append(w->objectName().startsWith(QLatin1String("optFindBy")) ? QStringLiteral("optFindBy")
                                                                                : w->objectName());
            QTest::keyClick(w, Qt::Key_Tab);
            w = QApplication::focusWidget();
            if (!w || w == first)
                break;
        }
        QCOMPARE(order, QStringList({QStringLiteral("txtPatient"),      QStringLiteral("optFindBy"),
                                     QStringLiteral("cmdFind"),         QStringLiteral("mskDate(0)"),
                                     QStringLiteral("cmdDate(0)"),      QStringLiteral("mskDate(1)"),
                                     QStringLiteral("cmdDate(1)"),      QStringLiteral("qt_tabwidget_tabbar"),
                                     QStringLiteral("cboReports(0)"),   QStringLiteral("cboTable(0)"),
                                     QStringLiteral("cboVariable(0)"),  QStringLiteral("chkShowIn(0)"),
                                     QStringLiteral("chkShowIn(1)"),    QStringLiteral("cmdVarAdd(0)"),
                                     QStringLiteral("cmdVarUpdate(0)"), QStringLiteral("cmdVarRemove(0)"),
                                     QStringLiteral("msfgVariable(0)"), QStringLiteral("cmdNew"),
                                     QStringLiteral("cmdSave"),         QStringLiteral("cmdSaveAs"),
                                     QStringLiteral("cmdDelete"),       QStringLiteral("cmdPrintSetup"),
                                     QStringLiteral("cmdPreview"),      QStringLiteral("cmdPrint"),
                                     QStringLiteral("cmdHelp"),         QStringLiteral("cmdCancel")}));
    }

    void acceleratorsComeFromTheCaptions()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
        f.window->activateWindow();
        QTRY_VERIFY(f.window->isActiveWindow());
        // "Pre&view" of the string table's caption: Alt+V presses Preview.
        f.window->ReportRun()->cmdPreview->setText(QStringLiteral("Pre&view"));
        QSignalSpy preview(f.window->ReportRun()->cmdPreview, &QPushButton::clicked);
        QTest::keyClick(f.window->windowHandle(), Qt::Key_V, Qt::AltModifier);
        QTRY_COMPARE(preview.count(), 1); // a mnemonic presses the button visibly, then clicks
        // "Show In &Graph" on the first tab.
        QCheckBox* graph = f.tabs().chkShowIn[0];
        const bool before = graph->isChecked();
        QTest::keyClick(f.window->windowHandle(), Qt::Key_G, Qt::AltModifier);
        QTRY_COMPARE(graph->isChecked(), !before);
    }

    void windowGrowsWithTheGrid()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.window->resize(900, 640);
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
        FlexGrid* grid = f.tabs().msfgVariable[0];
        const QSize before = grid->size();
        f.window->resize(1200, 900);
        QTRY_VERIFY(grid->height() > before.height() + 200);
        QVERIFY(grid->width() > before.width() + 250);
        // The visible columns follow the new width.
        int visible = 0;
        for (int c = 0; c < 5; ++c)
            visible += grid->columnWidth(c);
        QVERIFY(visible <= grid->viewport()->width());
        QVERIFY(visible >= grid->viewport()->width() - 12);
    }
};

CALVEX_TEST(TestMainWindowState)
#include "TestMainWindowState.moc"
