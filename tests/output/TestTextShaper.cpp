#include "common/TestMain.h"
#include "output/TextShaper.h"

#include <QFontMetricsF>
#include <QImage>
#include <QTest>
#include <QTextLayout>

#include <cmath>

namespace
{
constexpr double InchesPerMeter = 1 / 0.0254;

// A picture at the resolution given: the device the shaper measures on.
QImage Device(int dotsPerInch)
{
    QImage image(100, 100, QImage::Format_RGB32);
    const int dotsPerMeter = int(std::lround(dotsPerInch * InchesPerMeter));
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    return image;
}

QFont ReportFont(double points, bool bold)
{
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(points);
    font.setBold(bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

// The text as QTextLayout lays it out on the device, whole.
struct Layout
{
    double width = 0;
    double ascent = 0;
    QList<QGlyphRun> runs;
};

Layout LayOut(const QString& text, const QFont& font, QPaintDevice* device)
{
    QTextLayout layout(text, font, device);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    return Layout{line.horizontalAdvance(), line.ascent(), layout.glyphRuns()};
}

QList<float> Offsets(const QGlyphRun& run)
{
    QList<float> offsets;
    for (const QPointF& position : run.positions())
        offsets.append(float(position.x()));
    return offsets;
}
} // namespace

class TestTextShaper : public QObject
{
    Q_OBJECT

private slots:
    void fontsAreSetUpOnceAndMeasureOnTheDevice()
    {
        QImage low = Device(96);
        QImage high = Device(600);
        TextShaper shaper;
        shaper.setDevice(&low);
        TextShaper::Font& font = shaper.font(QStringLiteral("Arial"), 10, false);
        QCOMPARE(&shaper.font(QStringLiteral("Arial"), 10, false), &font);
        QVERIFY(&shaper.font(QStringLiteral("Arial"), 10, true) != &font);
        QVERIFY(&shaper.font(QStringLiteral("Arial"), 8, false) != &font);
        QCOMPARE(TextShaper::metrics(font).height(), QFontMetricsF(ReportFont(10, false), &low).height());
        QCOMPARE(TextShaper::metrics(font).ascent(), QFontMetricsF(ReportFont(10, false), &low).ascent());

        // Another device, other metrics: the fonts are set up anew on it.
        shaper.setDevice(&high);
        QCOMPARE(shaper.device(), &high);
        const TextShaper::Font& atHigh = shaper.font(QStringLiteral("Arial"), 10, false);
        QCOMPARE(TextShaper::metrics(atHigh).height(), QFontMetricsF(ReportFont(10, false), &high).height());
        QVERIFY(TextShaper::metrics(atHigh).height() > 5 * QFontMetricsF(ReportFont(10, false), &low).height());
        QCOMPARE(shaper.shape(shaper.font(QStringLiteral("Arial"), 10, false), QStringLiteral("Total")).width,
                 LayOut(QStringLiteral("Total"), ReportFont(10, false), &high).width);
    }

    void aTextIsLaidOutOnceAndGivesItsOwnLayout()
    {
        QImage device = Device(600);
        TextShaper shaper;
        shaper.setDevice(&device);
        TextShaper::Font& font = shaper.font(QStringLiteral("Arial"), 10, false);
        const QString text = QStringLiteral("AVATAR (mmol/min/kPa)");
        const qsizetype before = shaper.layoutCount();
        const TextShaper::Shaped first = shaper.shape(font, text);
        QCOMPARE(shaper.layoutCount(), before + 1);
        const Layout layout = LayOut(text, ReportFont(10, false), &device);
        QCOMPARE(first.width, layout.width);
        QCOMPARE(layout.runs.size(), 1);
        QVERIFY(first.mixed.isEmpty());
        QCOMPARE(first.font, layout.runs.front().rawFont());
        QCOMPARE(first.glyphs, layout.runs.front().glyphIndexes());
        QCOMPARE(first.offsets, Offsets(layout.runs.front()));

        // The second time it is remembered, not laid out.
        const TextShaper::Shaped& again = shaper.shape(font, text);
        QCOMPARE(shaper.layoutCount(), before + 1);
        QCOMPARE(again.glyphs, first.glyphs);
        QCOMPARE(again.width, first.width);
    }

    void numbersAndDatesArePutTogetherFromTheirCharacters()
    {
        QImage device = Device(600);
        TextShaper shaper;
        shaper.setDevice(&device);
        for (const bool bold : {false, true})
        {
            TextShaper::Font& font = shaper.font(QStringLiteral("Arial"), 10, bold);
            const QFont reference = ReportFont(10, bold);
            // Every character and pair of characters of numbers and dates,
            // learnt once; the first texts put together are checked against
            // their own layout as well.
            const QString characters = QStringLiteral("0123456789./-");
            for (const QChar first : characters)
            {
                for (const QChar second : characters)
                    shaper.shape(font, QString(first) + second);
            }

            // Numbers of characters and pairs seen before take no layout at
            // all, and come out as the layout of the whole text would have.
            const QStringList fresh = {QStringLiteral("12/21/2021"), QStringLiteral("-1.71"),
                                       QStringLiteral("11/11/2011"), QStringLiteral("102.41")};
            const qsizetype before = shaper.layoutCount();
            for (const QString& text : fresh)
            {
                const TextShaper::Shaped& shaped = shaper.shape(font, text);
                const Layout layout = LayOut(text, reference, &device);
                QCOMPARE(layout.runs.size(), 1);
                QVERIFY2(shaped.width == layout.width, qPrintable(text));
                QCOMPARE(shaped.font, layout.runs.front().rawFont());
                QCOMPARE(shaped.glyphs, layout.runs.front().glyphIndexes());
                QCOMPARE(shaped.offsets, Offsets(layout.runs.front()));
            }
            QCOMPARE(shaper.layoutCount(), before);
        }
    }

    void aPairsKerningIsPartOfTheWidth()
    {
        // Arial kerns "11": put together from two lone "1", the width is the
        // pair's, not twice the single character's.
        QImage device = Device(600);
        TextShaper shaper;
        shaper.setDevice(&device);
        TextShaper::Font& font = shaper.font(QStringLiteral("Arial"), 10, false);
        const double one = shaper.shape(font, QStringLiteral("1")).width;
        const double pair = shaper.shape(font, QStringLiteral("11")).width;
        const double laidOut = LayOut(QStringLiteral("11"), ReportFont(10, false), &device).width;
        QCOMPARE(pair, laidOut);
        QVERIFY2(pair != 2 * one, qPrintable(QStringLiteral("%1 %2").arg(pair).arg(one)));
    }

    void textsOfSeveralFontsKeepEveryRun()
    {
        // A sign the report font does not have is drawn in another font: the
        // text keeps both runs, placed from the left end of the baseline.
        QImage device = Device(600);
        TextShaper shaper;
        shaper.setDevice(&device);
        TextShaper::Font& font = shaper.font(QStringLiteral("Arial"), 10, false);
        const QString text = QStringLiteral("Key \u2318 K");
        const Layout layout = LayOut(text, ReportFont(10, false), &device);
        QVERIFY2(layout.runs.size() > 1, "no fallback font for U+2318");
        const TextShaper::Shaped& shaped = shaper.shape(font, text);
        QCOMPARE(shaped.width, layout.width);
        QVERIFY(shaped.glyphs.isEmpty());
        QCOMPARE(shaped.mixed.size(), layout.runs.size());
        for (qsizetype i = 0; i < layout.runs.size(); ++i)
        {
            QCOMPARE(shaped.mixed[i].glyphIndexes(), layout.runs[i].glyphIndexes());
            const QList<QPointF> expected = layout.runs[i].positions();
            const QList<QPointF> positions = shaped.mixed[i].positions();
            QCOMPARE(positions.size(), expected.size());
            for (qsizetype g = 0; g < positions.size(); ++g)
                QCOMPARE(positions[g], expected[g] - QPointF(0, layout.ascent));
        }
    }

    void anEmptyTextIsNothingWide()
    {
        QImage device = Device(600);
        TextShaper shaper;
        shaper.setDevice(&device);
        const TextShaper::Shaped& empty = shaper.shape(shaper.font(QStringLiteral("Arial"), 10, false), QString());
        QCOMPARE(empty.width, 0.0);
        QVERIFY(empty.glyphs.isEmpty());
    }
};

CALVEX_TEST(TestTextShaper)
#include "TestTextShaper.moc"
