#include "ReportRunFixture.h"

#include "common/TestMain.h"
#include "output/modPrintReport.h"
#include "platform/VbConversions.h"
#include "run/frmPrintPreview.h"

#include <QTest>

using Kind = RecordedOp::Kind;

// The preview window itself: preparation, pages, view and scroll bars, its
// buttons and its release, over the recording printer's page.
class TestPrintPreviewWindow : public QObject
{
    Q_OBJECT

    std::unique_ptr<ReportRunFixture> f;
    std::unique_ptr<frmPrintPreview> w;
    ReportInfo info;

    // The window over the request of tab 0, prepared, sized and shown.
    bool open(const QSize& size = QSize(920, 760))
    {
        info = ReportInfo();
        f->window.tabs->BuildReportInfo(0, info);
        w = std::make_unique<frmPrintPreview>(f->state);
        w->resize(size);
        if (!w->SetGraphData(f->state.objPrint, info, false))
            return false;
        w->show();
        return true;
    }

    // Page `page` of the same request, prepared apart and drawn on a page
    // picture like the window's.
    QImage reference(int page)
    {
        PreparedReport report;
        if (!PrepareReportPreview(*f->printer, info, false, report))
            return QImage();
        PictureTarget picture(f->printer->ScaleWidth(), f->printer->ScaleHeight(), 100);
        if (!DrawReportPage(picture, report, page))
            return QImage();
        return picture.image().copy();
    }

    QImage shown() const { return w->PagePicture()->image().copy(); }

    // The view's pixels are the page picture's from the view rectangle on, one to one.
    void verifyViewIsOneToOne()
    {
        const frmPrintPreview::ViewRect view = w->ViewRectangle();
        const QImage page = w->PagePicture()->image();
        const QImage picture = w->picGraph->Picture();
        const QPoint offset(RoundToInt32(view.Left / 14.4), RoundToInt32(view.Top / 14.4));
        const QRect common = QRect(QPoint(0, 0), picture.size()).intersected(page.rect().translated(-offset));
        QVERIFY(!common.isEmpty());
        QCOMPARE(picture.copy(common), page.copy(common.translated(offset)));
        // Beyond the page the view is blank.
        if (picture.width() > common.width())
            QCOMPARE(QColor(picture.pixel(picture.width() - 1, 0)), QColor(Qt::white));
    }

private slots:
    void init()
    {
        f = std::make_unique<ReportRunFixture>();
        // Four charts make two graph pages, 100 visits three table pages.
        f->setVariables(4);
        f->store->tableVisits = 100;
    }

    void cleanup()
    {
        w.reset();
        f.reset();
    }

    void captions()
    {
        QVERIFY(open());
        QCOMPARE(w->windowTitle(), QStringLiteral("T4083"));
        QCOMPARE(w->Label1->text(), QStringLiteral("T4084:"));
        QCOMPARE(w->cmdZoom->text(), QStringLiteral("T4085"));
        QCOMPARE(w->cmdPrintSetup->text(), QStringLiteral("T4051"));
        QCOMPARE(w->cmdPrint->text(), QStringLiteral("T4045"));
        QCOMPARE(w->cmdCancel->text(), QStringLiteral("T4008"));
        QVERIFY(w->isModal());
        QVERIFY(w->txtPage->isVisible());
        QVERIFY(w->picGraph->isVisible());
    }

    void activationSetsUpTheViewAndShowsPageOne()
    {
        QVERIFY(open());
        QCOMPARE(w->picGraph->ForeColor(), QColor(0, 0, 0));
        QCOMPARE(w->picGraph->BackColor(), QColor(255, 255, 255));
        QCOMPARE(w->picGraph->font().family(), QStringLiteral("Arial"));
        QCOMPARE(w->txtPage->text(), QStringLiteral("1"));
        QCOMPARE(shown(), reference(1));
        // The view shows the page's top left corner at its own size.
        QCOMPARE(w->ViewRectangle().Left, 0);
        QCOMPARE(w->ViewRectangle().Top, 0);
        QCOMPARE(w->scrVScroll->value(), 0);
        QCOMPARE(w->scrHScroll->value(), 0);
        verifyViewIsOneToOne();
    }

