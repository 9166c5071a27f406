#include "PdfTools.h"
#include "common/TestMain.h"
#include "output/PdfFileTarget.h"
#include "output/PrinterTarget.h"
#include "platform/FileWriteError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPrinter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
// Two pages of a small report: a header, a chart's lines and marks, a table's cells.
void DrawTwoPages(OutputTarget& target)
{
    for (int page = 0; page < 2; ++page)
    {
        if (page > 0)
            target.NewPage();
        target.SetFontBold(true);
        target.SetFontSize(14);
        target.SetCurrentX(720);
        target.SetCurrentY(720);
        target.Print(QStringLiteral("Levey-Jennings QC Report, page %1").arg(page + 1));
        target.SetFontBold(false);
        target.SetFontSize(10);
        target.SetDrawWidth(4);
        target.Line(1440, 2000, 10800, 6000, QColor(0, 0, 0), true);
        target.SetDrawWidth(1);
        target.SetDrawStyle(2);
        target.Line(1440, 4000, 10800, 4000);
        target.SetDrawStyle(0);
        target.SetDrawWidth(5);
        for (int i = 0; i < 40; ++i)
        {
            const double x = 1700 + i * 220.5;
            const double y = 3000 + (i % 9) * 250.25;
            target.PSet(x, y, QColor(0, 0, 0));
            target.Circle(x, y, 60, QColor(0, 0, 0));
            target.Line(x - 60, y, x + 60, y);
            target.Line(x, y - 60, x, y + 60);
        }
        target.SetDrawWidth(1);
        for (int row = 0; row < 20; ++row)
        {
            for (int column = 0; column < 6; ++column)
            {
                const QString cell = QString::number(3.5 + (row * 7 + column) % 13 / 10.0, 'f', 2);
                target.SetCurrentX(1440 + column * 1500 + 1000 - target.TextWidth(cell));
                target.SetCurrentY(7000 + row * 280);
                target.Print(cell);
            }
        }
    }
    target.EndDoc();
}
} // namespace

class TestPdfFileTarget : public QObject
{
    Q_OBJECT

private slots:
    void scaleIsTheWholeSheetInTwips()
    {
        QTemporaryDir dir;
        PdfFileTarget letter(dir.filePath(QStringLiteral("letter.pdf")), QPageSize(QPageSize::Letter),
                             QPageLayout::Portrait);
        QCOMPARE(letter.ScaleLeft(), 0.0);
        QCOMPARE(letter.ScaleTop(), 0.0);
        QCOMPARE(letter.ScaleWidth(), 12240.0);
        QCOMPARE(letter.ScaleHeight(), 15840.0);
        QCOMPARE(letter.dotsPerInch(), 600.0);
        QCOMPARE(letter.DeviceName(), QString());

        PdfFileTarget landscape(dir.filePath(QStringLiteral("landscape.pdf")), QPageSize(QPageSize::Letter),
                                QPageLayout::Landscape, 300);
        QCOMPARE(landscape.ScaleWidth(), 15840.0);
        QCOMPARE(landscape.ScaleHeight(), 12240.0);
        QCOMPARE(landscape.dotsPerInch(), 300.0);

        PdfFileTarget a4(dir.filePath(QStringLiteral("a4.pdf")), QPageSize(QPageSize::A4), QPageLayout::Portrait);
        QCOMPARE(a4.ScaleWidth(), 595.0 * 20);
        QCOMPARE(a4.ScaleHeight(), 842.0 * 20);
    }

