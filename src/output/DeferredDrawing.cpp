#include "output/DeferredDrawing.h"

#include <QPainter>
#include <QPen>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace
{
// Two origins closer than this are one: a mark's cross lines have their
// centre at the mark's centre, give or take the last bit of a double.
bool IsSameOrigin(const QPointF& a, const QPointF& b)
{
    constexpr double SameOrigin = 1e-6;
    return std::abs(a.x() - b.x()) <= SameOrigin && std::abs(a.y() - b.y()) <= SameOrigin;
}
} // namespace

Qt::PenStyle DeferredDrawing::Pen::qtStyle() const
{
    switch (style)
    {
    case 1:
        return Qt::DashLine;
    case 2:
        return Qt::DotLine;
    case 3:
        return Qt::DashDotLine;
    case 4:
        return Qt::DashDotDotLine;
    case 5:
        return Qt::NoPen;
    default:
        return Qt::SolidLine;
    }
}

DeferredDrawing::DeferredDrawing(QPainter& painter)
    : m_painter(painter)
{}

void DeferredDrawing::painterBegun()
{
    m_painterPenStale = true;
    m_origin = QPointF();
}

void DeferredDrawing::addGlyphs(const QRawFont& font, const Pen& pen, const QList<quint32>& glyphs,
                                const QList<float>& offsets, const QPointF& baseline)
{
    prepareToAdd(font, pen);
    m_text.glyphs.append(glyphs);
    for (const float offset : offsets)
        m_text.positions.append(QPointF(baseline.x() + double(offset), baseline.y()));
}

void DeferredDrawing::addGlyphRun(const QGlyphRun& run, const Pen& pen, const QPointF& baseline)
{
    prepareToAdd(run.rawFont(), pen);
    m_text.glyphs.append(run.glyphIndexes());
    for (const QPointF& position : run.positions())
        m_text.positions.append(baseline + position);
}

void DeferredDrawing::prepareToAdd(const QRawFont& font, const Pen& pen)
{
    drawPendingShapes();
    if (!m_text.glyphs.isEmpty() && (m_text.pen != pen || m_text.font != font))
        drawPendingText();
    if (m_text.glyphs.isEmpty())
    {
        m_text.pen = pen;
        m_text.font = font;
    }
}

void DeferredDrawing::drawPendingText()
{
    if (m_text.glyphs.isEmpty())
        return;
    resetOrigin();
    usePen(m_text.pen);
    QGlyphRun run;
    run.setRawFont(m_text.font);
    run.setGlyphIndexes(m_text.glyphs);
    run.setPositions(m_text.positions);
    m_text.glyphs.clear();
    m_text.positions.clear();
    m_painter.drawGlyphRun(QPointF(0, 0), run);
}

QPainterPath& DeferredDrawing::shapesAround(const QPointF& anchor, const Pen& pen)
{
    drawPendingText();
    if (!m_shapes.path.isEmpty() && (m_shapes.pen != pen || !IsSameOrigin(anchor, m_shapes.origin)))
        drawPendingShapes();
    if (m_shapes.path.isEmpty())
    {
        m_shapes.pen = pen;
        m_shapes.origin = anchor;
    }
    return m_shapes.path;
}

void DeferredDrawing::shapeAdded()
{
    // Patterned shapes are drawn one by one: each runs its dash pattern as it
    // does when drawn alone, whatever the shapes before it.
    if (m_shapes.pen.style != 0)
        drawPendingShapes();
}

void DeferredDrawing::drawPendingShapes()
{
    if (m_shapes.path.isEmpty())
        return;
    moveOrigin(m_shapes.origin);
    usePen(m_shapes.pen);
    m_painter.drawPath(m_shapes.path);
    m_shapes.path.clear();
}

void DeferredDrawing::flush()
{
    drawPendingText();
    drawPendingShapes();
}

QPainter& DeferredDrawing::painterAt(const QPointF& anchor, const Pen& pen)
{
    flush();
    moveOrigin(anchor);
    usePen(pen);
    return m_painter;
}

QPainter& DeferredDrawing::painterAtCorner()
{
    flush();
    resetOrigin();
    return m_painter;
}

void DeferredDrawing::usePen(const Pen& pen)
{
    if (!m_painterPenStale && m_painterPen == pen)
        return;
    m_painterPen = pen;
    m_painterPenStale = false;

    // Only translations are ever set, so the width is in device pixels as it is.
    m_painter.setPen(QPen(pen.color, std::max(pen.width, 1), pen.qtStyle(), Qt::RoundCap, Qt::RoundJoin));
}

void DeferredDrawing::moveOrigin(const QPointF& anchor)
{
    if (!IsSameOrigin(anchor, m_origin))
    {
        m_origin = anchor;
        m_painter.setTransform(QTransform::fromTranslate(anchor.x(), anchor.y()));
    }
}

void DeferredDrawing::resetOrigin()
{
    if (!m_origin.isNull())
    {
        m_origin = QPointF();
        m_painter.resetTransform();
    }
}
