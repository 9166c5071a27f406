#include "output/PainterTarget.h"

#include "output/ReportFonts.h"
#include "platform/RuntimeError.h"

#include <QPaintDevice>
#include <QPen>
#include <QStringView>
#include <QTextLayout>
#include <QTransform>

#include <algorithm>
#include <cmath>

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

QString PainterTarget::defaultTypeface()
{
    return ReportFonts::typeface();
}

void PainterTarget::setResolution(double dotsPerInch)
{
    // Text printed at the old resolution is drawn at it.
    if (m_painter.isActive())
        drawPendingText();
    m_dotsPerInch = dotsPerInch;
    m_pixelsPerTwip = dotsPerInch / TwipsPerInch;
    // Fonts are measured on the device, at its resolution.
    m_fonts.clear();
    fontChanged();
}

QPainter& PainterTarget::activePainter()
{
    if (!m_painter.isActive())
    {
        if (!m_painter.begin(paintDevice()))
            throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PainterTarget"),
                               QStringLiteral("The page could not be drawn on the output device."));
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
        m_painterPenStale = true;
        m_origin = QPointF();
    }
    drawPendingText();
    return m_painter;
}

QPainter& PainterTarget::painter()
{
    QPainter& p = activePainter();
    if (!m_origin.isNull())
    {
        m_origin = QPointF();
        p.resetTransform();
    }
    return p;
}

QPainter& PainterTarget::painterAround(const QPointF& anchor)
{
    // Two anchors closer than this are one: a mark's cross lines have their
    // centre at the mark's centre, give or take the last bit of a double.
    constexpr double SameOrigin = 1e-6;
    QPainter& p = activePainter();
    if (std::abs(anchor.x() - m_origin.x()) > SameOrigin || std::abs(anchor.y() - m_origin.y()) > SameOrigin)
    {
        m_origin = anchor;
        p.setTransform(QTransform::fromTranslate(anchor.x(), anchor.y()));
    }
    return p;
}

void PainterTarget::endPainting()
{
    if (m_painter.isActive())
    {
        drawPendingText();
        m_painter.end();
    }
}

void PainterTarget::homePosition()
{
    m_currentX = ScaleLeft();
    m_currentY = ScaleTop();
}

PainterTarget::DeviceFont& PainterTarget::currentFont()
{
    if (m_font)
        return *m_font;
    for (const std::unique_ptr<DeviceFont>& known : m_fonts)
    {
        if (known->typeface == m_typeface && known->points == m_fontSize && known->bold == m_fontBold)
        {
            m_font = known.get();
            return *m_font;
        }
    }
    QFont font(m_typeface);
    font.setPointSizeF(m_fontSize);
    font.setBold(m_fontBold);
    // Unhinted glyphs keep their design widths instead of being snapped to the
    // device's pixel grid, so the preview's picture measures close to paper.
    font.setHintingPreference(QFont::PreferNoHinting);
    QFontMetricsF metrics(font, paintDevice());
    m_fonts.push_back(std::make_unique<DeviceFont>(
        DeviceFont{m_typeface, m_fontSize, m_fontBold, std::move(font), std::move(metrics), {}}));
    m_font = m_fonts.back().get();
    return *m_font;
}

void PainterTarget::fontChanged()
{
    m_font = nullptr;
}

void PainterTarget::SetFont(const QString& typeface)
{
    if (m_typeface == typeface)
        return;
    m_typeface = typeface;
    fontChanged();
}

void PainterTarget::SetFontSize(double points)
{
    // A size that is no size leaves the font as it is.
    if (m_fontSize == points || !(points > 0))
        return;
    m_fontSize = points;
    fontChanged();
}

void PainterTarget::SetFontBold(bool bold)
{
    if (m_fontBold == bold)
        return;
    m_fontBold = bold;
    fontChanged();
}

const PainterTarget::ShapedText& PainterTarget::shaped(DeviceFont& font, const QString& line)
{
    // Table cells and axis labels repeat the same few texts many times; a
    // report of many visits stops remembering at this many and starts afresh.
    constexpr qsizetype MaxRemembered = 65536;
    const auto known = font.texts.constFind(line);
    if (known != font.texts.cend())
        return *known;
    if (font.texts.size() >= MaxRemembered)
        font.texts.clear();

    // Laid out as the painter lays out a text it draws, glyph for glyph; the
    // line's advance is the text's width as the font's metrics give it.
    QTextLayout layout(line, font.font, paintDevice());
    layout.beginLayout();
    const QTextLine textLine = layout.createLine();
    layout.endLayout();
    ShapedText text;
    text.width = textLine.horizontalAdvance();
    QList<QGlyphRun> runs = layout.glyphRuns();
    const auto compact = [&runs, &textLine] {
        if (runs.size() != 1)
            return false;
        const QList<QPointF> positions = runs.front().positions();
        return std::all_of(positions.cbegin(), positions.cend(), [&textLine](const QPointF& position) {
            return position.y() == textLine.ascent() && double(float(position.x())) == position.x();
        });
    };
    if (compact())
    {
        text.font = runs.front().rawFont();
        text.glyphs = runs.front().glyphIndexes();
        for (const QPointF& position : runs.front().positions())
            text.offsets.append(float(position.x()));
    }
    else
    {
        for (QGlyphRun& run : runs)
        {
            QList<QPointF> positions = run.positions();
            for (QPointF& position : positions)
                position.ry() -= textLine.ascent();
            run.setPositions(positions);
        }
        text.mixed = std::move(runs);
    }
    return *font.texts.insert(line, std::move(text));
}

