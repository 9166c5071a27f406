#include "common/TestMain.h"
#include "output/DeferredDrawing.h"

#include <QFont>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QRawFont>
#include <QTest>

namespace
{
// A paint engine that draws nothing and writes down every call that reaches
// it: "origin <x>,<y>", "pen <colour> <width> <style>", "path <elements>",
// "rect", "text".
class RecordingEngine final : public QPaintEngine
{
public:
    RecordingEngine()
        : QPaintEngine(QPaintEngine::AllFeatures)
    {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return QPaintEngine::User; }

    void updateState(const QPaintEngineState& state) override
    {
        if (state.state() & QPaintEngine::DirtyTransform)
            calls.append(QStringLiteral("origin %1,%2").arg(state.transform().dx()).arg(state.transform().dy()));
        if (state.state() & QPaintEngine::DirtyPen)
        {
            const QPen pen = state.pen();
            calls.append(QStringLiteral("pen %1 %2 %3").arg(pen.color().name()).arg(pen.width()).arg(int(pen.style())));
        }
    }
    void drawPath(const QPainterPath& path) override
    {
        calls.append(QStringLiteral("path %1").arg(path.elementCount()));
    }
    void drawRects(const QRectF*, int) override { calls.append(QStringLiteral("rect")); }
    void drawTextItem(const QPointF&, const QTextItem&) override { calls.append(QStringLiteral("text")); }
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}

    QStringList calls;
};

class RecordingDevice final : public QPaintDevice
{
public:
    QPaintEngine* paintEngine() const override { return &engine; }
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric)
        {
        case PdmWidth:
        case PdmHeight:
            return 1000;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 600;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(QPaintDevice::devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }

    mutable RecordingEngine engine;
};

// A painter begun on a recording device, with a deferred drawing over it;
// the calls of the painter's beginning are not recorded.
struct Drawing
{
    Drawing()
    {
        painter.begin(&device);
        deferred.painterBegun();
        // The painter's first state reaches the engine at its first drawing.
        painter.setPen(Qt::NoPen);
        painter.drawRect(QRectF(0, 0, 1, 1));
        device.engine.calls.clear();
    }
    ~Drawing() { painter.end(); }

    QStringList& calls() { return device.engine.calls; }

    RecordingDevice device;
    QPainter painter;
    DeferredDrawing deferred{painter};
};

const DeferredDrawing::Pen Black{QColor(0, 0, 0), 5, 0};
const DeferredDrawing::Pen Red{QColor(255, 0, 0), 5, 0};

// A chart's circled cross: dot, circle and two strokes around one centre.
void CircledCross(DeferredDrawing& deferred, const QPointF& centre, const DeferredDrawing::Pen& pen)
{
    deferred.shapesAround(centre, pen).moveTo(0, 0);
    deferred.shapesAround(centre, pen).lineTo(0, 0.001);
    deferred.shapeAdded();
    deferred.shapesAround(centre, pen).addEllipse(QPointF(0, 0), 10, 10);
    deferred.shapeAdded();
    QPainterPath& across = deferred.shapesAround(centre, pen);
    across.moveTo(-10, 0);
    across.lineTo(10, 0);
    deferred.shapeAdded();
    QPainterPath& down = deferred.shapesAround(centre, pen);
    down.moveTo(0, -10);
    down.lineTo(0, 10);
    deferred.shapeAdded();
}

QRawFont Arial()
{
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(80);
    return QRawFont::fromFont(font);
}
} // namespace

class TestDeferredDrawing : public QObject
{
    Q_OBJECT

private slots:
    void aChartMarkIsOneOutlineAroundItsCentre()
    {
        Drawing d;
        CircledCross(d.deferred, QPointF(100.5, 200.25), Black);
        QVERIFY(d.deferred.hasPendingShapes());
        QVERIFY(d.calls().isEmpty());
        d.deferred.flush();
        QVERIFY(!d.deferred.hasPendingShapes());
        // Dot (2 elements), circle (13), two strokes (2 each): one path.
        QCOMPARE(d.calls(), QStringList({QStringLiteral("origin 100.5,200.25"), QStringLiteral("pen #000000 5 1"),
                                         QStringLiteral("path 19")}));
        // Nothing is left to draw a second time.
        d.deferred.flush();
        QCOMPARE(d.calls().size(), 3);
    }

    void anotherCentreOrPenDrawsWhatIsKeptBack()
    {
        Drawing d;
        CircledCross(d.deferred, QPointF(100, 100), Black);
        CircledCross(d.deferred, QPointF(300, 100), Black);
        // Within a millionth of a pixel a centre is the same centre.
        d.deferred.shapesAround(QPointF(300 + 1e-9, 100), Black).addEllipse(QPointF(0, 0), 20, 20);
        d.deferred.shapeAdded();
        CircledCross(d.deferred, QPointF(300, 100), Red);
        d.deferred.flush();
        QCOMPARE(d.calls(),
                 QStringList({QStringLiteral("origin 100,100"), QStringLiteral("pen #000000 5 1"),
                              QStringLiteral("path 19"), QStringLiteral("origin 300,100"), QStringLiteral("path 32"),
                              QStringLiteral("pen #ff0000 5 1"), QStringLiteral("path 19")}));
    }

