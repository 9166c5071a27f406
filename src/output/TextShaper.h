#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QHash>
#include <QList>
#include <QRawFont>
#include <QString>

#include <memory>
#include <vector>

class QPaintDevice;

// Turns one-line texts into glyphs and places as a paint device's fonts lay
// them out, and remembers them: a page of many thousand cells and labels is
// shaped once per different text, not once per text printed.
//
// - Each font (typeface, size, bold) is set up once per device and keeps the
//   texts shaped in it: their width and their glyphs.
// - A number or a date is not laid out at all but put together from its
//   characters' glyphs and the kerning of each pair of them, which the font
//   learns once from layouts of the characters and the pairs. The first texts
//   put together in a font are laid out as well and compared; a font whose
//   shaping reaches further than two characters is laid out text by text from
//   then on.
//
// Widths and places are device pixels of the device set with setDevice.
class TextShaper
{
public:
    // A one-line text as a font measures and draws it. Most texts are glyphs
    // of one font on the baseline, kept compactly: every visit's date is
    // measured before the first page is drawn.
    struct Shaped
    {
        double width = 0; // device pixels
        QRawFont font;
        QList<quint32> glyphs;
        QList<float> offsets;   // from the text's left end, along the baseline
        QList<QGlyphRun> mixed; // instead: glyphs of several fonts, or off the baseline,
                                // placed from the left end of the baseline
    };

    // A font as the device renders it, with the texts shaped in it so far.
    class Font;

    TextShaper();
    ~TextShaper();
    TextShaper(const TextShaper&) = delete;
    TextShaper& operator=(const TextShaper&) = delete;

    // The device that measures; null until set. Setting it forgets every
    // font: fonts are measured on the device, at its resolution.
    QPaintDevice* device() const { return m_device; }
    void setDevice(QPaintDevice* device);

    // The font of this typeface, size (points) and weight on the device, set
    // up the first time it is asked for. It lives until the next setDevice.
    Font& font(const QString& typeface, double points, bool bold);
    // The line (no line breaks) shaped in font; it stays valid until the
    // next call to shape or setDevice.
    const Shaped& shape(Font& font, const QString& line);

    // The font's line metrics on the device.
    static const QFontMetricsF& metrics(const Font& font);

    // Texts, characters and pairs of characters laid out so far.
    qsizetype layoutCount() const { return m_layoutCount; }

private:
    // A character laid out alone: its glyph and advance (device pixels);
    // not usable when it is no single glyph of the font's own.
    struct LoneGlyph
    {
        quint32 glyph = 0;
        double advance = 0;
        bool usable = false;
    };

    // Two characters laid out side by side: what the first one's advance
    // gains (device pixels); not usable when either changes its glyph.
    struct GlyphPair
    {
        double kerning = 0;
        bool usable = false;
    };

    // One line as QTextLayout lays it out.
    struct LaidOutLine
    {
        double width;  // device pixels
        double ascent; // the baseline's distance from the line's top
        QList<QGlyphRun> runs;
    };

    LaidOutLine layOut(const Font& font, const QString& line);
    // One run of glyphs of one font, all on the baseline at float places.
    static bool isOneRunOnBaseline(const LaidOutLine& laidOut);
    // The character's lone glyph, learnt once; null when it has none.
    const LoneGlyph* loneGlyph(Font& font, char16_t character);
    // The kerning of two lone glyphs side by side, learnt once; null when
    // the pair shapes into other glyphs.
    const GlyphPair* glyphPair(Font& font, char16_t first, const LoneGlyph& a, char16_t second, const LoneGlyph& b);
    // The line put together from its characters' lone glyphs and their
    // pairs' kerning; false when that cannot give the line's own layout.
    bool composeOfLoneGlyphs(Font& font, const QString& line, Shaped& text);

    QPaintDevice* m_device = nullptr;
    std::vector<std::unique_ptr<Font>> m_fonts;
    qsizetype m_layoutCount = 0;
};
