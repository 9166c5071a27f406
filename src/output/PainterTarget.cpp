#include "output/PainterTarget.h"

#include "output/ReportFonts.h"
#include "platform/RuntimeError.h"

#include <QPaintDevice>
#include <QPen>
#include <QStringView>

#include <algorithm>

namespace
{
constexpr double TwipsPerInch = 1440;

Qt::PenStyle PenStyleOf(int drawStyle)
{
    switch (drawStyle)
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
} // namespace

QFont PainterTarget::defaultFont()
{
    QFont font(ReportFonts::typeface());
    font.setPointSizeF(10);
    // Unhinted glyphs keep their design widths instead of being snapped to the
    // device's pixel grid, so the preview's picture measures close to paper.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

void PainterTarget::setResolution(double dotsPerInch)
{
    m_dotsPerInch = dotsPerInch;
    m_pixelsPerTwip = dotsPerInch / TwipsPerInch;
    m_metrics.reset();
}

QPainter& PainterTarget::painter()
{
    if (!m_painter.isActive())
    {
        if (!m_painter.begin(paintDevice()))
            throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PainterTarget"),
                               QStringLiteral("The page could not be drawn on the output device."));
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
        m_painterPenStale = true;
        m_painterFontStale = true;
    }
    return m_painter;
}

void PainterTarget::endPainting()
{
    if (m_painter.isActive())
        m_painter.end();
}

void PainterTarget::homePosition()
{
    m_currentX = ScaleLeft();
    m_currentY = ScaleTop();
}

const QFontMetricsF& PainterTarget::metrics()
{
    if (!m_metrics)
        m_metrics.emplace(m_font, paintDevice());
    return *m_metrics;
}

void PainterTarget::fontChanged()
{
    m_metrics.reset();
    m_painterFontStale = true;
}

void PainterTarget::SetFont(const QString& typeface)
{
    if (m_font.family() == typeface)
        return;
    m_font.setFamily(typeface);
    fontChanged();
}

void PainterTarget::SetFontSize(double points)
{
    if (m_font.pointSizeF() == points)
        return;
    m_font.setPointSizeF(points);
    fontChanged();
}

void PainterTarget::SetFontBold(bool bold)
{
    if (m_font.bold() == bold)
        return;
    m_font.setBold(bold);
    fontChanged();
}

double PainterTarget::TextWidth(const QString& text)
{
    const QFontMetricsF& fm = metrics();
    double widest = 0;
    if (!text.contains(u'\n'))
        widest = fm.horizontalAdvance(text);
    else
    {
        for (QStringView line : QStringView(text).split(u'\n'))
            widest = std::max(widest, fm.horizontalAdvance(line.toString()));
    }
    return widest / m_pixelsPerTwip;
}

double PainterTarget::TextHeight(const QString& text)
{
    return double(text.count(u'\n') + 1) * metrics().height() / m_pixelsPerTwip;
}

void PainterTarget::Print(const QString& text)
{
    QPainter& p = painter();
    if (m_painterFontStale)
    {
        p.setFont(m_font);
        m_painterFontStale = false;
    }
    usePen(m_foreColor);

    const QFontMetricsF& fm = metrics();
    const double x = toDevice(m_currentX);
    double baseline = toDevice(m_currentY) + fm.ascent();
    if (!text.contains(u'\n'))
        p.drawText(QPointF(x, baseline), text);
    else
    {
        for (QStringView line : QStringView(text).split(u'\n'))
        {
            p.drawText(QPointF(x, baseline), line.toString());
            baseline += fm.height();
        }
    }

    m_currentY += TextHeight(text);
    m_currentX = ScaleLeft();
}

void PainterTarget::usePen(const QColor& color)
{
    const QColor& wanted = color.isValid() ? color : m_foreColor;
    if (!m_painterPenStale && m_penColor == wanted && m_penWidth == m_drawWidth && m_penStyle == m_drawStyle)
        return;
    m_penColor = wanted;
    m_penWidth = m_drawWidth;
    m_penStyle = m_drawStyle;
    m_painterPenStale = false;

    // No transformation is set, so the width is in device pixels as it is.
    QPen pen(wanted, std::max(m_drawWidth, 1), PenStyleOf(m_drawStyle), Qt::RoundCap, Qt::RoundJoin);
    m_painter.setPen(pen);
}

void PainterTarget::Line(double x1, double y1, double x2, double y2, const QColor& color, bool box)
{
    QPainter& p = painter();
    usePen(color);
    const QPointF from(toDevice(x1), toDevice(y1));
    const QPointF to(toDevice(x2), toDevice(y2));
    if (box)
        p.drawRect(QRectF(from, to).normalized());
    else
        p.drawLine(from, to);
}

void PainterTarget::PSet(double x, double y, const QColor& color)
{
    QPainter& p = painter();
    // A point of a round-capped pen is a dot of the pen's width.
    usePen(color);
    p.drawPoint(QPointF(toDevice(x), toDevice(y)));
}

void PainterTarget::Circle(double x, double y, double radius, const QColor& color)
{
    QPainter& p = painter();
    usePen(color);
    const double r = toDevice(radius);
    p.drawEllipse(QPointF(toDevice(x), toDevice(y)), r, r);
}
