#include "output/PainterTarget.h"

#include "output/ReportFonts.h"
#include "platform/RuntimeError.h"

#include <QPaintDevice>
#include <QStringView>

#include <algorithm>

namespace
{
constexpr double TwipsPerInch = 1440;
} // namespace

QString PainterTarget::defaultTypeface()
{
    return ReportFonts::typeface();
}

void PainterTarget::setResolution(double dotsPerInch)
{
    // Text printed at the old resolution is drawn at it.
    if (m_painter.isActive())
        m_deferred.flush();
    m_dotsPerInch = dotsPerInch;
    m_pixelsPerTwip = dotsPerInch / TwipsPerInch;
    // Fonts are measured on the device, at its resolution: anew, once next needed.
    m_shaper.setDevice(nullptr);
    fontChanged();
}

QPainter& PainterTarget::activePainter()
{
    if (!m_painter.isActive())
    {
        aboutToPaint();
        if (!m_painter.begin(paintDevice()))
            throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PainterTarget"),
                               QStringLiteral("The page could not be drawn on the output device."));
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
        m_deferred.painterBegun();
    }
    m_deferred.flush();
    return m_painter;
}

QPainter& PainterTarget::painter()
{
    activePainter();
    return m_deferred.painterAtCorner();
}

bool PainterTarget::endPainting()
{
    if (!m_painter.isActive())
        return true;
    m_deferred.flush();
    return m_painter.end();
}

void PainterTarget::homePosition()
{
    m_currentX = ScaleLeft();
    m_currentY = ScaleTop();
}

TextShaper& PainterTarget::shaper()
{
    if (!m_shaper.device())
        m_shaper.setDevice(paintDevice());
    return m_shaper;
}

TextShaper::Font& PainterTarget::currentFont()
{
    if (!m_font)
        m_font = &shaper().font(m_typeface, m_fontSize, m_fontBold);
    return *m_font;
}

void PainterTarget::fontChanged()
{
    m_font = nullptr;
}

void PainterTarget::stateSet(StateItem item, bool changed)
{
    if (changed && (item == StateItem::Font || item == StateItem::FontSize || item == StateItem::FontBold))
        fontChanged();
}

double PainterTarget::TextWidth(const QString& text)
{
    TextShaper::Font& font = currentFont();
    double widest = 0;
    if (!text.contains(u'\n'))
        widest = shaper().shape(font, text).width;
    else
    {
        for (QStringView line : QStringView(text).split(u'\n'))
            widest = std::max(widest, shaper().shape(font, line.toString()).width);
    }
    return widest / m_pixelsPerTwip;
}

double PainterTarget::TextHeight(const QString& text)
{
    return double(text.count(u'\n') + 1) * TextShaper::metrics(currentFont()).height() / m_pixelsPerTwip;
}

void PainterTarget::Print(const QString& text)
{
    // A device that cannot be drawn on says so at the first text, too.
    if (!m_painter.isActive())
        activePainter();
    TextShaper::Font& font = currentFont();
    const QFontMetricsF& metrics = TextShaper::metrics(font);
    const DeferredDrawing::Pen pen = penFor(m_foreColor);

    const double x = toDevice(m_currentX);
    double baseline = toDevice(m_currentY) + metrics.ascent();
    if (!text.contains(u'\n'))
        printLine(font, text, QPointF(x, baseline), pen);
    else
    {
        for (QStringView line : QStringView(text).split(u'\n'))
        {
            printLine(font, line.toString(), QPointF(x, baseline), pen);
            baseline += metrics.height();
        }
    }

    m_currentY += TextHeight(text);
    m_currentX = ScaleLeft();
}

void PainterTarget::printLine(TextShaper::Font& font, const QString& line, const QPointF& baseline,
                              const DeferredDrawing::Pen& pen)
{
    // A pen that draws no line draws no text either.
    if (line.isEmpty() || pen.qtStyle() == Qt::NoPen)
        return;
    const TextShaper::Shaped& text = shaper().shape(font, line);
    if (text.mixed.isEmpty())
    {
        m_deferred.addGlyphs(text.font, pen, text.glyphs, text.offsets, baseline);
        return;
    }
    for (const QGlyphRun& run : text.mixed)
        m_deferred.addGlyphRun(run, pen, baseline);
}

QPainterPath& PainterTarget::shapesAround(const QPointF& anchor, const DeferredDrawing::Pen& pen)
{
    // A device that cannot be drawn on says so at the first shape.
    if (!m_painter.isActive())
        activePainter();
    return m_deferred.shapesAround(anchor, pen);
}

DeferredDrawing::Pen PainterTarget::penFor(const QColor& color) const
{
    return DeferredDrawing::Pen{color.isValid() ? color : m_foreColor, m_drawWidth, m_drawStyle};
}

void PainterTarget::Line(double x1, double y1, double x2, double y2, const QColor& color, bool box)
{
    const QPointF from(toDevice(x1), toDevice(y1));
    const QPointF to(toDevice(x2), toDevice(y2));
    const QPointF centre = (from + to) / 2;
    const DeferredDrawing::Pen pen = penFor(color);
    if (box)
    {
        activePainter();
        m_deferred.painterAt(centre, pen).drawRect(QRectF(from - centre, to - centre).normalized());
        return;
    }
    QPainterPath& path = shapesAround(centre, pen);
    path.moveTo(from - centre);
    path.lineTo(to - centre);
    m_deferred.shapeAdded();
}

void PainterTarget::PSet(double x, double y, const QColor& color)
{
    // A point of a round-capped pen is a dot of the pen's width: a stroke too
    // short to see, drawn with round ends, as the painter draws a point.
    constexpr double DotLength = 0.001;
    QPainterPath& path = shapesAround(QPointF(toDevice(x), toDevice(y)), penFor(color));
    path.moveTo(0, 0);
    path.lineTo(0, DotLength);
    m_deferred.shapeAdded();
}

void PainterTarget::Circle(double x, double y, double radius, const QColor& color)
{
    const double r = toDevice(radius);
    shapesAround(QPointF(toDevice(x), toDevice(y)), penFor(color)).addEllipse(QPointF(0, 0), r, r);
    m_deferred.shapeAdded();
}

void PainterTarget::Disc(double x, double y, double radius, const QColor& color)
{
    // Outlines kept back are drawn unfilled: a disc is drawn at once, with
    // a brush of its own that no later outline keeps.
    const double r = toDevice(radius);
    const DeferredDrawing::Pen pen = penFor(color);
    activePainter();
    QPainter& painter = m_deferred.painterAt(QPointF(toDevice(x), toDevice(y)), pen);
    painter.setBrush(pen.color);
    painter.drawEllipse(QPointF(0, 0), r, r);
    painter.setBrush(Qt::NoBrush);
}

void PainterTarget::resetState()
{
    SetFont(defaultTypeface());
    SetFontSize(10);
    SetFontBold(false);
    SetForeColor(QColor(0, 0, 0));
    SetDrawWidth(1);
    SetDrawStyle(0);
    homePosition();
}
