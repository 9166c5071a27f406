#pragma once

#include "output/OutputTarget.h"

#include <QColor>
#include <QFont>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QHash>
#include <QList>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QRawFont>

#include <memory>
#include <vector>

class QPaintDevice;

// An output target that draws with a QPainter on a paint device: the base of
// the printer, the PDF file and the picture targets. The scale is twips (1440
// per inch) with the origin at the page's top-left corner; a point (x, y)
// lands on the device pixel (x, y) x dpi / 1440. Text metrics are those of the
// device's own fonts (a printer measures with the printer's metrics),
// converted to twips.
//
// DrawWidth is a pen width in device pixels. PSet draws a round dot of
// DrawWidth pixels, Circle an outline whose radius is in horizontal twips.
// DrawStyle maps to the pen style: 0 solid, 1 dash, 2 dot, 3 dash-dot,
// 4 dash-dot-dot, 5 no line (and no text).
//
// The painter is begun on the first drawing operation, not before, so a
// target can be measured without starting a print job; a subclass may end it
// (EndDoc on a printer) and the next drawing begins it again.
//
// Pages of many thousand marks and cells stay cheap:
// - each font (typeface, size, bold) is set up once, and shapes a text only
//   the first time it is measured or printed: it keeps the width and the
//   glyphs. A number or a date is not laid out at all but put together from
//   its characters' glyphs and the kerning of each pair of them, which the
//   font learns once from layouts of the characters and the pairs;
// - printed text is kept back and drawn as one run of glyphs, in the order
//   printed, up to the next operation that is not text in the same font and
//   pen: a table page's cells become one piece of text instead of one each.
//   The glyphs land where the printed texts put them;
// - the pen reaches the painter only when it changes;
// - a line, point, box or circle is drawn around a local origin at its own
//   centre. On a PDF page every mark of a chart then writes the same path
//   text, only its origin differs, and the page's compression folds the
//   repeats away; on a picture it is the same drawing. Text is drawn with the
//   origin at the page's corner;
// - solid points, circles and lines with one centre and one pen, drawn one
//   after the other (a chart's circled cross: its dot, its circle and its two
//   strokes), are kept back and drawn as one outline, the way text is kept
//   back: one call to the painter instead of four for each visit.
class PainterTarget : public OutputTarget
{
public:
    ~PainterTarget() override = default;

    double ScaleLeft() const override { return 0; }
    double ScaleTop() const override { return 0; }

    double CurrentX() const override { return m_currentX; }
    double CurrentY() const override { return m_currentY; }
    void SetCurrentX(double x) override { m_currentX = x; }
    void SetCurrentY(double y) override { m_currentY = y; }

    void Print(const QString& text) override;
    double TextWidth(const QString& text) override;
    double TextHeight(const QString& text) override;

    void SetFont(const QString& typeface) override;
    QString Font() const override { return m_typeface; }
    void SetFontSize(double points) override;
    double FontSize() const override { return m_fontSize; }
    void SetFontBold(bool bold) override;
    bool FontBold() const override { return m_fontBold; }

    void SetForeColor(const QColor& color) override { m_foreColor = color; }
    QColor ForeColor() const override { return m_foreColor; }
    void SetDrawWidth(int pixels) override { m_drawWidth = pixels; }
    int DrawWidth() const override { return m_drawWidth; }
    void SetDrawStyle(int style) override { m_drawStyle = style; }
    int DrawStyle() const override { return m_drawStyle; }

    void Line(double x1, double y1, double x2, double y2, const QColor& color = QColor(), bool box = false) override;
    void PSet(double x, double y, const QColor& color = QColor()) override;
    void Circle(double x, double y, double radius, const QColor& color = QColor()) override;

    // Device pixels per inch: the resolution the page is drawn at.
    double dotsPerInch() const { return m_dotsPerInch; }
    // Texts, characters and pairs of characters laid out so far to be measured.
    qsizetype layoutCount() const { return m_layoutCount; }

protected:
    PainterTarget() = default;

    // The device that measures text and is painted on; a subclass tells its
    // resolution with setResolution before the first measure.
    virtual QPaintDevice* paintDevice() = 0;
    void setResolution(double dotsPerInch);

