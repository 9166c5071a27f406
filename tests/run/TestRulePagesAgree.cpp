#include "PrinterlessHome.h"
#include "RenderFixture.h"
#include "common/TestMain.h"

#include "output/PictureTarget.h"
#include "output/modPrintGlobals.h"
#include "output/modPrintReport.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "run/PrintJob.h"
#include "run/frmPrintPreview.h"
#include "widgets/RecordingFileDialogService.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPageSize>
#include <QPrinterInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace
{
const QString kToday = QStringLiteral("07/01/2024");
const QString kAllRules = QStringLiteral("1-2s,1-3s,2-2s,R-4s,4-1s,10x,DLCO-12");

QCRuleSet AllRules()
{
    QCRuleSet rules;
    for (const QCRule rule : QCRuleSet::allRules())
        rules.add(rule);
    return rules;
}

// The words of each page: what pdftotext reads, blanks of any length alike.
QList<QStringList> PageWords(const QString& pdfFile)
{
    QList<QStringList> pages;
    for (const QString& page : RenderFixture::pdfPages(pdfFile))
        pages.append(page.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts));
    return pages;
}
} // namespace

// With QC rules on, Print, the preview (its pages one by one, and its own
// Print) and the batch renderer give the same pages: the demo DLCO report of
// QC002 over 2024, whose charts break rules, on the "Print to PDF" printer of
// a machine without printers.
class TestRulePagesAgree : public QObject
{
    Q_OBJECT

    std::unique_ptr<PrinterlessHome> m_home;
    std::unique_ptr<RenderFixture> m_fixture;

    QStringList rendererArguments() const
    {
        return {QStringLiteral("--tab"),     QStringLiteral("PF"),
                QStringLiteral("--report"),  QStringLiteral("DLCO"),
                QStringLiteral("--subject"), QStringLiteral("QC002"),
                QStringLiteral("--from"),    QStringLiteral("01/01/2024"),
                QStringLiteral("--to"),      QStringLiteral("12/31/2024"),
                QStringLiteral("--today"),   kToday,
                QStringLiteral("--rules"),   kAllRules};
    }

