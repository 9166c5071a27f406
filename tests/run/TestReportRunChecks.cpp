#include "ReportRunFixture.h"

#include "common/TestMain.h"

#include <QTest>

// What a run checks before it prepares anything: printing possible, a
// printer, a subject, a date range, variables within their limits; and what
// it takes from the window: the request's names and the unit setting.
class TestReportRunChecks : public QObject
{
    Q_OBJECT

    std::unique_ptr<ReportRunFixture> f;

    ReportRunPanel& run() { return *f->window.run; }

    // Both run buttons, each on a fresh printer log.
    void runBoth(const std::function<void()>& check)
    {
        f->printer->clearOps();
        run().cmdPreview_Click();
        check();
        f->printer->clearOps();
        run().cmdPrint_Click();
        check();
    }

    void expectRefused(const QString& text, QWidget* focus)
    {
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, text);
        QCOMPARE(f->boxes.last().style, 48);
        QCOMPARE(f->boxes.last().title, QStringLiteral("T4052"));
        if (focus)
            QCOMPARE(QApplication::focusWidget(), focus);
        QCOMPARE(f->store->calls, QStringList());
        QVERIFY(f->printer->ops().empty());
        QVERIFY(QApplication::overrideCursor() == nullptr);
        QVERIFY(run().PreviewWindow() == nullptr);
        f->boxes.clear();
    }

    // Moves the focus somewhere no check sends it.
    void parkFocus()
    {
        f->window.run->cmdPreview->setFocus();
        QCOMPARE(QApplication::focusWidget(), f->window.run->cmdPreview);
    }

    // Print with the rows of tab 0; the store's log of names of the table call.
    QString namesReachingTheStore(const QList<GridRow>& rows)
    {
        f->setRows(0, rows);
        f->store->calls.clear();
        f->store->names.clear();
        run().cmdPrint_Click();
        const qsizetype table = f->store->calls.indexOf(QStringLiteral("GetTableData si=0"));
        return table < 0 ? QString() : f->store->names.at(table);
    }