    // Begins the painter when it is not active yet; raises a printer error
    // (RuntimeError 484) when the device cannot be painted on. Everything
    // printed so far is drawn, and the painter's coordinates are device
    // pixels from the page's corner.
    QPainter& painter();
    bool isPainting() const { return m_painter.isActive(); }
    // Called just before the painter begins on paintDevice(): a subclass
    // readies what the device writes into.
    virtual void aboutToPaint() {}
    // Subclasses end the painter in their destructor, while the device lives.
    // False when the device reported a failure at the end (QPainter::end()).
    bool endPainting();
    void homePosition();

private:
    // A one-line text as a font measures and draws it, shaped once. Most
    // texts are glyphs of one font on the baseline, kept compactly: every
    // visit's date is measured before the first page is drawn.
    struct ShapedText
    {
        double width = 0; // device pixels
        QRawFont font;
        QList<quint32> glyphs;
        QList<float> offsets;   // from the text's left end, along the baseline
        QList<QGlyphRun> mixed; // instead: glyphs of several fonts, or off the baseline
    };

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

    // A font as the device renders it, with the texts measured or printed in it.
    struct DeviceFont
    {
        QString typeface;
        double points;
        bool bold;
        QFont font;
        QFontMetricsF metrics;
        QHash<QString, ShapedText> texts = {};
        QHash<char16_t, LoneGlyph> alone = {};
        QHash<quint32, GlyphPair> pairs = {}; // first character << 16 | second
        QRawFont loneFont = {};               // the font of every lone glyph
        int composedChecked = 0;
        bool composingTrusted = true;
    };

    // One line as QTextLayout lays it out.
    struct LaidOutLine
    {
        double width;  // device pixels
        double ascent; // the baseline's distance from the line's top
        QList<QGlyphRun> runs;
    };

    struct Pen
    {
        QColor color;
        int width;
        int style;
        bool operator==(const Pen&) const = default;
    };

    // Solid shapes not drawn yet: outlines in one pen around one origin.
    struct PendingShapes
    {
        Pen pen;
        QPointF origin; // device pixels
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

    double toDevice(double twips) const { return twips * m_pixelsPerTwip; }
    DeviceFont& currentFont();
    const ShapedText& shaped(DeviceFont& font, const QString& line);
    LaidOutLine layOut(const DeviceFont& font, const QString& line);
    // One run of glyphs of one font, all on the baseline at float places.
    static bool isOneRunOnBaseline(const LaidOutLine& laidOut);
    // The character's lone glyph, learnt once; null when it has none.
    const LoneGlyph* loneGlyph(DeviceFont& font, char16_t character);
    // The kerning of two lone glyphs side by side, learnt once; null when
    // the pair shapes into other glyphs.
    const GlyphPair* glyphPair(DeviceFont& font, char16_t first, const LoneGlyph& a, char16_t second,
                               const LoneGlyph& b);
    // The line put together from its characters' lone glyphs and their
    // pairs' kerning; false when that cannot give the line's own layout.
    bool composeOfLoneGlyphs(DeviceFont& font, const QString& line, ShapedText& text);
    void printLine(DeviceFont& font, const QString& line, const QPointF& baseline, const Pen& pen);
    // Room in the pending text for glyphs of font in pen: what is pending in
    // another font or pen is drawn first.
    void prepareToAdd(const QRawFont& font, const Pen& pen);
    void drawPendingText();
    // The outline that a shape centred at anchor (device pixels) in pen joins,
    // in coordinates relative to the anchor: what is pending around another
    // anchor or in another pen is drawn first.
    QPainterPath& shapesAround(const QPointF& anchor, const Pen& pen);
    void drawPendingShapes();
    void drawPatternedShapesAtOnce();
    // Draws what is kept back: text or shapes (never both at once).
    void drawPending();
    void fontChanged();
    Pen penFor(const QColor& color) const;
    void usePen(const Pen& pen);
    // The painter, begun, with nothing printed left undrawn.
    QPainter& activePainter();
    // Moves the painter's origin to anchor (device pixels).
    void moveOrigin(const QPointF& anchor);

    QPainter m_painter;
    qsizetype m_layoutCount = 0;
    double m_dotsPerInch = 1440;
    double m_pixelsPerTwip = 1;

    double m_currentX = 0;
    double m_currentY = 0;

    QString m_typeface = defaultTypeface();
    double m_fontSize = 10;
    bool m_fontBold = false;
    // Every font used so far at this resolution; m_font is the current one.
    std::vector<std::unique_ptr<DeviceFont>> m_fonts;
    DeviceFont* m_font = nullptr;

    QColor m_foreColor = QColor(0, 0, 0);
    int m_drawWidth = 1;
    int m_drawStyle = 0;

    PendingText m_pending;
    PendingShapes m_shapes;

    // What the painter's pen is now, so that it is replaced only on a change.
    bool m_painterPenStale = true;
    Pen m_painterPen;

    // Where the painter's origin is now, in device pixels.
    QPointF m_origin;

    static QString defaultTypeface();
};
