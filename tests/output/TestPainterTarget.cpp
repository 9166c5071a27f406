#include "PdfTools.h"
#include "common/TestMain.h"
#include "output/PictureTarget.h"
#include "output/PrinterTarget.h"
#include "output/ReportFonts.h"
#include "output/modPrintGlobals.h"
#include "platform/RuntimeError.h"

#include <QFile>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPrinterInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTextLayout>

#include <memory>

namespace
{
bool IsDark(QRgb pixel)
{
    return qGray(pixel) < 128;
}

// True when a pixel within two pixels of (x, y) is mostly green: an
// antialiased one-pixel outline covers parts of neighbouring pixels.
bool GreenNear(const QImage& image, int x, int y)
{
    for (int dy = -2; dy <= 2; ++dy)
    {
        for (int dx = -2; dx <= 2; ++dx)
        {
            const QRgb pixel = image.pixel(x + dx, y + dy);
            if (qRed(pixel) < 100 && qBlue(pixel) < 100 && qGreen(pixel) > 100)
                return true;
        }
    }
    return false;
}

std::unique_ptr<QPrinter> PdfPrinter(const QString& fileName)
{
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setResolution(600);
    printer->setPageSize(QPageSize(QPageSize::Letter));
    printer->setPageOrientation(QPageLayout::Portrait);
    printer->setOutputFileName(fileName);
    return printer;
}
} // namespace

class TestPainterTarget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Page layouts measure text: without Arial's metrics every report page is off.
        const QString family = ReportFonts::verifyArial();
#ifdef Q_OS_LINUX
        if (family != QLatin1String("Liberation Sans"))
            QFAIL(qPrintable(QStringLiteral("\"Arial\" resolves to \"%1\"; install fonts-liberation2").arg(family)));
