#include "RenderFixture.h"
#include "SpooledJob.h"
#include "common/TestMain.h"
#include "reports/PanelDriving.h"

#include "app/StartupPrinter.h"
#include "app/frmMain.h"
#include "output/modPrintGlobals.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/modResource.h"
#include "run/frmPrintPreview.h"
#include "widgets/RecordingFileDialogService.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace PanelDriving;

// The whole road through the real main window on a demo database, with the
// system printer a queue of a CUPS server: choose a definition, find the QC
// subject, type the dates, preview every page, print from the preview; the
// pages that come out of the queue are the pages calvex-qc-render writes for
// the same request.
class TestEndToEnd : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    // What a user does before Preview or Print: a demo definition of the PF
    // tab, the demo QC subject found by its ID, and two years of weekly
    // visits (two graph pages and several table pages) typed into the boxes.
    static void enterRequest(frmMain& window, RecordingMessageService& boxes)
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        ReportTabsPanel& tabs = *window.ReportTabs();
        QCOMPARE(tabs.CurrentTab(), 0);
        QVERIFY(choose(tabs.cboReports[0], QStringLiteral("Spirometry")));
        QVERIFY(tabs.msfgVariable[0]->Rows() > 2);

        SubjectSearchPanel& search = *window.SubjectSearch();
        click(search.optFindBy[0]);
        search.txtPatient->setFocus();
        QTest::keyClicks(search.txtPatient, QStringLiteral("QC001"));
        click(search.cmdFind);
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(search.txtPatientID->text(), QStringLiteral("QC001"));
        QCOMPARE(search.txtPatientName->text(), QStringLiteral("Adam Q Control"));

        DateRangePanel& dates = *window.DateRange();
        for (const auto& [box, typed] : {std::pair{dates.mskDate[0], QStringLiteral("01012023")},
                                         std::pair{dates.mskDate[1], QStringLiteral("12312024")}})
        {
            box->setFocus();
            box->selectAll();
            QTest::keyClicks(box, typed);
        }
        QCOMPARE(dates.mskDate[0]->Text(), QStringLiteral("01/01/2023"));
        QCOMPARE(dates.mskDate[1]->Text(), QStringLiteral("12/31/2024"));
    }

    // The page numbers 1..count as texts.
    static QStringList numbersUpTo(qsizetype count)
    {
        QStringList numbers;
        for (qsizetype p = 1; p <= count; ++p)
            numbers.append(QString::number(p));
        return numbers;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(!SpooledJob::queueName().isEmpty(), "run under tests/cups/run-cups.sh");
        m_fixture = std::make_unique<RenderFixture>();
        ScopedRegistryFile& registry = m_fixture->registry();
        // The window's start runs the database tool built beside the tests.
        registry.setValue(QStringLiteral("Executable Path"),
                          QFileInfo(RenderFixture::buildProgram(QStringLiteral("NorrixDBQuery"))).absolutePath());
        registry.setValue(QStringLiteral("Default Auto Logout Minutes"), 0);
        // Both print the same date in the page header.
        Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(12, 0)));
    }

    void cleanupTestCase()
    {
        Clock::pin(QDateTime());
        m_fixture.reset();
    }

    void previewEveryPageThenPrintFromThePreview()
    {
        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        ProgramState state;
        frmMain window(state);
        window.Form_Load();
        QCOMPARE(boxes.count(), 0);
        QVERIFY(state.blnAppReady);
        QVERIFY(state.objPrint);
        QCOMPARE(state.objPrint->DeviceName(), SpooledJob::queueName());
        enterRequest(window, boxes);
        if (QTest::currentTestFailed())
            return;
        const QString subjectName = window.SubjectSearch()->txtPatientName->text();

        // Preview: page through until Next stays, then Print and close.
        QStringList shown;
        int nextStays = 0;
        QString spooledPdf;
        QString spoolError;
        bool previewed = false;
        whenModal([&](QWidget* modal) {
            auto* preview = qobject_cast<frmPrintPreview*>(modal);
            if (!preview)
                return;
            previewed = true;
            shown.append(preview->txtPage->text());
            for (int guard = 0; guard < 100; ++guard)
            {
                click(preview->cmdNextPage);
                if (preview->txtPage->text() == shown.last())
                {
                    ++nextStays;
                    break;
                }
                shown.append(preview->txtPage->text());
            }
            SpooledJob job;
            click(preview->cmdPrint);
            spooledPdf = job.waitForPdf(m_fixture->path(QString()));
            spoolError = job.error();
            click(preview->cmdCancel);
        });
        click(window.ReportRun()->cmdPreview);

        QVERIFY2(previewed, "the preview window did not open");
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(dialogs.count(), 0); // a real printer asks for no file
        QCOMPARE(nextStays, 1);
        QVERIFY2(!spooledPdf.isEmpty(), qPrintable(spoolError));
        const QStringList printed = RenderFixture::pdfPages(spooledPdf);
        QCOMPARE(shown, numbersUpTo(printed.size())); // every page was shown, in order
        QVERIFY(printed.size() >= 4);

        // The batch renderer's pages of the same request.
        const QString rendered = m_fixture->path(QStringLiteral("rendered.pdf"));
        const RenderFixture::Result result = m_fixture->render(
            {QStringLiteral("--tab"), QStringLiteral("PF"), QStringLiteral("--report"), QStringLiteral("Spirometry"),
             QStringLiteral("--subject"), QStringLiteral("QC001"), QStringLiteral("--from"),
             QStringLiteral("01/01/2023"), QStringLiteral("--to"), QStringLiteral("12/31/2024"),
             QStringLiteral("--today"), QStringLiteral("07/01/2024"), QStringLiteral("--out"), rendered});
        QCOMPARE(result.exitCode, 0);
        const QStringList expected = RenderFixture::pdfPages(rendered);
        QCOMPARE(printed.size(), expected.size());
        for (int p = 0; p < printed.size(); ++p)
        {
            QVERIFY2(printed.at(p).contains(subjectName), qPrintable(printed.at(p)));
            QCOMPARE(printed.at(p), expected.at(p));
        }
        window.Unload();
    }

    void printOnThePdfPrinterAsksWhereAndSaysWhere()
    {
        // A machine without printers: the start-up finds the "Print to PDF" printer.
        const auto pdfPrinter =
            std::make_shared<PrinterTarget>(CreatePdfPrinter(m_fixture->path(QStringLiteral("QC Report.pdf"))));

        RecordingMessageService boxes;
        RecordingFileDialogService dialogs;
        const QString chosen = m_fixture->path(QStringLiteral("saved report.pdf"));
        dialogs.queueAnswer(chosen);
        ProgramState state;
        state.printerSource = [pdfPrinter] { return pdfPrinter; };
        frmMain window(state);
        window.Form_Load();
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(state.objPrint.get(), pdfPrinter.get());
        enterRequest(window, boxes);
        if (QTest::currentTestFailed())
            return;

        click(window.ReportRun()->cmdPrint);

        QCOMPARE(dialogs.count(), 1);
        QCOMPARE(QFileInfo(dialogs.last().proposedPath).fileName(),
                 QStringLiteral("QC001 Adam Q Control, 01-01-2023 to 12-31-2024, Spirometry.pdf"));
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().style, 64);
        QCOMPARE(boxes.last().text, GetResourceText(4127) + QLatin1Char('\n') + chosen);
        const QStringList pages = RenderFixture::pdfPages(chosen);
        QVERIFY(pages.size() >= 4);
        const QRegularExpression footer(GetResourceText(4084) + QStringLiteral(" (\\d+)\\s*$"),
                                        QRegularExpression::MultilineOption);
        QStringList numbers;
        for (const QString& page : pages)
        {
            QVERIFY(page.contains(QStringLiteral("Adam Q Control")));
            numbers.append(footer.match(page).captured(1));
        }
        QCOMPARE(numbers, numbersUpTo(pages.size()));
        // Only the file chosen: not the printer's own default file.
        QVERIFY(!QFileInfo::exists(m_fixture->path(QStringLiteral("QC Report.pdf"))));
        window.Unload();
    }
};

CALVEX_TEST(TestEndToEnd)
#include "TestEndToEnd.moc"
