#include "output/TextShaper.h"

#include <QPointF>
#include <QTextLayout>
#include <QVarLengthArray>

#include <algorithm>

class TextShaper::Font
{
public:
    QString typeface;
    double points;
    bool bold;
    QFont font;
    QFontMetricsF metrics;
    QHash<QString, Shaped> texts = {};
    QHash<char16_t, LoneGlyph> alone = {};
    QHash<quint32, GlyphPair> pairs = {}; // first character << 16 | second
    QRawFont loneFont = {};               // the font of every lone glyph
    int composedChecked = 0;
    bool composingTrusted = true;
};

TextShaper::TextShaper() = default;

TextShaper::~TextShaper() = default;

void TextShaper::setDevice(QPaintDevice* device)
{
    m_device = device;
    m_fonts.clear();
}

TextShaper::Font& TextShaper::font(const QString& typeface, double points, bool bold)
{
    for (const std::unique_ptr<Font>& known : m_fonts)
    {
        if (known->typeface == typeface && known->points == points && known->bold == bold)
            return *known;
    }
    QFont font(typeface);
    font.setPointSizeF(points);
    font.setBold(bold);
    // Unhinted glyphs keep their design widths instead of being snapped to the
    // device's pixel grid, so the preview's picture measures close to paper.
    font.setHintingPreference(QFont::PreferNoHinting);
    QFontMetricsF metrics(font, m_device);
    m_fonts.push_back(std::make_unique<Font>(Font{typeface, points, bold, std::move(font), std::move(metrics)}));
    return *m_fonts.back();
}

const QFontMetricsF& TextShaper::metrics(const Font& font)
{
    return font.metrics;
}

TextShaper::LaidOutLine TextShaper::layOut(const Font& font, const QString& line)
{
    ++m_layoutCount;
    QTextLayout layout(line, font.font, m_device);
    layout.beginLayout();
    const QTextLine textLine = layout.createLine();
    layout.endLayout();
    return LaidOutLine{textLine.horizontalAdvance(), textLine.ascent(), layout.glyphRuns()};
}

bool TextShaper::isOneRunOnBaseline(const LaidOutLine& laidOut)
{
    if (laidOut.runs.size() != 1)
        return false;
    const QList<QPointF> positions = laidOut.runs.front().positions();
    return std::all_of(positions.cbegin(), positions.cend(), [&laidOut](const QPointF& position) {
        return position.y() == laidOut.ascent && double(float(position.x())) == position.x();
    });
}

const TextShaper::LoneGlyph* TextShaper::loneGlyph(Font& font, char16_t character)
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

const TextShaper::GlyphPair* TextShaper::glyphPair(Font& font, char16_t first, const LoneGlyph& a, char16_t second,
                                                   const LoneGlyph& b)
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

bool TextShaper::composeOfLoneGlyphs(Font& font, const QString& line, Shaped& text)
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
            text = Shaped();
            return false;
        }
    }
    return true;
}

const TextShaper::Shaped& TextShaper::shape(Font& font, const QString& line)
{
    // Table cells and axis labels repeat the same few texts many times; a
    // report of many visits stops remembering at this many and starts afresh.
    constexpr qsizetype MaxRemembered = 65536;
    const auto known = font.texts.constFind(line);
    if (known != font.texts.cend())
        return *known;
    if (font.texts.size() >= MaxRemembered)
        font.texts.clear();

    Shaped text;
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