#endif
        QVERIFY(ReportFonts::arialIsMetricCompatible());
        QVERIFY2(QStandardPaths::findExecutable(QStringLiteral("pdftotext")).size() > 0, "poppler-utils is missing");
    }

    void pictureHasThePageSizeInTwips()
    {
        PictureTarget picture(12240, 15840, 96);
        QCOMPARE(picture.ScaleLeft(), 0.0);
        QCOMPARE(picture.ScaleTop(), 0.0);
        QCOMPARE(picture.ScaleWidth(), 12240.0);
        QCOMPARE(picture.ScaleHeight(), 15840.0);
        QCOMPARE(picture.image().size(), QSize(816, 1056));
        QCOMPARE(picture.DeviceName(), QString());
        QCOMPARE(picture.image().pixel(400, 500), qRgb(255, 255, 255));

        PictureTarget landscape(15840, 12240, 144);
        QCOMPARE(landscape.image().size(), QSize(1584, 1224));
    }

    void arialHasArialMetricsInTwips()
    {
        // Arial's advance of "X" is 1366/2048 em and of a digit 1139/2048 em;
        // its line (ascent + descent) is about 1.117 em. At 10 points, 1 em is
        // 200 twips, which a picture of 1440 dpi draws at 200 pixels exactly.
        PictureTarget picture(1440, 1440, 1440);
        picture.SetFont(QStringLiteral("Arial"));
        picture.SetFontSize(10);
        picture.SetFontBold(false);
        QVERIFY(qAbs(picture.TextWidth(QStringLiteral("X")) - 1366.0 / 2048 * 200) < 0.5);
        QVERIFY(qAbs(picture.TextWidth(QStringLiteral("0123456789")) - 10 * 1139.0 / 2048 * 200) < 1.0);
        const double line = picture.TextHeight(QStringLiteral("X"));
        QVERIFY2(qAbs(line - 2288.0 / 2048 * 200) < 1.0, qPrintable(QString::number(line)));
        QCOMPARE(picture.TextHeight(QStringLiteral("a\nb")), 2 * line);
        QCOMPARE(picture.TextWidth(QStringLiteral("abc\nX")), picture.TextWidth(QStringLiteral("abc")));
        QCOMPARE(picture.TextWidth(QString()), 0.0);

        // Twice the size, twice the extent; bold is wider.
        picture.SetFontSize(20);
        QVERIFY(qAbs(picture.TextHeight(QStringLiteral("X")) - 2 * line) < 0.01 * line);
        picture.SetFontSize(10);
        const double regular = picture.TextWidth(QStringLiteral("Visit Date"));
        picture.SetFontBold(true);
        QVERIFY(picture.TextWidth(QStringLiteral("Visit Date")) > regular);
        QCOMPARE(picture.Font(), QStringLiteral("Arial"));
        QCOMPARE(picture.FontSize(), 10.0);
        QVERIFY(picture.FontBold());
    }

    void metricsAreTheDevicesOwnAtEveryResolution()
    {
        // Each device measures with its own fonts (whole pixel sizes on
        // coarse devices), so the extents in twips differ a little, never much.
        const QString text = QStringLiteral("Levey-Jennings 12/31/2024");
        PictureTarget reference(1440, 1440, 1440);
        const double width = reference.TextWidth(text);
        const double height = reference.TextHeight(text);
        for (int dpi : {96, 120, 300, 600})
        {
            PictureTarget picture(1440, 1440, dpi);
            QVERIFY2(qAbs(picture.TextWidth(text) - width) < 0.03 * width, qPrintable(QString::number(dpi)));
            QVERIFY2(qAbs(picture.TextHeight(text) - height) < 0.03 * height, qPrintable(QString::number(dpi)));
        }
    }

    void printDrawsAtTheCurrentPositionAndMovesDown()
    {
        PictureTarget picture(12240, 15840, 96);
        picture.Cls();
        picture.SetFontSize(20);
        picture.SetCurrentX(1440);
        picture.SetCurrentY(1440);
        const double line = picture.TextHeight(QStringLiteral("HHHH"));
        picture.Print(QStringLiteral("HHHH"));
        QCOMPARE(picture.CurrentX(), 0.0);
        QCOMPARE(picture.CurrentY(), 1440 + line);

        // The text lies right of x = 96 px and below y = 96 px, within one line.
        const QImage& image = picture.image();
        int dark = 0;
        for (int y = 0; y < 400; ++y)
        {
            for (int x = 0; x < 400; ++x)
            {
                if (!IsDark(image.pixel(x, y)))
                    continue;
                ++dark;
                QVERIFY2(x >= 96 && y >= 96 && y <= 96 + line / 15, qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));
            }
        }
        QVERIFY(dark > 50);
    }

    void linesBoxesPointsAndCirclesLandInTwips()
    {
        PictureTarget picture(12240, 15840, 96); // 15 twips a pixel
        picture.Cls();
        picture.SetForeColor(QColor(0, 0, 255));
        picture.SetDrawWidth(5);
        picture.Line(1500, 1500, 3000, 1500); // y = 100 px, x 100..200
        picture.SetDrawWidth(1);
        picture.Line(1500, 3000, 3000, 4500, QColor(255, 0, 0), true); // box 100..200 x 200..300
        picture.SetDrawWidth(7);
        picture.PSet(6000, 6000); // a dot at 400, 400
        picture.SetDrawWidth(1);
        picture.Circle(9000, 9000, 750, QColor(0, 128, 0)); // 600, 600 radius 50 px
        const QImage& image = picture.image();

        // A line five pixels wide in the ForeColor, centred on y = 100 px
        // (pixel rows 97.5 .. 102.5).
        for (int y = 98; y <= 101; ++y)
            QCOMPARE(image.pixel(150, y), qRgb(0, 0, 255));
        QCOMPARE(image.pixel(150, 104), qRgb(255, 255, 255));
        QCOMPARE(image.pixel(150, 95), qRgb(255, 255, 255));
        QCOMPARE(image.pixel(210, 100), qRgb(255, 255, 255));

        // A box outline in its own colour, empty inside.
        QVERIFY(qRed(image.pixel(150, 200)) > 200 && qGreen(image.pixel(150, 200)) < 128);
        QVERIFY(qRed(image.pixel(100, 250)) > 200 && qGreen(image.pixel(100, 250)) < 128);
        QVERIFY(qRed(image.pixel(200, 250)) > 200 && qGreen(image.pixel(200, 250)) < 128);
        QCOMPARE(image.pixel(150, 250), qRgb(255, 255, 255));

        // A dot of DrawWidth pixels.
        QCOMPARE(image.pixel(400, 400), qRgb(0, 0, 255));
        QVERIFY(qBlue(image.pixel(402, 400)) > 200 && qRed(image.pixel(402, 400)) < 60);
        QCOMPARE(image.pixel(406, 400), qRgb(255, 255, 255));
        QCOMPARE(image.pixel(400, 406), qRgb(255, 255, 255));

        // A circle outline with its radius in horizontal twips.
        QVERIFY(GreenNear(image, 650, 600));
        QVERIFY(GreenNear(image, 550, 600));
        QVERIFY(GreenNear(image, 600, 550));
        QVERIFY(GreenNear(image, 600, 650));
        QVERIFY(!GreenNear(image, 640, 600));
        QVERIFY(!GreenNear(image, 660, 600));
        QCOMPARE(image.pixel(600, 600), qRgb(255, 255, 255));
        QCOMPARE(image.pixel(660, 600), qRgb(255, 255, 255));
    }

    void dottedLinesHaveGaps()
    {
        PictureTarget picture(12240, 15840, 96);
        picture.Cls();
        picture.SetDrawStyle(2);
        picture.Line(1500, 1500, 9000, 1500);
        picture.SetDrawStyle(0);
        picture.Line(1500, 3000, 9000, 3000);
        const QImage& image = picture.image();
        int dottedDark = 0;
        int solidDark = 0;
        for (int x = 110; x < 590; ++x)
        {
            dottedDark += IsDark(image.pixel(x, 100)) ? 1 : 0;
            solidDark += IsDark(image.pixel(x, 200)) ? 1 : 0;
        }
        QCOMPARE(solidDark, 480);
        QVERIFY2(dottedDark > 120 && dottedDark < 360, qPrintable(QString::number(dottedDark)));
    }

    void clsClearsToWhiteAndGoesHome()
    {
        PictureTarget picture(1440, 1440, 96);
        picture.SetDrawWidth(20);
        picture.Line(0, 720, 1440, 720);
        QVERIFY(IsDark(picture.image().pixel(48, 48)));
        picture.SetCurrentX(500);
        picture.SetCurrentY(600);
        picture.Cls();
        QCOMPARE(picture.CurrentX(), 0.0);
        QCOMPARE(picture.CurrentY(), 0.0);
        const QImage& image = picture.image();
        for (int y = 0; y < image.height(); ++y)
        {
            for (int x = 0; x < image.width(); ++x)
                QCOMPARE(image.pixel(x, y), qRgb(255, 255, 255));
        }
        // NewPage and EndDoc mean nothing on a picture; drawing goes on.
        picture.NewPage();
        picture.EndDoc();
        picture.Line(0, 720, 1440, 720);
        QVERIFY(IsDark(picture.image().pixel(48, 48)));
    }

    void fontsKeepTheirOwnMetricsWhenSwitchedBack()
    {
        PictureTarget picture(12240, 15840, 600);
        const QString text = QStringLiteral("12/31/2024");
        picture.SetFontSize(10);
        const double regular = picture.TextWidth(text);
        const double line = picture.TextHeight(text);
        picture.SetFontBold(true);
        picture.SetFontSize(14);
        const double bigBold = picture.TextWidth(text);
        QVERIFY(bigBold > regular * 1.3);
        QVERIFY(picture.TextHeight(text) > line * 1.3);

        // Back at 10 points regular: the same figures as at first and as on a fresh target.
        picture.SetFontBold(false);
        picture.SetFontSize(10);
        QCOMPARE(picture.TextWidth(text), regular);
        QCOMPARE(picture.TextHeight(text), line);
        PictureTarget fresh(12240, 15840, 600);
        QCOMPARE(fresh.TextWidth(text), regular);

        // A size that is no size changes nothing.
        picture.SetFontSize(0);
        QCOMPARE(picture.FontSize(), 10.0);
        QCOMPARE(picture.TextWidth(text), regular);
    }

    void printedTextLooksAsThePainterDrawsIt()
    {
        // Texts printed once, twice and many times, each in a row of its own,
        // against the same texts drawn straight with a painter in the same font.
        const QStringList texts{QStringLiteral("12/31/2024"), QStringLiteral(" 4.60  "), QStringLiteral("4.60"),
                                QStringLiteral("(mmol/min/kPa)"), QStringLiteral("AVATAR fi ffl")};
        PictureTarget picture(12240, 15840, 150);
        picture.Cls();
        picture.SetFontSize(10);
        QImage expected(picture.image().size(), QImage::Format_RGB32);
        expected.setDotsPerMeterX(picture.image().dotsPerMeterX());
        expected.setDotsPerMeterY(picture.image().dotsPerMeterY());
        expected.fill(Qt::white);
        QPainter painter(&expected);
        painter.setRenderHint(QPainter::Antialiasing);
        QFont font(QStringLiteral("Arial"));
        font.setPointSizeF(10);
        font.setHintingPreference(QFont::PreferNoHinting);
        painter.setFont(font);
        painter.setPen(QPen(QColor(0, 0, 0), 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const double ascent = QFontMetricsF(font, &expected).ascent();

        double y = 300.5;
        for (int row = 0; row < 4; ++row)
        {
            double x = 700.25;
            for (const QString& text : texts)
            {
                picture.SetCurrentX(x);
                picture.SetCurrentY(y);
                picture.Print(text);
                painter.drawText(QPointF(x * 150 / 1440, y * 150 / 1440 + ascent), text);
                x += 2200.4;
            }
            y += 1000.3;
        }
        painter.end();
        QCOMPARE(picture.image(), expected);
    }

    void numbersAndDatesMeasureAsTheirOwnLayout()
    {
        // Numbers and dates are put together from their characters' glyphs;
        // their widths must be those of the text laid out whole, kerning and
        // all, in every font the report uses.
        PictureTarget picture(12240, 15840, 600);
        QStringList texts{QStringLiteral("11/11/2011"), QStringLiteral("-1,111.17"), QStringLiteral("10:11"),
                          QStringLiteral(" 4.60  "),    QStringLiteral("1"),         QStringLiteral("--//..,,")};
        const QString characters = QStringLiteral("0123456789.,-/: ");
        quint32 seed = 12345;
        for (int i = 0; i < 2000; ++i)
        {
            QString text;
            seed = seed * 1103515245 + 12345;
            for (int length = 1 + int(seed >> 16) % 12; length > 0; --length)
            {
                seed = seed * 1103515245 + 12345;
                text += characters.at(int(seed >> 16) % characters.size());
            }
            texts.append(text);
        }
        const struct
        {
            double points;
            bool bold;
        } fonts[] = {{10, false}, {10, true}, {8, false}, {14, true}};
        int kerned = 0;
        for (const auto& size : fonts)
        {
            picture.SetFontSize(size.points);
            picture.SetFontBold(size.bold);
            QFont font(QStringLiteral("Arial"));
            font.setPointSizeF(size.points);
            font.setBold(size.bold);
            font.setHintingPreference(QFont::PreferNoHinting);
            const auto layoutWidth = [&](const QString& text) {
                QTextLayout layout(text, font, const_cast<QImage*>(&picture.image()));
                layout.beginLayout();
                const QTextLine line = layout.createLine();
                layout.endLayout();
                return line.horizontalAdvance() / (600.0 / 1440);
            };
            if (layoutWidth(QStringLiteral("11")) != 2 * layoutWidth(QStringLiteral("1")))
                ++kerned;
            const qsizetype laidOutBefore = picture.layoutCount();
            for (const QString& text : texts)
                QVERIFY2(picture.TextWidth(text) == layoutWidth(text),
                         qPrintable(QStringLiteral("\"%1\" at %2 points: %3 against %4")
                                        .arg(text)
                                        .arg(size.points)
                                        .arg(picture.TextWidth(text))
                                        .arg(layoutWidth(text))));
            // Learning the characters and their pairs takes a few hundred
            // layouts; the texts themselves take none.
            const qsizetype laidOut = picture.layoutCount() - laidOutBefore;
            QVERIFY2(laidOut < texts.size() / 4, qPrintable(QString::number(laidOut)));
        }
        // The fonts kern "11", so the pairs' kerning was part of the sums.
        QVERIFY(kerned > 0);
    }

    void printedTextIsDrawnBeforeWhatFollowsIt()
    {
        PictureTarget picture(12240, 15840, 96);
        picture.Cls();
        picture.SetFontSize(20);
        picture.SetCurrentX(1440);
        picture.SetCurrentY(1440);
        picture.Print(QStringLiteral("HHHH"));
        // A white line wider than the text is tall, over its middle.
        picture.SetDrawWidth(60);
        picture.Line(1300, 1440 + 200, 4000, 1440 + 200, QColor(255, 255, 255));
        const QImage& image = picture.image();
        for (int y = 90; y < 140; ++y)
        {
            for (int x = 90; x < 270; ++x)
                QVERIFY2(!IsDark(image.pixel(x, y)), qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));
        }
    }

    void aPenThatDrawsNoLineDrawsNoText()
    {
        PictureTarget picture(2880, 2880, 96);
        picture.Cls();
        picture.SetFontSize(20);
        picture.SetDrawStyle(5);
        picture.SetCurrentY(200);
        picture.Print(QStringLiteral("HHHH"));
        // It still moves down a line.
        QVERIFY(picture.CurrentY() > 200);
        const QImage& image = picture.image();
        for (int y = 0; y < image.height(); ++y)
        {
            for (int x = 0; x < image.width(); ++x)
                QCOMPARE(image.pixel(x, y), qRgb(255, 255, 255));
        }
    }

    void marksOnAPdfPageLandInPlaceAndRepeatCheaply()
    {
        // 3,000 chart marks (dot, circle and cross, as the QC graph draws them)
        // across a page: each lands where it was drawn, and since every mark
        // writes the same path text around its own centre, the compressed
        // page takes a few bytes a mark, not the hundred its coordinates would.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("marks.pdf"));
        PrinterTarget printer(PdfPrinter(file));
        const double radius = 60;
        printer.SetDrawWidth(5);
        for (int i = 0; i < 3000; ++i)
        {
            const double x = 1440 + (i % 60) * 150.7;
            const double y = 1440 + (i / 60) * 250.3 + (i % 7) * 13.1;
            printer.PSet(x, y, QColor(0, 0, 0));
            printer.Circle(x, y, radius, QColor(0, 0, 0));
            printer.Line(x - radius, y, x + radius, y);
            printer.Line(x, y - radius, x, y + radius);
        }
        printer.EndDoc();
        const qint64 size = QFileInfo(file).size();
        QVERIFY2(size > 0 && size < 3000 * 25, qPrintable(QString::number(size)));

        // The marks at 300 dpi (a pixel is 4.8 twips): the first one's centre
        // and its cross are dark, its inside and the page's empty corner not.
        const QString png = dir.filePath(QStringLiteral("marks"));
        RunPdfTool(QStringLiteral("pdftoppm"), {QStringLiteral("-r"), QStringLiteral("300"), QStringLiteral("-png"),
                                                QStringLiteral("-singlefile"), file, png});
        QImage page(png + QStringLiteral(".png"));
        QVERIFY(!page.isNull());
        const auto pixel = [](double twips) { return qRound(twips / 4.8); };
        QVERIFY(IsDark(page.pixel(pixel(1440), pixel(1440))));
        QVERIFY(IsDark(page.pixel(pixel(1440 + 40), pixel(1440))));
        QVERIFY(IsDark(page.pixel(pixel(1440), pixel(1440 - radius))));
        QVERIFY(!IsDark(page.pixel(pixel(1440 + 30), pixel(1440 + 30))));
        QVERIFY(!IsDark(page.pixel(pixel(720), pixel(720))));
        // The last mark: column 59, row 49, three steps of 13.1 twips down.
        const int lastX = pixel(1440 + 59 * 150.7);
        const int lastY = pixel(1440 + 49 * 250.3 + 3 * 13.1);
        QVERIFY(IsDark(page.pixel(lastX, lastY)));
    }

    void printerScaleIsTheWholeSheetInTwips()
    {
        QTemporaryDir dir;
        PrinterTarget printer(PdfPrinter(dir.filePath(QStringLiteral("scale.pdf"))));
        QCOMPARE(printer.ScaleWidth(), 12240.0);
        QCOMPARE(printer.ScaleHeight(), 15840.0);
        QCOMPARE(printer.ScaleLeft(), 0.0);
        QCOMPARE(printer.DeviceName(), QStringLiteral("Print to PDF"));
        QCOMPARE(printer.dotsPerInch(), 600.0);

        printer.printer().setPageOrientation(QPageLayout::Landscape);
        printer.printerChanged();
        QCOMPARE(printer.ScaleWidth(), 15840.0);
        QCOMPARE(printer.ScaleHeight(), 12240.0);

        printer.printer().setPageSize(QPageSize(QPageSize::A4));
        printer.printer().setPageOrientation(QPageLayout::Portrait);
        printer.printerChanged();
        QCOMPARE(printer.ScaleWidth(), 595.0 * 20);
        QCOMPARE(printer.ScaleHeight(), 842.0 * 20);
    }

    void measuringStartsNoPrintJob()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("measure.pdf"));
        PrinterTarget printer(PdfPrinter(file));
        printer.SetFontSize(10);
        const double width = printer.TextWidth(QStringLiteral("X"));
        QVERIFY(qAbs(width - 1366.0 / 2048 * 200) < 1.0);
        QVERIFY(printer.TextHeight(QStringLiteral("X")) > 220);
        printer.EndDoc();
        QVERIFY(!QFile::exists(file));
    }

    void printerWritesPagesWithTextWhereItWasPut()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("report.pdf"));
        PrinterTarget printer(PdfPrinter(file));
        printer.SetFont(QStringLiteral("Arial"));
        printer.SetFontSize(12);
        printer.SetCurrentX(1440);
        printer.SetCurrentY(2880);
        printer.Print(QStringLiteral("Calvex first page"));
        printer.SetDrawWidth(30);
        printer.Line(1440, 7200, 10800, 7200);
        printer.NewPage();
        QCOMPARE(printer.CurrentY(), 0.0);
        printer.SetCurrentX(720);
        printer.SetCurrentY(720);
        printer.Print(QStringLiteral("Second page"));
        printer.EndDoc();
        QVERIFY(QFile::exists(file));

        const QString info = RunPdfTool(QStringLiteral("pdfinfo"), {file});
        QVERIFY2(info.contains(QRegularExpression(QStringLiteral("Pages:\\s+2\\n"))), qPrintable(info));
        QVERIFY2(info.contains(QStringLiteral("612 x 792 pts")), qPrintable(info));

        const QString text = RunPdfTool(QStringLiteral("pdftotext"), {file, QStringLiteral("-")});
        const QStringList pages = text.split(QLatin1Char('\f'));
        QVERIFY2(pages.size() >= 2, qPrintable(text));
        QVERIFY2(pages[0].contains(QStringLiteral("Calvex first page")), qPrintable(text));
        QVERIFY2(pages[1].contains(QStringLiteral("Second page")), qPrintable(text));

        const QString fonts = RunPdfTool(QStringLiteral("pdffonts"), {file});
        QVERIFY2(fonts.contains(QStringLiteral("LiberationSans")) || fonts.contains(QStringLiteral("Arial")),
                 qPrintable(fonts));

        // The first word starts an inch from the sheet's left edge, its line two inches from the top.
        const QString boxes = RunPdfTool(QStringLiteral("pdftotext"),
                                         {QStringLiteral("-bbox"), QStringLiteral("-f"), QStringLiteral("1"),
                                          QStringLiteral("-l"), QStringLiteral("1"), file, QStringLiteral("-")});
        const QRegularExpression word(
            QStringLiteral("<word xMin=\"([0-9.]+)\" yMin=\"([0-9.]+)\" xMax=\"[0-9.]+\" yMax=\"([0-9.]+)\">Calvex<"));
        const QRegularExpressionMatch match = word.match(boxes);
        QVERIFY2(match.hasMatch(), qPrintable(boxes));
        QVERIFY(qAbs(match.captured(1).toDouble() - 72) < 1.5);
        QVERIFY(match.captured(2).toDouble() >= 143 && match.captured(2).toDouble() < 150);
        QVERIFY(match.captured(3).toDouble() < 144 + 12 * 1.2);

        // The 30-pixel line at 5 inches: 30 / 600 inch thick, dark on a 72 dpi rendering.
        const QString png = dir.filePath(QStringLiteral("page"));
        RunPdfTool(QStringLiteral("pdftoppm"), {QStringLiteral("-r"), QStringLiteral("72"), QStringLiteral("-f"),
                                                QStringLiteral("1"), QStringLiteral("-l"), QStringLiteral("1"),
                                                QStringLiteral("-png"), QStringLiteral("-singlefile"), file, png});
        QImage page(png + QStringLiteral(".png"));
        QVERIFY(!page.isNull());
        QCOMPARE(page.size(), QSize(612, 792));
        QVERIFY(IsDark(page.pixel(300, 360)));
        QVERIFY(!IsDark(page.pixel(300, 370)));
        QVERIFY(!IsDark(page.pixel(50, 360)));
    }

    void drawingAfterEndDocStartsANewJob()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("again.pdf"));
        PrinterTarget printer(PdfPrinter(file));
        CheckDrawingAfterEndDocStartsAnew(printer, file);
    }

    void aPrinterThatCannotStartRaisesAPrinterError()
    {
        QTemporaryDir dir;
        PrinterTarget printer(PdfPrinter(dir.filePath(QStringLiteral("no such folder/report.pdf"))));
        // Measuring needs no job and still works.
        QVERIFY(printer.TextWidth(QStringLiteral("X")) > 0);
        try
        {
            printer.Line(0, 0, 1440, 1440);
            QFAIL("drawing on a printer that cannot start did not raise");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), ErrorNumber::PrinterError);
        }
    }

    void systemPrinterFallsBackToPdf()
    {
        std::unique_ptr<QPrinter> created = CreateSystemPrinter();
        QVERIFY(created);
        const QStringList installed = QPrinterInfo::availablePrinterNames();
        if (installed.isEmpty())
        {
            QCOMPARE(created->outputFormat(), QPrinter::PdfFormat);
            QCOMPARE(created->resolution(), 600);
            QVERIFY(created->outputFileName().endsWith(QStringLiteral("QC Report.pdf")));
            PrinterTarget target(std::move(created));
            QCOMPARE(target.DeviceName(), QStringLiteral("Print to PDF"));
        }
        else
        {
            const QString expected =
                QPrinterInfo::defaultPrinterName().isEmpty() ? installed.first() : QPrinterInfo::defaultPrinterName();
            QCOMPARE(created->printerName(), expected);
        }
        // One system printer for the whole run: the program state keeps it.
        ProgramState state;
        QVERIFY(SystemPrinter(state));
        QCOMPARE(SystemPrinter(state).get(), SystemPrinter(state).get());
    }
};

CALVEX_TEST(TestPainterTarget)
#include "TestPainterTarget.moc"