    void patternedShapesAreDrawnOneByOne()
    {
        Drawing d;
        const DeferredDrawing::Pen dotted{QColor(0, 0, 0), 1, 2};
        QPainterPath& first = d.deferred.shapesAround(QPointF(50, 50), dotted);
        first.moveTo(-40, 0);
        first.lineTo(40, 0);
        d.deferred.shapeAdded();
        QVERIFY(!d.deferred.hasPendingShapes());
        QPainterPath& second = d.deferred.shapesAround(QPointF(50, 50), dotted);
        second.moveTo(0, -40);
        second.lineTo(0, 40);
        d.deferred.shapeAdded();
        QCOMPARE(d.calls(), QStringList({QStringLiteral("origin 50,50"), QStringLiteral("pen #000000 1 3"),
                                         QStringLiteral("path 2"), QStringLiteral("path 2")}));
    }

    void printedTextIsOneRunUntilTheFontOrPenChanges()
    {
        Drawing d;
        const QRawFont font = Arial();
        const QList<quint32> glyphs = font.glyphIndexesForString(QStringLiteral("12"));
        const QList<float> offsets{0, 40};
        d.deferred.addGlyphs(font, Black, glyphs, offsets, QPointF(10, 100));
        d.deferred.addGlyphs(font, Black, glyphs, offsets, QPointF(10, 200));
        QVERIFY(d.deferred.hasPendingText());
        QVERIFY(d.calls().isEmpty());
        d.deferred.addGlyphs(font, Red, glyphs, offsets, QPointF(10, 300));
        QCOMPARE(d.calls(), QStringList({QStringLiteral("pen #000000 5 1"), QStringLiteral("text")}));
        d.deferred.flush();
        QCOMPARE(d.calls(), QStringList({QStringLiteral("pen #000000 5 1"), QStringLiteral("text"),
                                         QStringLiteral("pen #ff0000 5 1"), QStringLiteral("text")}));
        QVERIFY(!d.deferred.hasPendingText());
    }

    void textAndShapesKeepTheirOrder()
    {
        Drawing d;
        const QRawFont font = Arial();
        const QList<quint32> glyphs = font.glyphIndexesForString(QStringLiteral("7"));
        CircledCross(d.deferred, QPointF(100, 100), Black);
        // Text after a mark draws the mark first, then goes back to the page's corner.
        d.deferred.addGlyphs(font, Black, glyphs, {0}, QPointF(10, 100));
        QVERIFY(!d.deferred.hasPendingShapes());
        QVERIFY(d.deferred.hasPendingText());
        // A mark after text draws the text first.
        CircledCross(d.deferred, QPointF(200, 100), Black);
        QVERIFY(!d.deferred.hasPendingText());
        d.deferred.flush();
        QCOMPARE(d.calls(),
                 QStringList({QStringLiteral("origin 100,100"), QStringLiteral("pen #000000 5 1"),
                              QStringLiteral("path 19"), QStringLiteral("origin 0,0"), QStringLiteral("text"),
                              QStringLiteral("origin 200,100"), QStringLiteral("path 19")}));
    }

    void glyphRunsLandAtTheirOwnPlaces()
    {
        Drawing d;
        QGlyphRun run;
        run.setRawFont(Arial());
        run.setGlyphIndexes(run.rawFont().glyphIndexesForString(QStringLiteral("AB")));
        run.setPositions({QPointF(0, -3), QPointF(50, 0)});
        d.deferred.addGlyphRun(run, Black, QPointF(100, 200));
        d.deferred.addGlyphRun(run, Black, QPointF(100, 300));
        d.deferred.flush();
        QCOMPARE(d.calls(), QStringList({QStringLiteral("pen #000000 5 1"), QStringLiteral("text")}));
    }

    void thePainterIsHandedOutWithNothingKeptBack()
    {
        Drawing d;
        CircledCross(d.deferred, QPointF(100, 100), Black);
        d.deferred.painterAt(QPointF(400, 400), Red).drawRect(QRectF(-5, -5, 10, 10));
        QVERIFY(!d.deferred.hasPendingShapes());
        d.deferred.painterAtCorner().drawRect(QRectF(0, 0, 10, 10));
        QCOMPARE(d.calls(), QStringList({QStringLiteral("origin 100,100"), QStringLiteral("pen #000000 5 1"),
                                         QStringLiteral("path 19"), QStringLiteral("origin 400,400"),
                                         QStringLiteral("pen #ff0000 5 1"), QStringLiteral("rect"),
                                         QStringLiteral("origin 0,0"), QStringLiteral("rect")}));
    }

    void aPainterBegunAnewGetsItsPenAndOriginAgain()
    {
        Drawing d;
        CircledCross(d.deferred, QPointF(100, 100), Black);
        d.deferred.flush();
        d.painter.end();
        d.painter.begin(&d.device);
        d.deferred.painterBegun();
        d.calls().clear();
        CircledCross(d.deferred, QPointF(100, 100), Black);
        d.deferred.flush();
        QCOMPARE(d.calls(), QStringList({QStringLiteral("origin 100,100"), QStringLiteral("pen #000000 5 1"),
                                         QStringLiteral("path 19")}));
    }

    void drawStylesAreThePensStyles()
    {
        const auto style = [](int drawStyle) { return DeferredDrawing::Pen{QColor(), 1, drawStyle}.qtStyle(); };
        QCOMPARE(style(0), Qt::SolidLine);
        QCOMPARE(style(1), Qt::DashLine);
        QCOMPARE(style(2), Qt::DotLine);
        QCOMPARE(style(3), Qt::DashDotLine);
        QCOMPARE(style(4), Qt::DashDotDotLine);
        QCOMPARE(style(5), Qt::NoPen);
        QCOMPARE(style(6), Qt::SolidLine);
    }
};

CALVEX_TEST(TestDeferredDrawing)
#include "TestDeferredDrawing.moc"
