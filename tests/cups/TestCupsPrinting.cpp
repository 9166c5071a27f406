#include "RenderFixture.h"
#include "SpooledJob.h"
#include "common/TestMain.h"

#include "output/modPrintGlobals.h"
#include "output/modPrintReport.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/modResource.h"
#include "run/PrintJob.h"
#include "widgets/RecordingFileDialogService.h"

#include <QPrinterInfo>
#include <QRegularExpression>
#include <QTest>

#include <memory>

namespace
{
// The page numbers of a page's footer ("Page 3"), at the end of a line of
// pdftotext's layout, where the footer's right edge puts them.
QList<int> PageNumbers(const QString& page)
{
    static const QRegularExpression footer(QStringLiteral("(?:^|\\s)") +
                                               QRegularExpression::escape(GetResourceText(4084)) +
                                               QStringLiteral(" (\\d+)\\s*$"),
                                           QRegularExpression::MultilineOption);
    QList<int> numbers;
    for (QRegularExpressionMatchIterator it = footer.globalMatch(page); it.hasNext();)
        numbers.append(it.next().captured(1).toInt());
    return numbers;
}
} // namespace

// Print on a real print queue: the report goes through the program's print
// path to the system printer, which is a queue of a CUPS server, and the PDF
// that comes out of the queue holds every page in the program's order.
class TestCupsPrinting : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

private slots:
    void initTestCase()
    {
        QVERIFY2(!SpooledJob::queueName().isEmpty(), "run under tests/cups/run-cups.sh");
        m_fixture = std::make_unique<RenderFixture>();
        Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(12, 0)));
    }

    void cleanupTestCase()
    {
        Clock::pin(QDateTime());
        m_fixture.reset();
    }

    void theSystemPrinterIsTheQueue()
    {
        QCOMPARE(QPrinterInfo::defaultPrinter().printerName(), SpooledJob::queueName());
        ProgramState state;
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(state);
        QCOMPARE(printer->DeviceName(), SpooledJob::queueName());
        QVERIFY(printer->printer().outputFormat() == QPrinter::NativeFormat);
        QVERIFY(!PrintJob::IsPdfPrinter(*printer));
        // The queue's own paper (Letter, as run-cups.sh sets it up), not Qt's A4.
        QCOMPARE(printer->printer().pageLayout().pageSize().id(), QPageSize::Letter);
        QCOMPARE(printer->ScaleWidth(), 8.5 * 1440);
    }

    void printedPagesComeOutOfTheQueueGraphsFirst()
    {
        const ReportInfo info = RenderFixture::storedRequest(
            0, QStringLiteral("Spirometry"), QStringLiteral("QC001"), QStringLiteral("Adam Q Control"),
            QStringLiteral("01/01/2023"), QStringLiteral("12/31/2024"), false);
        ProgramState state;
        const std::shared_ptr<PrinterTarget> printer = SystemPrinter(state);

        // The pages the program lays out for this printer.
        PreparedReport expected;
        QVERIFY(PrepareReport(info, false, expected));
        SetUpReportPages(*printer, expected);
        const qint32 graphPages = ReportGraphPageCount(expected);
        const qint32 allPages = ReportPageCount(expected);
        QCOMPARE(graphPages, 2);
        QVERIFY2(allPages >= graphPages + 2, "the test wants more than one table page");

        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        SpooledJob job;
        QVERIFY(PrintReportJob(*printer, info, QStringLiteral("Spirometry"), false));
        // A real printer asks nothing and tells nothing.
        QCOMPARE(dialogs.count(), 0);
        QCOMPARE(boxes.count(), 0);

        const QString pdf = job.waitForPdf(m_fixture->path(QString()));
        QVERIFY2(!pdf.isEmpty(), qPrintable(job.error()));
        const QStringList pages = RenderFixture::pdfPages(pdf);
        QCOMPARE(pages.size(), allPages);

        const QString meanLabel = GetResourceText(4108) + QStringLiteral(": ");
        for (int p = 0; p < pages.size(); ++p)
        {
            const QString& page = pages.at(p);
            // Numbered on through the report: graph pages 1..G, table pages G+1..N.
            QCOMPARE(PageNumbers(page), QList<int>{p + 1});
            const bool graphPage = p < graphPages;
            QVERIFY2(page.contains(meanLabel) == graphPage, qPrintable(page));
            QVERIFY2(page.contains(QStringLiteral("Visit Date")) == !graphPage, qPrintable(page));
        }

        // The same request as the batch renderer writes it: the same pages.
        const QString rendered = m_fixture->path(QStringLiteral("rendered.pdf"));
        const RenderFixture::Result result = m_fixture->render(
            {QStringLiteral("--tab"), QStringLiteral("PF"), QStringLiteral("--report"), QStringLiteral("Spirometry"),
             QStringLiteral("--subject"), info.PatientID, QStringLiteral("--from"), info.FromDate,
             QStringLiteral("--to"), info.ToDate, QStringLiteral("--today"), QStringLiteral("07/01/2024"),
             QStringLiteral("--out"), rendered});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(pages, RenderFixture::pdfPages(rendered));
    }
};

CALVEX_TEST(TestCupsPrinting)
#include "TestCupsPrinting.moc"