    void theWindowKeepsItsOwnCopyOfTheRequest()
    {
        QVERIFY(open());
        info.PatientName = QStringLiteral("Changed");
        info.Variables.clear();
        QCOMPARE(w->Report().Info.PatientName, QStringLiteral("Adam Q Control"));
        QCOMPARE(w->Report().Info.VariableCount(), 4);
    }

    void twoGraphPagesAndThreeTablePagesAreOneToFive()
    {
        QVERIFY(open());
        QCOMPARE(ReportGraphPageCount(w->Report()), 2);
        QCOMPARE(ReportPageCount(w->Report()), 5);
        const QStringList prepared = f->store->calls;

        QCOMPARE(w->txtPage->text(), QStringLiteral("1"));
        QCOMPARE(shown(), reference(1));
        for (int page = 2; page <= 5; ++page)
        {
            w->cmdNextPage->click();
            QCOMPARE(w->txtPage->text(), QString::number(page));
            QCOMPARE(shown(), reference(page));
        }
        // Past the last page nothing changes.
        w->cmdNextPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("5"));
        QCOMPARE(shown(), reference(5));
        QVERIFY(!w->ShowPage(6));
        QVERIFY(!w->ShowPage(0));

        // Back to the first page; Previous on page 1 does nothing.
        for (int page = 4; page >= 1; --page)
        {
            w->cmdPrevPage->click();
            QCOMPARE(w->txtPage->text(), QString::number(page));
        }
        QCOMPARE(shown(), reference(1));
        w->cmdPrevPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("1"));

        // Paging draws from what was prepared: the store was asked nothing more.
        QCOMPARE(f->store->calls.mid(0, prepared.size()), prepared);
        QCOMPARE(ReportRunFixture::Footers(*f->printer), QStringList());
        QCOMPARE(f->boxes.count(), 0);
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void previousMovesTheNumberEvenWhenThePageCannotBeShown()
    {
        QVERIFY(open());
        w->cmdNextPage->click();
        w->cmdNextPage->click();
        const QImage page3 = shown();
        QCOMPARE(page3, reference(3));

        // A number beyond the report: Previous shows the number before it,
        // although there is no such page; the page shown stays.
        w->txtPage->setText(QStringLiteral("9"));
        w->cmdPrevPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("8"));
        QCOMPARE(shown(), page3);

        // Next changes the number only when it can show the page.
        w->cmdNextPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("8"));
        QCOMPARE(shown(), page3);

        // From a number in range both move as usual.
        w->txtPage->setText(QStringLiteral("4"));
        w->cmdPrevPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("3"));
        QCOMPARE(shown(), page3);
        w->cmdNextPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("4"));
        QCOMPARE(shown(), reference(4));
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void aFailingTableStillPreviewsTheGraphPages()
    {
        f->store->noTable = true;
        QVERIFY(open());
        QCOMPARE(f->store->calls.last(), QStringLiteral("GetTableData si=0"));
        QCOMPARE(ReportPageCount(w->Report()), 2);
        QVERIFY(w->Report().TablePages.isEmpty());
        QCOMPARE(w->txtPage->text(), QStringLiteral("1"));
        w->cmdNextPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("2"));
        w->cmdNextPage->click();
        QCOMPARE(w->txtPage->text(), QStringLiteral("2"));
        QCOMPARE(f->boxes.count(), 0);
    }

    void withoutAChartThereIsNothingToShow()
    {
        f->setVariables(0, 2);
        QVERIFY(!open());
        QCOMPARE(f->store->calls, QStringList());
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void thePreparationShowsTheHourglass()
    {
        QVERIFY(open());
        QCOMPARE(f->store->cursors.size(), 5);
        for (int cursor : f->store->cursors)
            QCOMPARE(cursor, int(Qt::WaitCursor));
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void thePagePictureHasThePrintersPageSize()
    {
        QVERIFY(open());
        QCOMPARE(w->PagePicture()->ScaleWidth(), 12240.0);
        QCOMPARE(w->PagePicture()->ScaleHeight(), 15840.0);
        // 14.4 twips a view pixel: 100 pixels an inch on a screen of scale 1.
        QCOMPARE(w->PagePicture()->dotsPerInch(), 100.0);
        QCOMPARE(w->PagePicture()->image().size(), QSize(850, 1100));
        w.reset();

        // A landscape page.
        f->printer->setPage(15840, 12240);
        QVERIFY(open());
        QCOMPARE(w->PagePicture()->ScaleWidth(), 15840.0);
        QCOMPARE(w->PagePicture()->ScaleHeight(), 12240.0);
        QCOMPARE(w->PagePicture()->image().size(), QSize(1100, 850));
    }

    void scrollRangesAreZeroWhenThePageFits()
    {
        // A page of 4 x 3 inches: 400 x 300 view pixels.
        f->printer->setPage(4 * 1440, 3 * 1440);
        QVERIFY(open());
        QVERIFY(w->picGraph->width() > 400 && w->picGraph->height() > 300);
        QCOMPARE(w->scrHScroll->minimum(), 0);
        QCOMPARE(w->scrHScroll->maximum(), 0);
        QCOMPARE(w->scrVScroll->minimum(), 0);
        QCOMPARE(w->scrVScroll->maximum(), 0);
        verifyViewIsOneToOne();
    }

    void scrollRangesAreWhatThePageExceedsTheView()
    {
        QVERIFY(open(QSize(600, 500)));
        const frmPrintPreview::ViewRect view = w->ViewRectangle();
        QCOMPARE(view.Left, 0);
        QCOMPARE(view.Top, 0);
        QCOMPARE(view.Right, RoundToInt32(w->picGraph->width() * 14.4));
        QCOMPARE(view.Bottom, RoundToInt32(w->picGraph->height() * 14.4));

        const int vertical = int(RoundHalfEven((15840 - view.Bottom) / 14.4));
        const int horizontal = int(RoundHalfEven((12240 - view.Right) / 14.4));
        QVERIFY(vertical > 0 && horizontal > 0);
        QCOMPARE(w->scrVScroll->maximum(), vertical);
        QCOMPARE(w->scrHScroll->maximum(), horizontal);
        QCOMPARE(w->scrVScroll->singleStep(), int(RoundHalfEven(vertical / 10.0)));
        QCOMPARE(w->scrVScroll->pageStep(), int(RoundHalfEven(vertical / 5.0)));
        QCOMPARE(w->scrHScroll->singleStep(), int(RoundHalfEven(horizontal / 10.0)));
        QCOMPARE(w->scrHScroll->pageStep(), int(RoundHalfEven(horizontal / 5.0)));
        // The maxima show the page's bottom right corner at the view's.
        QVERIFY(qAbs(w->picGraph->height() + vertical - 1100) <= 1);
        QVERIFY(qAbs(w->picGraph->width() + horizontal - 850) <= 1);
        verifyViewIsOneToOne();
    }

    void theScrollBarsMoveTheViewOverThePage()
    {
        QVERIFY(open(QSize(600, 500)));
        const frmPrintPreview::ViewRect start = w->ViewRectangle();

        w->scrVScroll->setValue(100);
        frmPrintPreview::ViewRect view = w->ViewRectangle();
        QCOMPARE(view.Top, 1440);
        QCOMPARE(view.Bottom - view.Top, start.Bottom - start.Top);
        QCOMPARE(view.Left, 0);
        verifyViewIsOneToOne();

        w->scrHScroll->setValue(w->scrHScroll->maximum());
        view = w->ViewRectangle();
        QCOMPARE(view.Left, RoundToInt32(w->scrHScroll->maximum() * 14.4));
        QCOMPARE(view.Right - view.Left, start.Right - start.Left);
        QCOMPARE(view.Top, 1440);
        verifyViewIsOneToOne();

        // The next page is shown at the same place.
        w->cmdNextPage->click();
        QCOMPARE(w->ViewRectangle().Top, 1440);
        verifyViewIsOneToOne();
    }

    void aLargerWindowShowsMoreOfThePage()
    {
        QVERIFY(open(QSize(600, 500)));
        const int before = w->scrVScroll->maximum();
        w->resize(700, 650);
        QTRY_COMPARE(w->ViewRectangle().Bottom, RoundToInt32(w->picGraph->height() * 14.4));
        QCOMPARE(w->ViewRectangle().Right, RoundToInt32(w->picGraph->width() * 14.4));
        QVERIFY(w->scrVScroll->maximum() < before);
        QCOMPARE(w->picGraph->Picture().size(), w->picGraph->size());
        verifyViewIsOneToOne();
    }

    void printPrintsThePreparedPagesWithoutANewPreparation()
    {
        QVERIFY(open());
        w->cmdNextPage->click();
        const QStringList prepared = f->store->calls;
        w->cmdPrint->click();
        QCOMPARE(f->store->calls, prepared);
        QCOMPARE(ReportRunFixture::Footers(*f->printer),
                 QStringList({QStringLiteral("T4084 1"), QStringLiteral("T4084 2"), QStringLiteral("T4084 3"),
                              QStringLiteral("T4084 4"), QStringLiteral("T4084 5")}));
        QCOMPARE(f->printer->countOf(Kind::NewPage), 4);
        QCOMPARE(f->printer->countOf(Kind::Cls), 0);
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 1);
        QCOMPARE(f->printer->ops().back().kind, Kind::EndDoc);
        QCOMPARE(f->boxes.count(), 0);
        // The preview stays on its page.
        QVERIFY(w->isVisible());
        QCOMPARE(w->txtPage->text(), QStringLiteral("2"));

        // Printed twice, two jobs of the same pages.
        w->cmdPrint->click();
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 2);
        QCOMPARE(f->store->calls, prepared);
    }

    void printWithoutAPrinterSaysSo()
    {
        QVERIFY(open());
        f->state.objPrint.reset();
        w->cmdPrint->click();
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, QStringLiteral("T4086"));
        QCOMPARE(f->boxes.last().style, 48);
        QCOMPARE(f->boxes.last().title, QStringLiteral("T4087"));
        QVERIFY(f->printer->drawOps().empty());
        QVERIFY(w->isVisible());
    }

    void zoomAndPrintSetupDoNothing()
    {
        QVERIFY(open(QSize(600, 500)));
        w->scrVScroll->setValue(50);
        const frmPrintPreview::ViewRect view = w->ViewRectangle();
        const QImage picture = w->picGraph->Picture().copy();
        const std::shared_ptr<OutputTarget> printer = f->state.objPrint;
        w->cmdZoom->click();
        w->cmdPrintSetup->click();
        QVERIFY(QApplication::activeModalWidget() == w.get());
        QCOMPARE(w->ViewRectangle().Left, view.Left);
        QCOMPARE(w->ViewRectangle().Top, view.Top);
        QCOMPARE(w->ViewRectangle().Right, view.Right);
        QCOMPARE(w->ViewRectangle().Bottom, view.Bottom);
        QCOMPARE(w->picGraph->Picture(), picture);
        QCOMPARE(f->state.objPrint.get(), printer.get());
        QCOMPARE(f->boxes.count(), 0);
        QVERIFY(f->printer->drawOps().empty());
        QVERIFY(w->isVisible());
    }

    void cancelClosesAndReleasesTheData()
    {
        QVERIFY(open());
        QCOMPARE(f->store->handedOut.size(), 5);
        for (const RecordsetPtr& data : f->store->handedOut)
            QVERIFY(data->IsOpen());
        w->cmdCancel->click();
        QVERIFY(!w->isVisible());
        QCOMPARE(w->result(), int(QDialog::Rejected));
        for (const RecordsetPtr& data : f->store->handedOut)
            QVERIFY(!data->IsOpen());
        QVERIFY(w->Report().Graphs.empty());
        QVERIFY(!w->Report().Table.Data);
        QCOMPARE(ReportPageCount(w->Report()), 0);
    }

    void unloadingWithoutShowingReleasesTheData()
    {
        info = ReportInfo();
        f->window.tabs->BuildReportInfo(0, info);
        w = std::make_unique<frmPrintPreview>(f->state);
        QVERIFY(w->SetGraphData(f->state.objPrint, info, false));
        w.reset();
        QCOMPARE(f->store->handedOut.size(), 5);
        for (const RecordsetPtr& data : f->store->handedOut)
            QVERIFY(!data->IsOpen());
    }
};

CALVEX_TEST(TestPrintPreviewWindow)
#include "TestPrintPreviewWindow.moc"
