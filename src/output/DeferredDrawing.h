#pragma once

#include <QColor>
#include <QGlyphRun>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRawFont>

class QPainter;

// What a page target keeps back from its painter, and the painter's pen and
// origin as they are now, so that a page of many thousand marks and cells
// costs few calls to the painter:
// - printed text is kept back and drawn as one run of glyphs, in the order
//   printed, up to the next operation that is not text in the same font and
//   pen: a table page's cells become one piece of text instead of one each.
//   The glyphs land where the printed texts put them;
// - solid points, circles and lines with one centre and one pen, drawn one
//   after the other (a chart's circled cross: its dot, its circle and its two
//   strokes), are kept back and drawn as one outline with one drawPath;
//   patterned ones are drawn one by one, each running its dash pattern as it
//   does when drawn alone;
// - a shape is drawn around a local origin at its own centre. On a PDF page
//   every mark of a chart then writes the same path text, only its origin
//   differs, and the page's compression folds the repeats away; on a picture
//   it is the same drawing. Text is drawn with the origin at the page's corner;
// - the pen reaches the painter only when it changes.
// Text and shapes are never kept back at once: adding one draws the other.
// Whoever draws on the painter otherwise calls flush first (or painterAt /
// painterAtCorner, which leave the painter's state known).
//
// Places are device pixels from the page's corner.
class DeferredDrawing
{
public:
    // A pen as a target's DrawWidth (device pixels) and DrawStyle give it:
    // 0 solid, 1 dash, 2 dot, 3 dash-dot, 4 dash-dot-dot, 5 no line.
    struct Pen
    {
        QColor color;
        int width = 1;
        int style = 0;
        bool operator==(const Pen&) const = default;

        Qt::PenStyle qtStyle() const;
    };

    // Draws on painter, which outlives this object.
    explicit DeferredDrawing(QPainter& painter);
    DeferredDrawing(const DeferredDrawing&) = delete;
    DeferredDrawing& operator=(const DeferredDrawing&) = delete;

    // The painter has just begun: its pen and origin are its defaults.
    void painterBegun();

    // Keeps back glyphs of font in pen, at baseline plus each offset along it.
    void addGlyphs(const QRawFont& font, const Pen& pen, const QList<quint32>& glyphs, const QList<float>& offsets,
                   const QPointF& baseline);
    // Keeps back a run of glyphs in pen, each at baseline plus its own position.
    void addGlyphRun(const QGlyphRun& run, const Pen& pen, const QPointF& baseline);

    // The outline that a shape centred at anchor in pen joins, in coordinates
    // relative to the anchor: kept-back text, and shapes around another
    // anchor or in another pen, are drawn first. Call shapeAdded after adding
    // to it.
    QPainterPath& shapesAround(const QPointF& anchor, const Pen& pen);
    void shapeAdded();

    // Draws whatever is kept back.
    void flush();

    // The painter with nothing kept back, its origin at anchor and pen set.
    QPainter& painterAt(const QPointF& anchor, const Pen& pen);
    // The painter with nothing kept back and its origin at the page's corner.
    QPainter& painterAtCorner();

    bool hasPendingText() const { return !m_text.glyphs.isEmpty(); }
    bool hasPendingShapes() const { return !m_shapes.path.isEmpty(); }

private:
    // Solid shapes not drawn yet: outlines in one pen around one origin.
    struct PendingShapes
    {
        Pen pen;
        QPointF origin;
        QPainterPath path;
    };

    // Printed text not drawn yet: glyphs of one font in one pen, at their
    // places on the page.
    struct PendingText
    {
        Pen pen;
        QRawFont font;
        QList<quint32> glyphs;
        QList<QPointF> positions;
    };

    // Room in the pending text for glyphs of font in pen: what is pending in
    // another font or pen, and any shapes, are drawn first.
    void prepareToAdd(const QRawFont& font, const Pen& pen);
    void drawPendingText();
    void drawPendingShapes();
    void usePen(const Pen& pen);
    void moveOrigin(const QPointF& anchor);
    void resetOrigin();

    QPainter& m_painter;
    PendingText m_text;
    PendingShapes m_shapes;

    // What the painter's pen is now, so that it is replaced only on a change.
    bool m_painterPenStale = true;
    Pen m_painterPen;

    // Where the painter's origin is now.
    QPointF m_origin;
};