    void measuringWritesNoFile()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("measure.pdf"));
        PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        target.SetFontSize(10);
        QVERIFY(qAbs(target.TextWidth(QStringLiteral("X")) - 1366.0 / 2048 * 200) < 1.0);
        target.EndDoc();
        QVERIFY(!QFile::exists(file));
    }

    void textMeasuresTheSameBeforeAndDuringTheJob()
    {
        // The print path lays the table out once on a PDF file: a target
        // that measures before its document is begun measures as one whose
        // document is under way. Two targets, so that no text shaped on the
        // one is remembered for the other.
        const QStringList texts{QStringLiteral("Visit Date"),    QStringLiteral("12/31/2024"),
                                QStringLiteral("1234.56"),       QStringLiteral("FEV1/FVC"),
                                QStringLiteral("(mL/min/mmHg)"), QStringLiteral("Wy To")};
        const auto measure = [&texts](OutputTarget& target) {
            QList<double> measures;
            for (const double points : {8.0, 10.0, 14.0})
            {
                for (const bool bold : {false, true})
                {
                    target.SetFontSize(points);
                    target.SetFontBold(bold);
                    for (const QString& text : texts)
                        measures << target.TextWidth(text) << target.TextHeight(text);
                }
            }
            return measures;
        };
        QTemporaryDir dir;
        PdfFileTarget before(dir.filePath(QStringLiteral("before.pdf")), QPageSize(QPageSize::Letter),
                             QPageLayout::Portrait);
        QVERIFY(before.MeasuresAlikeBeforeTheJob());
        const QList<double> measuredBefore = measure(before);

        PdfFileTarget during(dir.filePath(QStringLiteral("during.pdf")), QPageSize(QPageSize::Letter),
                             QPageLayout::Portrait);
        during.Print(QStringLiteral("The job is under way"));
        during.NewPage();
        const QList<double> measuredDuring = measure(during);
        during.EndDoc();
        QVERIFY(QFile::exists(dir.filePath(QStringLiteral("during.pdf"))));
        QCOMPARE(measuredDuring, measuredBefore);
    }

    void pagesAreThoseOfThePdfPrinter()
    {
        // The same drawing through the PDF printer and through the file target:
        // the same pages, pixel for pixel, and the same text.
        QTemporaryDir dir;
        const QString printed = dir.filePath(QStringLiteral("printer.pdf"));
        const QString written = dir.filePath(QStringLiteral("file.pdf"));
        {
            auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
            printer->setOutputFormat(QPrinter::PdfFormat);
            printer->setResolution(600);
            printer->setPageSize(QPageSize(QPageSize::Letter));
            printer->setPageOrientation(QPageLayout::Portrait);
            printer->setOutputFileName(printed);
            PrinterTarget target(std::move(printer));
            DrawTwoPages(target);
        }
        {
            PdfFileTarget target(written, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
            DrawTwoPages(target);
        }

        const QString info = RunPdfTool(QStringLiteral("pdfinfo"), {written});
        QVERIFY2(info.contains(QRegularExpression(QStringLiteral("Pages:\\s+2\\n"))), qPrintable(info));
        QVERIFY2(info.contains(QStringLiteral("612 x 792 pts")), qPrintable(info));

        const QString printedText =
            RunPdfTool(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), printed, QStringLiteral("-")});
        const QString writtenText =
            RunPdfTool(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), written, QStringLiteral("-")});
        QVERIFY2(writtenText.contains(QStringLiteral("Levey-Jennings QC Report, page 2")), qPrintable(writtenText));
        QVERIFY2(writtenText.contains(QStringLiteral("4.70")), qPrintable(writtenText));
        QCOMPARE(writtenText, printedText);

        QTemporaryDir printedPages;
        QTemporaryDir writtenPages;
        const QList<QImage> expected = RenderPages(printed, printedPages.path());
        const QList<QImage> actual = RenderPages(written, writtenPages.path());
        QCOMPARE(expected.size(), 2);
        QCOMPARE(actual.size(), 2);
        QCOMPARE(actual.at(0), expected.at(0));
        QCOMPARE(actual.at(1), expected.at(1));
    }

    void shapesKeepTheirOrderAndTheirPage()
    {
        // Solid shapes are kept back and drawn together; whatever comes next
        // still lands over them, and each lands on its own page.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("order.pdf"));
        {
            PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
            const auto mark = [&target](double x, double y) {
                target.SetDrawWidth(5);
                target.PSet(x, y, QColor(0, 0, 0));
                target.Circle(x, y, 60, QColor(0, 0, 0));
                target.Line(x - 60, y, x + 60, y);
                target.Line(x, y - 60, x, y + 60);
            };
            // A black band (400 pixels of 600 dpi: 960 twips), then white text on it.
            target.SetDrawWidth(400);
            target.Line(1440, 2880, 10800, 2880, QColor(0, 0, 0));
            target.SetFontSize(24);
            target.SetFontBold(true);
            target.SetForeColor(QColor(255, 255, 255));
            target.SetCurrentX(2000);
            target.SetCurrentY(2880 - target.TextHeight(QStringLiteral("H")) / 2);
            target.Print(QStringLiteral("HHHHHHHH"));
            // Black text, then a white band over it.
            target.SetForeColor(QColor(0, 0, 0));
            target.SetCurrentX(2000);
            target.SetCurrentY(11000);
            target.Print(QStringLiteral("HHHHHHHH"));
            target.SetDrawWidth(400);
            target.Line(1440, 11000 + target.TextHeight(QStringLiteral("H")) / 2, 10800,
                        11000 + target.TextHeight(QStringLiteral("H")) / 2, QColor(255, 255, 255));
            // A mark, the last drawing of the first page, and one on the second.
            mark(6000, 8000);
            target.NewPage();
            mark(3000, 6000);
            target.EndDoc();
        }
        QTemporaryDir pagesDir;
        const QList<QImage> pages = RenderPages(file, pagesDir.path());
        QCOMPARE(pages.size(), 2);
        // 100 dpi: 14.4 twips a pixel; a mark's strokes are under a pixel wide.
        const auto dark = [](const QImage& page, double x, double y) {
            int darkest = 255;
            for (int dy = -1; dy <= 1; ++dy)
            {
                for (int dx = -1; dx <= 1; ++dx)
                    darkest = std::min(darkest, qGray(page.pixel(qRound(x / 14.4) + dx, qRound(y / 14.4) + dy)));
            }
            return darkest < 128;
        };
        int whiteInBand = 0;
        for (int x = 139; x < 400; ++x)
        {
            if (qGray(pages[0].pixel(x, 200)) > 200)
                ++whiteInBand;
        }
        QVERIFY2(whiteInBand > 40, qPrintable(QString::number(whiteInBand)));
        QVERIFY(dark(pages[0], 1600, 2880));
        QVERIFY(dark(pages[0], 10000, 2880));
        int darkUnderBand = 0;
        for (int y = 11000 / 14.4; y < 11500 / 14.4; ++y)
        {
            for (int x = 139; x < 400; ++x)
                darkUnderBand += qGray(pages[0].pixel(x, y)) < 200 ? 1 : 0;
        }
        QCOMPARE(darkUnderBand, 0);
        QVERIFY(dark(pages[0], 6000, 8000));
        QVERIFY(!dark(pages[1], 6000, 8000));
        QVERIFY(dark(pages[1], 3000, 6000));
        QVERIFY(!dark(pages[0], 3000, 6000));
    }

    void aDiscIsFilledAndLaterOutlinesAreNot()
    {
        // A chart's flagged visit between two circled crosses: the disc is
        // filled to its edge; the circles after it stay open.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("disc.pdf"));
        {
            PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
            target.SetDrawWidth(5);
            target.Circle(2000, 4000, 300, QColor(0, 0, 0));
            target.Disc(4000, 4000, 300, QColor(0, 0, 0));
            target.Circle(6000, 4000, 300, QColor(0, 0, 0));
            target.Line(5700, 4000, 6300, 4000);
            target.EndDoc();
        }
        QTemporaryDir pagesDir;
        const QList<QImage> pages = RenderPages(file, pagesDir.path());
        QCOMPARE(pages.size(), 1);
        const auto grey = [&pages](double x, double y) {
            return qGray(pages[0].pixel(qRound(x / 14.4), qRound(y / 14.4)));
        };
        // Inside the disc, half way to its edge and at its centre: black.
        for (const double dx : {-150.0, 0.0, 150.0})
        {
            QVERIFY(grey(4000 + dx, 4000) < 64);
            QVERIFY(grey(4000, 4000 + dx) < 64);
        }
        // Inside the circles, off their strokes: white.
        QCOMPARE(grey(2000, 4150), 255);
        QCOMPARE(grey(6000, 4150), 255);
        // The outlines are drawn: under a pixel wide, somewhere around their place.
        const auto darkNear = [&grey](double x, double y) {
            int darkest = 255;
            for (int dy = -1; dy <= 1; ++dy)
            {
                for (int dx = -1; dx <= 1; ++dx)
                    darkest = std::min(darkest, grey(x + dx * 14.4, y + dy * 14.4));
            }
            return darkest < 128;
        };
        QVERIFY(darkNear(2000 + 300, 4000));
        QVERIFY(darkNear(6000, 4000 + 300));
    }

    void drawingAfterEndDocWritesTheFileAnew()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("again.pdf"));
        PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        CheckDrawingAfterEndDocStartsAnew(target, file);
    }

    void eachDocumentOfOneTargetIsDrawnAsOnATargetOfItsOwn()
    {
        // A run of many reports draws them on one target: the second
        // document's pages are those of a new target, whatever state the
        // first one left (font, pen, position).
        QTemporaryDir dir;
        const QString first = dir.filePath(QStringLiteral("first.pdf"));
        const QString second = dir.filePath(QStringLiteral("second.pdf"));
        const QString alone = dir.filePath(QStringLiteral("alone.pdf"));
        // What relies on a new target's state: the default font, pen and position.
        const auto defaults = [](OutputTarget& target) {
            target.Print(QStringLiteral("At the origin, in the default font"));
            target.Line(1440, 1440, 7200, 2880);
            target.Circle(4000, 4000, 300);
            target.SetCurrentX(1440);
            target.SetCurrentY(5000);
            target.Print(QString::number(target.TextWidth(QStringLiteral("1234.56"))));
            target.EndDoc();
        };

        PdfFileTarget shared(QString(), QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        shared.startDocument(first);
        shared.SetFontBold(true);
        shared.SetFontSize(14);
        shared.SetDrawWidth(6);
        shared.SetDrawStyle(2);
        shared.SetForeColor(QColor(200, 0, 0));
        DrawTwoPages(shared);
        shared.SetFontSize(20);
        shared.SetCurrentX(5000);
        shared.SetCurrentY(9000);
        QCOMPARE(shared.fileName(), first);
        shared.startDocument(second);
        QCOMPARE(shared.fileName(), second);
        defaults(shared);

        PdfFileTarget own(alone, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        defaults(own);

        QTemporaryDir pagesOfSecond;
        QTemporaryDir pagesAlone;
        const QList<QImage> secondPages = RenderPages(second, pagesOfSecond.path());
        QCOMPARE(secondPages.size(), 1);
        QCOMPARE(secondPages, RenderPages(alone, pagesAlone.path()));
        QCOMPARE(RunPdfTool(QStringLiteral("pdftotext"), {second, QStringLiteral("-")}),
                 RunPdfTool(QStringLiteral("pdftotext"), {alone, QStringLiteral("-")}));
        QCOMPARE(RenderPages(first, dir.filePath(QStringLiteral("."))).size(), 2);
    }

    void aDocumentLeftUnfinishedIsNotWritten()
    {
        QTemporaryDir dir;
        const QString broken = dir.filePath(QStringLiteral("broken.pdf"));
        const QString next = dir.filePath(QStringLiteral("next.pdf"));
        PdfFileTarget target(QString(), QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        target.startDocument(broken);
        target.Print(QStringLiteral("half a report"));
        target.NewPage();
        target.startDocument(next);
        target.Print(QStringLiteral("the next report"));
        target.EndDoc();
        QVERIFY(!QFileInfo::exists(broken));
        const QString text = RunPdfTool(QStringLiteral("pdftotext"), {next, QStringLiteral("-")});
        QVERIFY2(text.contains(QStringLiteral("the next report")), qPrintable(text));
        QVERIFY(!text.contains(QStringLiteral("half a report")));
        QCOMPARE(RunPdfTool(QStringLiteral("pdfinfo"), {next})
                     .contains(QRegularExpression(QStringLiteral("Pages:\\s+1\\n"))),
                 true);
    }

    void theFileIsWrittenAtEndDocOnly()
    {
        // The pages are drawn in memory: until EndDoc the file that was
        // there is untouched, and a target that goes before EndDoc leaves it.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("report.pdf"));
        {
            QFile earlier(file);
            QVERIFY(earlier.open(QIODevice::WriteOnly));
            earlier.write("earlier report");
        }
        const auto contents = [&file] {
            QFile read(file);
            return read.open(QIODevice::ReadOnly) ? read.readAll() : QByteArray();
        };
        {
            PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
            target.Print(QStringLiteral("first page"));
            target.NewPage();
            target.Print(QStringLiteral("second page"));
            QCOMPARE(contents(), QByteArray("earlier report"));
        }
        QCOMPARE(contents(), QByteArray("earlier report"));

        PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        target.Print(QStringLiteral("first page"));
        target.NewPage();
        QCOMPARE(contents(), QByteArray("earlier report"));
        target.EndDoc();
        QVERIFY(contents().startsWith("%PDF-"));
        QVERIFY(contents().endsWith("%%EOF\n"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("report.pdf")});
    }

    void anUnwritableFileFailsAtEndDocWithTheReason()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("no such folder/report.pdf"));
        PdfFileTarget target(file, QPageSize(QPageSize::Letter), QPageLayout::Portrait);
        QVERIFY(target.TextWidth(QStringLiteral("X")) > 0);
        target.Line(0, 0, 1440, 1440);
        target.Print(QStringLiteral("X"));
        target.NewPage();
        try
        {
            target.EndDoc();
            QFAIL("a PDF file that cannot be written did not raise at EndDoc");
        }
        catch (const FileWriteError& error)
        {
            QCOMPARE(error.fileName(), file);
            QCOMPARE(error.description(), QStringLiteral("No such file or directory"));
        }
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    }
};

CALVEX_TEST(TestPdfFileTarget)
#include "TestPdfFileTarget.moc"
