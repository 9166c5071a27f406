#include "output/PainterTarget.h"

#include "output/ReportFonts.h"
#include "platform/RuntimeError.h"

#include <QPaintDevice>
#include <QPen>
#include <QStringView>
#include <QTextLayout>
#include <QTransform>
#include <QVarLengthArray>

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

// Two origins closer than this are one: a mark's cross lines have their
// centre at the mark's centre, give or take the last bit of a double.
bool IsSameOrigin(const QPointF& a, const QPointF& b)
{
    constexpr double SameOrigin = 1e-6;
    return std::abs(a.x() - b.x()) <= SameOrigin && std::abs(a.y() - b.y()) <= SameOrigin;
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
        drawPending();
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
        aboutToPaint();
        if (!m_painter.begin(paintDevice()))
            throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PainterTarget"),
                               QStringLiteral("The page could not be drawn on the output device."));
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setBrush(Qt::NoBrush);
        m_painterPenStale = true;
        m_origin = QPointF();
    }
    drawPending();
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

void PainterTarget::moveOrigin(const QPointF& anchor)
{
    if (!IsSameOrigin(anchor, m_origin))
    {
        m_origin = anchor;
        m_painter.setTransform(QTransform::fromTranslate(anchor.x(), anchor.y()));
    }
}

bool PainterTarget::endPainting()
{
    if (!m_painter.isActive())
        return true;
    drawPending();
    return m_painter.end();
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
        DeviceFont{m_typeface, m_fontSize, m_fontBold, std::move(font), std::move(metrics)}));
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

PainterTarget::LaidOutLine PainterTarget::layOut(const DeviceFont& font, const QString& line)
{
    ++m_layoutCount;
    QTextLayout layout(line, font.font, paintDevice());
    layout.beginLayout();
    const QTextLine textLine = layout.createLine();
    layout.endLayout();
    return LaidOutLine{textLine.horizontalAdvance(), textLine.ascent(), layout.glyphRuns()};
}

bool PainterTarget::isOneRunOnBaseline(const LaidOutLine& laidOut)
{
    if (laidOut.runs.size() != 1)
        return false;
    const QList<QPointF> positions = laidOut.runs.front().positions();
    return std::all_of(positions.cbegin(), positions.cend(), [&laidOut](const QPointF& position) {
        return position.y() == laidOut.ascent && double(float(position.x())) == position.x();
    });
}

const PainterTarget::LoneGlyph* PainterTarget::loneGlyph(DeviceFont& font, char16_t character)
{
    // Digits and the marks of numbers and dates: the characters of table
    // cells and axis labels.
    static const QString Candidates = QStringLiteral("0123456789.,-/: ");
    auto known = font.alone.constFind(character);
    if (known == font.alone.cend())
    {
        LoneGlyph lone;
        if (Candidates.contains(QChar(character)))
        {
            const LaidOutLine single = layOut(font, QString(QChar(character)));
            lone.usable = isOneRunOnBaseline(single) && single.runs.front().glyphIndexes().size() == 1 &&
                          (font.alone.isEmpty() || single.runs.front().rawFont() == font.loneFont);
            if (lone.usable)
            {
                if (font.alone.isEmpty())
                    font.loneFont = single.runs.front().rawFont();
                lone.glyph = single.runs.front().glyphIndexes().front();
                lone.advance = single.width;
            }
        }
        known = font.alone.insert(character, lone);
    }
    return known->usable ? &*known : nullptr;
}

const PainterTarget::GlyphPair* PainterTarget::glyphPair(DeviceFont& font, char16_t first, const LoneGlyph& a,
                                                         char16_t second, const LoneGlyph& b)
{
    const quint32 key = (quint32(first) << 16) | second;
    auto known = font.pairs.constFind(key);
    if (known == font.pairs.cend())
    {
        // Side by side the two keep their glyphs, and only the first one's
        // advance may change: the font's kerning of the pair.
        GlyphPair pair;
        const LaidOutLine laidOut = layOut(font, QString(QChar(first)) + QChar(second));
        if (isOneRunOnBaseline(laidOut) && laidOut.runs.front().rawFont() == font.loneFont &&
            laidOut.runs.front().glyphIndexes() == QList<quint32>{a.glyph, b.glyph})
        {
            const double secondAt = laidOut.runs.front().positions().back().x();
            pair.usable = laidOut.width == secondAt + b.advance;
            pair.kerning = secondAt - a.advance;
        }
        known = font.pairs.insert(key, pair);
    }
    return known->usable ? &*known : nullptr;
}