    static ReportInfo request()
    {
        return RenderFixture::storedRequest(0, QStringLiteral("DLCO"), QStringLiteral("QC002"),
                                            QStringLiteral("Beth Control"), QStringLiteral("01/01/2024"),
                                            QStringLiteral("12/31/2024"), false);
    }

private slots:
    void initTestCase()
    {
        // No print server answers: the system printer is the PDF printer.
        m_home = std::make_unique<PrinterlessHome>();
        QVERIFY(m_home->isValid());
        QVERIFY(m_home->port() > 0);
        m_fixture = std::make_unique<RenderFixture>();
        Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(12, 0)));
    }

    void cleanupTestCase()
    {
        Clock::pin(QDateTime());
        m_fixture.reset();
        m_home.reset();
    }

    void printThePreviewAndTheRendererGiveTheSamePages()
    {
        QVERIFY(QPrinterInfo::availablePrinters().isEmpty());
        ProgramState state;
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(state);
        QCOMPARE(printer->DeviceName(), QStringLiteral("Print to PDF"));
        // Letter paper, as the renderer's pages, chosen as Print Setup would.
        printer->printer().setPageSize(QPageSize(QPageSize::Letter));
        printer->printerChanged();
        state.objPrint = printer;
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;

        // The renderer: a PDF and the pages as pictures.
        const QString rendered = m_fixture->path(QStringLiteral("rendered.pdf"));
        const QString pictures = m_fixture->path(QStringLiteral("pictures"));
        QCOMPARE(m_fixture->render(rendererArguments() << QStringLiteral("--out") << rendered).exitCode, 0);
        QCOMPARE(m_fixture->render(rendererArguments() << QStringLiteral("--png-dir") << pictures).exitCode, 0);

        // Print, as the main window's Print runs it.
        const QString printed = m_fixture->path(QStringLiteral("printed.pdf"));
        dialogs.queueAnswer(printed);
        QVERIFY(PrintReportJob(*state.objPrint, request(), QStringLiteral("DLCO"), false, AllRules()));

        // The preview: every page shown, as Next shows them, then its Print.
        frmPrintPreview preview(state);
        preview.m_strReportName = QStringLiteral("DLCO");
        QVERIFY(preview.SetGraphData(state.objPrint, request(), false, AllRules()));
        preview.show();
        const qint32 pages = ReportPageCount(preview.Report());
        const qint32 graphPages = ReportGraphPageCount(preview.Report());
        const qint32 before = graphPages + qint32(preview.Report().TablePages.size());
        QCOMPARE(qint32(preview.Report().Violations.Pages.size()), pages - before);
        QVERIFY(pages > before);

        // The same report prepared apart for the same printer, drawn page by
        // page on a picture like the preview's: what Next must show.
        PreparedReport reference;
        QVERIFY(PrepareReportPreview(*printer, request(), false, reference, AllRules()));
        PictureTarget drawn(printer->ScaleWidth(), printer->ScaleHeight(), 100);
        QCOMPARE(preview.txtPage->text(), QStringLiteral("1"));
        for (qint32 page = 1; page <= pages; ++page)
        {
            if (page > 1)
                preview.cmdNextPage->click();
            QCOMPARE(preview.txtPage->text(), QString::number(page));
            QVERIFY(DrawReportPage(drawn, reference, page));
            QCOMPARE(preview.PagePicture()->image(), drawn.image());
            // The chart pages are the renderer's pictures to the pixel. (The
            // table and violation pages are laid out with the printer's
            // metrics in the preview and with the picture's in the renderer,
            // so their columns may stand a pixel apart; their words are
            // compared below, from the preview's own Print.)
            if (page <= graphPages)
            {
                const QImage picture(
                    QDir(pictures).filePath(QStringLiteral("page-%1.png").arg(page, 3, 10, QLatin1Char('0'))));
                QCOMPARE(preview.PagePicture()->image().convertToFormat(QImage::Format_RGB32),
                         picture.convertToFormat(QImage::Format_RGB32));
            }
        }
        QVERIFY(
            QFile::exists(QDir(pictures).filePath(QStringLiteral("page-%1.png").arg(pages, 3, 10, QLatin1Char('0')))));
        // Past the last page nothing changes; the renderer has no page more.
        preview.cmdNextPage->click();
        QCOMPARE(preview.txtPage->text(), QString::number(pages));
        QVERIFY(!QFile::exists(
            QDir(pictures).filePath(QStringLiteral("page-%1.png").arg(pages + 1, 3, 10, QLatin1Char('0')))));

        const QString previewPrinted = m_fixture->path(QStringLiteral("preview-printed.pdf"));
        dialogs.queueAnswer(previewPrinted);
        preview.cmdPrint_Click();
        preview.close();

        // The three PDFs: page for page the same words.
        const QList<QStringList> fromRenderer = PageWords(rendered);
        QCOMPARE(fromRenderer.size(), pages);
        QCOMPARE(PageWords(printed), fromRenderer);
        QCOMPARE(PageWords(previewPrinted), fromRenderer);
        // The violation pages are the last ones, numbered on.
        for (qint32 page = before + 1; page <= pages; ++page)
        {
            const QString words = fromRenderer.at(page - 1).join(QLatin1Char(' '));
            QVERIFY(words.contains(QStringLiteral("QC Rule Violations")));
            QVERIFY(words.endsWith(QStringLiteral("Page ") + QString::number(page)));
        }
        QVERIFY(!fromRenderer.at(before - 1).join(QLatin1Char(' ')).contains(QStringLiteral("QC Rule Violations")));
        QCOMPARE(dialogs.count(), 2);
    }
};

CALVEX_TEST(TestRulePagesAgree)
#include "TestRulePagesAgree.moc"