private slots:
    void init()
    {
        f = std::make_unique<ReportRunFixture>();
        f->setVariables(2);
        f->window.show();
        f->window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f->window));
    }

    void cleanup() { f.reset(); }

    void nothingRunsWhilePrintingIsImpossible()
    {
        f->state.blnAppReady = false;
        run().cmdPreview_Click();
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, QStringLiteral("T4118"));
        QCOMPARE(f->boxes.last().style, 0);

        run().cmdPrint_Click();
        QCOMPARE(f->boxes.count(), 2);
        QCOMPARE(f->boxes.last().text, QStringLiteral("T4117"));
        QCOMPARE(f->boxes.last().style, 0);

        const std::shared_ptr<OutputTarget> before = f->state.objPrint;
        run().cmdPrintSetup_Click();
        QCOMPARE(f->boxes.count(), 3);
        QCOMPARE(f->boxes.last().text, QStringLiteral("T4117"));
        QCOMPARE(f->boxes.last().style, 0);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(f->state.objPrint.get(), before.get());

        QCOMPARE(f->store->calls, QStringList());
        QVERIFY(f->printer->ops().empty());
    }

    void printWithoutAPrinterSendsTheUserToPrintSetup()
    {
        f->state.objPrint.reset();
        // Comes before the request's checks: no subject is chosen either.
        f->state.strCurrentPatientID.clear();
        parkFocus();
        run().cmdPrint_Click();
        expectRefused(QStringLiteral("T4064"), run().cmdPrintSetup);
    }

    void aSubjectIsCheckedFirst()
    {
        f->state.strCurrentPatientID.clear();
        // The dates and the variables are wrong too; only the first check speaks.
        f->window.dates->mskDate[1]->SetText(QString());
        f->setRows(0, {});
        QVERIFY(!run().IsPatientSelected());
        runBoth([this] {
            expectRefused(QStringLiteral("T4075"), f->window.search->txtPatient);
            parkFocus();
        });
        QVERIFY(!run().ValidateReportRequest(0));

        f->state.strCurrentPatientID = QStringLiteral("X");
        QVERIFY(run().IsPatientSelected());
    }

    void theDateRangeIsCheckedSecond()
    {
        f->setRows(0, {});
        struct Range
        {
            QString from, to;
        };
        const QList<Range> refused{{QStringLiteral("01/01/2024"), QString()},
                                   {QStringLiteral("01/01/2024"), QStringLiteral("__/__/____")},
                                   {QStringLiteral("06/30/2024"), QStringLiteral("06/30/2024")},
                                   {QStringLiteral("07/01/2024"), QStringLiteral("06/30/2024")},
                                   {QStringLiteral("02/30/2024"), QStringLiteral("06/30/2024")}};
        for (const Range& range : refused)
        {
            f->window.dates->mskDate[0]->SetText(range.from);
            f->window.dates->mskDate[1]->SetText(range.to);
            parkFocus();
            runBoth([this] {
                expectRefused(QStringLiteral("T4076"), f->window.dates->mskDate[0]);
                parkFocus();
            });
        }
    }

    void anOpenStartGoesAhead()
    {
        f->window.dates->mskDate[0]->SetText(QString());
        f->window.dates->mskDate[1]->SetText(QStringLiteral("06/30/2024"));
        QVERIFY(run().ValidateReportRequest(0));
        run().cmdPrint_Click();
        QCOMPARE(f->boxes.count(), 0);
        QVERIFY(f->store->calls.contains(QStringLiteral("GetTableData si=0")));
        // The period of the header has no start.
        QVERIFY(f->printer->texts().contains(QStringLiteral("T4040:   - 06/30/2024")));
        QCOMPARE(f->printer->countOf(RecordedOp::Kind::EndDoc), 1);
    }

    void theDayAfterTheStartIsTheShortestRange()
    {
        f->window.dates->mskDate[0]->SetText(QStringLiteral("06/29/2024"));
        f->window.dates->mskDate[1]->SetText(QStringLiteral("06/30/2024"));
        QVERIFY(run().ValidateReportRequest(0));
        QCOMPARE(f->boxes.count(), 0);
    }

    void aVariableIsCheckedThird()
    {
        // No data row at all.
        f->setRows(0, {});
        parkFocus();
        runBoth([this] {
            expectRefused(QStringLiteral("T4077"), f->window.tabs->cboVariable[0]);
            parkFocus();
        });

        // Rows, but none in the graph or the table.
        f->setRows(0, {{QStringLiteral("Pre"), QStringLiteral("FVC"), false, false},
                       {QStringLiteral("Pre"), QStringLiteral("FEV1"), false, false}});
        runBoth([this] {
            expectRefused(QStringLiteral("T4077"), f->window.tabs->cboVariable[0]);
            parkFocus();
        });

        // The focus goes to the variable list of the tab shown.
        f->window.tabs->SetCurrentTab(1);
        f->setRows(1, {});
        run().cmdPrint_Click();
        expectRefused(QStringLiteral("T4077"), f->window.tabs->cboVariable[1]);
    }

    void nineInTheGraphAndNineInTheTableAreAccepted()
    {
        f->setVariables(9);
        QVERIFY(run().ValidateReportRequest(0));
        QCOMPARE(f->boxes.count(), 0);

        // Nine rows for the graph only and nine for the table only: eighteen rows, nine of each kind.

        QList<GridRow> rows;
        for (int i = 1; i <= 9; ++i)
            rows.append({QStringLiteral("Pre"), QStringLiteral("G%1").arg(i), true, false});
        for (int i = 1; i <= 9; ++i)
            rows.append({QStringLiteral("Pre"), QStringLiteral("T%1").arg(i), false, true});
        f->setRows(0, rows);
        QVERIFY(run().ValidateReportRequest(0));
        QCOMPARE(f->boxes.count(), 0);
        run().cmdPrint_Click();
        QCOMPARE(f->boxes.count(), 0);
        QCOMPARE(f->printer->countOf(RecordedOp::Kind::EndDoc), 1);
    }

    void aTenthVariableOfAKindIsRefused()
    {
        QList<GridRow> rows;
        for (int i = 1; i <= 9; ++i)
            rows.append({QStringLiteral("Pre"), QStringLiteral("V%1").arg(i), true, true});

        // A tenth for the graph.
        f->setRows(0, rows + QList<GridRow>{{QStringLiteral("Pre"), QStringLiteral("G10"), true, false}});
        parkFocus();
        runBoth([this] { expectRefused(QStringLiteral("T4078: 9"), f->window.run->cmdPreview); });

        // A tenth for the table.
        f->setRows(0, rows + QList<GridRow>{{QStringLiteral("Pre"), QStringLiteral("T10"), false, true}});
        runBoth([this] { expectRefused(QStringLiteral("T4079: 9"), f->window.run->cmdPreview); });

        // Ten of both: the graph's limit speaks first, alone.
        f->setRows(0, rows + QList<GridRow>{{QStringLiteral("Pre"), QStringLiteral("B10"), true, true}});
        runBoth([this] { expectRefused(QStringLiteral("T4078: 9"), f->window.run->cmdPreview); });
    }

    void repeatedNamesReachTheStoreMadeUnique()
    {
        const QString names = namesReachingTheStore({{QStringLiteral("Pre"), QStringLiteral("X"), true, true},
                                                     {QStringLiteral("Post"), QStringLiteral("x"), true, true},
                                                     {QStringLiteral("Pre"), QStringLiteral("X"), true, true}});
        QCOMPARE(names, QStringLiteral("X|x (1)|X (2)"));
        // The graph's store calls carry the same request.
        QCOMPARE(f->store->names.first(), names);
        QCOMPARE(f->boxes.count(), 0);
    }

    void aRowWithNeitherFlagStillTravelsWithTheRequest()
    {
        const QString names = namesReachingTheStore({{QStringLiteral("Pre"), QStringLiteral("FVC"), true, true},
                                                     {QStringLiteral("Pre"), QStringLiteral("FEV1"), false, false},
                                                     {QStringLiteral("Pre"), QStringLiteral("PEF"), false, true}});
        QCOMPARE(names, QStringLiteral("FVC|FEV1|PEF"));
        // Only the charted variable is asked for its chart.
        QCOMPARE(f->store->calls,
                 QStringList({QStringLiteral("GetGraphData 1 si=0"), QStringLiteral("GetTableData si=0")}));
    }

    void theUnitSettingIsReadAtEveryRun()
    {
        struct Setting
        {
            QVariant value; // invalid = the value is absent
            bool si;
        };
        const QList<Setting> settings{{QVariant(), false},         {QStringLiteral("0"), false},
                                      {QStringLiteral("1"), true}, {QStringLiteral("2"), false},
                                      {QStringLiteral(""), false}, {QStringLiteral("1"), true}};
        for (const Setting& setting : settings)
        {
            f->registry.setValue(QStringLiteral("SI Unit"), setting.value);
            const QString suffix = setting.si ? QStringLiteral("si=1") : QStringLiteral("si=0");

            // Print.
            f->state.blnSIUnits = !setting.si;
            f->store->calls.clear();
            run().cmdPrint_Click();
            QCOMPARE(f->state.blnSIUnits, setting.si);
            QCOMPARE(f->store->calls.size(), 3);
            for (const QString& call : f->store->calls)
                QVERIFY2(call.endsWith(suffix), qPrintable(call));

            // Preview, stopped by a store error at the second chart so that no window opens.
            f->state.blnSIUnits = !setting.si;
            f->store->calls.clear();
            f->store->failOn = QStringLiteral("GetGraphData 2");
            run().cmdPreview_Click();
            f->store->failOn.clear();
            QCOMPARE(f->state.blnSIUnits, setting.si);
            QCOMPARE(f->store->calls.size(), 2);
            for (const QString& call : f->store->calls)
                QVERIFY2(call.endsWith(suffix), qPrintable(call));
            QCOMPARE(f->boxes.count(), 1);
            f->boxes.clear();
        }
    }
};

CALVEX_TEST(TestReportRunChecks)
#include "TestReportRunChecks.moc"