bool PainterTarget::composeOfLoneGlyphs(DeviceFont& font, const QString& line, ShapedText& text)
{
    if (!font.composingTrusted)
        return false;
    QVarLengthArray<const LoneGlyph*, 32> lone;
    for (const QChar character : line)
    {
        const LoneGlyph* glyph = loneGlyph(font, character.unicode());
        if (!glyph)
            return false;
        lone.append(glyph);
    }
    text.glyphs.reserve(line.size());
    text.offsets.reserve(line.size());
    double x = 0;
    for (qsizetype i = 0; i < line.size(); ++i)
    {
        text.glyphs.append(lone[i]->glyph);
        text.offsets.append(float(x));
        x += lone[i]->advance;
        if (i + 1 < line.size())
        {
            const GlyphPair* pair = glyphPair(font, line[i].unicode(), *lone[i], line[i + 1].unicode(), *lone[i + 1]);
            if (!pair)
                return false;
            x += pair->kerning;
        }
    }
    text.width = x;
    text.font = font.loneFont;

    // The first texts put together are laid out as well; a font whose
    // shaping reaches further than two characters is caught here and is laid
    // out text by text from then on.
    constexpr int Checked = 16;
    if (font.composedChecked < Checked)
    {
        ++font.composedChecked;
        const LaidOutLine laidOut = layOut(font, line);
        QList<float> offsets;
        if (isOneRunOnBaseline(laidOut))
        {
            for (const QPointF& position : laidOut.runs.front().positions())
                offsets.append(float(position.x()));
        }
        if (offsets.isEmpty() || laidOut.width != text.width || laidOut.runs.front().rawFont() != text.font ||
            laidOut.runs.front().glyphIndexes() != text.glyphs || offsets != text.offsets)
        {
            font.composingTrusted = false;
            text = ShapedText();
            return false;
        }
    }
    return true;
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

    ShapedText text;
    // A number or a date is put together from its characters' glyphs and the
    // kerning of each pair of them, each learnt once from the layout of the
    // character or the pair: the glyphs and places that the text's own layout
    // gives, without laying it out. Every visit's values and date are
    // measured, most of them different.
    if (!line.isEmpty() && composeOfLoneGlyphs(font, line, text))
        return *font.texts.insert(line, std::move(text));

    // Laid out as the painter lays out a text it draws, glyph for glyph; the
    // line's advance is the text's width as the font's metrics give it.
    LaidOutLine laidOut = layOut(font, line);
    text.width = laidOut.width;
    if (isOneRunOnBaseline(laidOut))
    {
        const QGlyphRun& run = laidOut.runs.front();
        text.font = run.rawFont();
        text.glyphs = run.glyphIndexes();
        for (const QPointF& position : run.positions())
            text.offsets.append(float(position.x()));
    }
    else
    {
        for (QGlyphRun& run : laidOut.runs)
        {
            QList<QPointF> positions = run.positions();
            for (QPointF& position : positions)
                position.ry() -= laidOut.ascent;
            run.setPositions(positions);
        }
        text.mixed = std::move(laidOut.runs);
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
    drawPendingShapes();
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

QPainterPath& PainterTarget::shapesAround(const QPointF& anchor, const Pen& pen)
{
    // A device that cannot be drawn on says so at the first shape.
    if (!m_painter.isActive())
        activePainter();
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

void PainterTarget::drawPendingShapes()
{
    if (m_shapes.path.isEmpty())
        return;
    moveOrigin(m_shapes.origin);
    usePen(m_shapes.pen);
    m_painter.drawPath(m_shapes.path);
    m_shapes.path.clear();
}

void PainterTarget::drawPending()
{
    drawPendingText();
    drawPendingShapes();
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
    const Pen pen = penFor(color);
    if (box)
    {
        activePainter();
        moveOrigin(centre);
        usePen(pen);
        m_painter.drawRect(QRectF(from - centre, to - centre).normalized());
        return;
    }
    QPainterPath& path = shapesAround(centre, pen);
    path.moveTo(from - centre);
    path.lineTo(to - centre);
    drawPatternedShapesAtOnce();
}

void PainterTarget::PSet(double x, double y, const QColor& color)
{
    // A point of a round-capped pen is a dot of the pen's width: a stroke too
    // short to see, drawn with round ends, as the painter draws a point.
    constexpr double DotLength = 0.001;
    QPainterPath& path = shapesAround(QPointF(toDevice(x), toDevice(y)), penFor(color));
    path.moveTo(0, 0);
    path.lineTo(0, DotLength);
    drawPatternedShapesAtOnce();
}

void PainterTarget::Circle(double x, double y, double radius, const QColor& color)
{
    const double r = toDevice(radius);
    shapesAround(QPointF(toDevice(x), toDevice(y)), penFor(color)).addEllipse(QPointF(0, 0), r, r);
    drawPatternedShapesAtOnce();
}

void PainterTarget::drawPatternedShapesAtOnce()
{
    // Patterned shapes are drawn one by one: each runs its dash pattern as it
    // does when drawn alone, whatever the shapes before it.
    if (m_shapes.pen.style != 0)
        drawPendingShapes();
}
