#include "ShownReportRun.h"

#include "common/TestMain.h"
#include "output/modPrintReport.h"
#include "run/frmPrintPreview.h"

#include <QTest>

#include <memory>

using Kind = RecordedOp::Kind;

// Preview from the main window: the preview window loaded for the run, shown
// modally when it has pages, and unloaded with everything it held.
class TestReportRunPreview : public QObject
{
    Q_OBJECT

    std::unique_ptr<ShownReportRun> f;

    ReportRunPanel& run() { return f->run(); }

    // Runs Preview and tells whether a modal window opened (closed at once).
    // The flag outlives the call: the driver keeps watching afterwards.
    bool previewOpensAWindow()
    {
        const auto shown = std::make_shared<bool>(false);
        f->watch.onNextModal([shown](QDialog* modal) {
            *shown = true;
            modal->close();
        });
        run().cmdPreview_Click();
        QTest::qWait(30);
        return *shown;
    }

private slots:
    void init() { f = std::make_unique<ShownReportRun>(); }

    void cleanup() { f.reset(); }

    void thePreviewIsShownModallyAndUnloadedAfterwards()
    {
        f->setVariables(4);
        f->setDefinitionName(0, QStringLiteral("Spirometry"));
        f->store->tableVisits = 100;
        bool seen = false;
        int pages = 0;
        QStringList numbers;
        bool pointerDefault = false;
        QString definitionName;
        f->watch.onNextModal([&](QDialog* modal) {
            auto* preview = qobject_cast<frmPrintPreview*>(modal);
            seen = preview != nullptr && preview == run().PreviewWindow();
            if (!preview)
                return;
            // The pointer is the default one while the user looks at the pages.
            pointerDefault = QApplication::overrideCursor() == nullptr;
            pages = ReportPageCount(preview->Report());
            numbers.append(preview->txtPage->text());
            for (int i = 0; i < 5; ++i)
            {
                preview->cmdNextPage->click();
                numbers.append(preview->txtPage->text());
            }
            definitionName = preview->m_strReportName;
            preview->cmdCancel->click();
        });
        run().cmdPreview_Click();

        QVERIFY(seen);
        QVERIFY(pointerDefault);
        QCOMPARE(pages, 5);
        QCOMPARE(numbers, QStringList({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                       QStringLiteral("4"), QStringLiteral("5"), QStringLiteral("5")}));
        QCOMPARE(definitionName, QStringLiteral("Spirometry"));
        // Unloaded, with every data set it held closed.
        QVERIFY(run().PreviewWindow() == nullptr);
        QVERIFY(f->window.findChildren<frmPrintPreview*>().isEmpty());
        QCOMPARE(f->store->handedOut.size(), 5);
        for (const RecordsetPtr& data : f->store->handedOut)
            QVERIFY(!data->IsOpen());
        // The preparation ran under the hourglass; the pointer is back.
        for (int cursor : f->store->cursors)
            QCOMPARE(cursor, int(Qt::WaitCursor));
        QVERIFY(QApplication::overrideCursor() == nullptr);
        QCOMPARE(f->boxes.count(), 0);
        QVERIFY(f->printer->drawOps().empty());
    }

    void printFromTheShownPreview()
    {
        f->setVariables(2);
        QStringList prepared;
        f->watch.onNextModal([&](QDialog* modal) {
            auto* preview = qobject_cast<frmPrintPreview*>(modal);
            if (!preview)
                return;
            prepared = f->store->calls;
            preview->cmdPrint->click();
            preview->cmdCancel->click();
        });
        run().cmdPreview_Click();
        QCOMPARE(prepared.size(), 3);
        QCOMPARE(f->store->calls, prepared);
        QCOMPARE(ReportRunFixture::Footers(*f->printer),
                 QStringList({QStringLiteral("T4084 1"), QStringLiteral("T4084 2")}));
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 1);
    }

    void nothingIsShownWithoutAChart()
    {
        f->setVariables(0, 2);
        QVERIFY(!previewOpensAWindow());
        QVERIFY(run().PreviewWindow() == nullptr);
        QVERIFY(f->window.findChildren<frmPrintPreview*>().isEmpty());
        QVERIFY(QApplication::overrideCursor() == nullptr);
        QCOMPARE(f->boxes.count(), 0);
    }

    void aStoreErrorEndsTheRunWithItsReason()
    {
        f->setVariables(3);
        f->store->failOn = QStringLiteral("GetGraphData 3");
        QVERIFY(!previewOpensAWindow());
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, QStringLiteral("The store failed in GetGraphData 3"));
        QCOMPARE(f->boxes.last().style, 16);
        QCOMPARE(f->boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(run().PreviewWindow() == nullptr);
        QVERIFY(f->window.findChildren<frmPrintPreview*>().isEmpty());
        // The two charts fetched before the error are closed with the window.
        QCOMPARE(f->store->handedOut.size(), 2);
        for (const RecordsetPtr& data : f->store->handedOut)
            QVERIFY(!data->IsOpen());
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void aFailingTablePreviewsTheGraphWherePrintStops()
    {
        f->setVariables(4);
        f->store->noTable = true;
        int pages = 0;
        f->watch.onNextModal([&](QDialog* modal) {
            if (auto* preview = qobject_cast<frmPrintPreview*>(modal))
            {
                pages = ReportPageCount(preview->Report());
                preview->cmdCancel->click();
            }
        });
        run().cmdPreview_Click();
        QCOMPARE(pages, 2);

        run().cmdPrint_Click();
        QVERIFY(f->printer->drawOps().empty());
        QCOMPARE(f->boxes.count(), 0);
    }
};

CALVEX_TEST(TestReportRunPreview)
#include "TestReportRunPreview.moc"