double PainterTarget::TextWidth(const QString& text)
{
    DeviceFont& font = currentFont();
    double widest = 0;
    if (!text.contains(u'\n'))
        widest = shaped(font, text).width;
    else
    {
        for (QStringView line : QStringView(text).split(u'\n'))
            widest = std::max(widest, shaped(font, line.toString()).width);
    }
    return widest / m_pixelsPerTwip;
}

double PainterTarget::TextHeight(const QString& text)
{
    return double(text.count(u'\n') + 1) * currentFont().metrics.height() / m_pixelsPerTwip;
}

void PainterTarget::Print(const QString& text)
{
    // A device that cannot be drawn on says so at the first text, too.
    if (!m_painter.isActive())
        activePainter();
    DeviceFont& font = currentFont();
    const Pen pen = penFor(m_foreColor);

    const double x = toDevice(m_currentX);
    double baseline = toDevice(m_currentY) + font.metrics.ascent();
    if (!text.contains(u'\n'))
        printLine(font, text, QPointF(x, baseline), pen);
    else
    {
        for (QStringView line : QStringView(text).split(u'\n'))
        {
            printLine(font, line.toString(), QPointF(x, baseline), pen);
            baseline += font.metrics.height();
        }
    }

    m_currentY += TextHeight(text);
    m_currentX = ScaleLeft();
}

void PainterTarget::printLine(DeviceFont& font, const QString& line, const QPointF& baseline, const Pen& pen)
{
    // A pen that draws no line draws no text either.
    if (line.isEmpty() || PenStyleOf(pen.style) == Qt::NoPen)
        return;
    const ShapedText& text = shaped(font, line);
    if (text.mixed.isEmpty())
    {
        prepareToAdd(text.font, pen);
        m_pending.glyphs.append(text.glyphs);
        for (const float offset : text.offsets)
            m_pending.positions.append(QPointF(baseline.x() + double(offset), baseline.y()));
        return;
    }
    for (const QGlyphRun& run : text.mixed)
    {
        prepareToAdd(run.rawFont(), pen);
        m_pending.glyphs.append(run.glyphIndexes());
        for (const QPointF& position : run.positions())
            m_pending.positions.append(baseline + position);
    }
}

void PainterTarget::prepareToAdd(const QRawFont& font, const Pen& pen)
{
    if (!m_pending.glyphs.isEmpty() && (m_pending.pen != pen || m_pending.font != font))
        drawPendingText();
    if (m_pending.glyphs.isEmpty())
    {
        m_pending.pen = pen;
        m_pending.font = font;
    }
}

void PainterTarget::drawPendingText()
{
    if (m_pending.glyphs.isEmpty())
        return;
    if (!m_origin.isNull())
    {
        m_origin = QPointF();
        m_painter.resetTransform();
    }
    usePen(m_pending.pen);
    QGlyphRun run;
    run.setRawFont(m_pending.font);
    run.setGlyphIndexes(m_pending.glyphs);
    run.setPositions(m_pending.positions);
    m_pending.glyphs.clear();
    m_pending.positions.clear();
    m_painter.drawGlyphRun(QPointF(0, 0), run);
}

PainterTarget::Pen PainterTarget::penFor(const QColor& color) const
{
    return Pen{color.isValid() ? color : m_foreColor, m_drawWidth, m_drawStyle};
}

void PainterTarget::usePen(const Pen& pen)
{
    if (!m_painterPenStale && m_painterPen == pen)
        return;
    m_painterPen = pen;
    m_painterPenStale = false;

    // Only translations are ever set, so the width is in device pixels as it is.
    m_painter.setPen(QPen(pen.color, std::max(pen.width, 1), PenStyleOf(pen.style), Qt::RoundCap, Qt::RoundJoin));
}

void PainterTarget::Line(double x1, double y1, double x2, double y2, const QColor& color, bool box)
{
    const QPointF from(toDevice(x1), toDevice(y1));
    const QPointF to(toDevice(x2), toDevice(y2));
    const QPointF centre = (from + to) / 2;
    QPainter& p = painterAround(centre);
    usePen(penFor(color));
    if (box)
        p.drawRect(QRectF(from - centre, to - centre).normalized());
    else
        p.drawLine(from - centre, to - centre);
}

void PainterTarget::PSet(double x, double y, const QColor& color)
{
    QPainter& p = painterAround(QPointF(toDevice(x), toDevice(y)));
    // A point of a round-capped pen is a dot of the pen's width.
    usePen(penFor(color));
    p.drawPoint(QPointF(0, 0));
}

void PainterTarget::Circle(double x, double y, double radius, const QColor& color)
{
    QPainter& p = painterAround(QPointF(toDevice(x), toDevice(y)));
    usePen(penFor(color));
    const double r = toDevice(radius);
    p.drawEllipse(QPointF(0, 0), r, r);
}
