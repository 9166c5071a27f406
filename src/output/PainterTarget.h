#pragma once

#include "output/DeferredDrawing.h"
#include "output/OutputTarget.h"
#include "output/TargetState.h"
#include "output/TextShaper.h"

#include <QColor>
#include <QPainter>
#include <QPointF>
#include <QString>

class QPaintDevice;

// An output target that draws with a QPainter on a paint device: the base of
// the printer, the PDF file and the picture targets. The scale is twips (1440
// per inch) with the origin at the page's top-left corner; a point (x, y)
// lands on the device pixel (x, y) x dpi / 1440. Text metrics are those of the
// device's own fonts (a printer measures with the printer's metrics),
// converted to twips.
//
// DrawWidth is a pen width in device pixels. PSet draws a round dot of
// DrawWidth pixels, Circle an outline whose radius is in horizontal twips,
// Disc the same outline filled with its colour.
// DrawStyle maps to the pen style: 0 solid, 1 dash, 2 dot, 3 dash-dot,
// 4 dash-dot-dot, 5 no line (and no text).
//
// The painter is begun on the first drawing operation, not before, so a
// target can be measured without starting a print job; a subclass may end it
// (EndDoc on a printer) and the next drawing begins it again.
//
// This class keeps the printer object's state and turns its operations into
// device pixels; pages of many thousand marks and cells stay cheap through
// the two parts it hands them to: TextShaper shapes each different text once
// (numbers and dates from their characters' glyphs), and DeferredDrawing keeps
// printed text and a chart's marks back and draws them in few painter calls.
class PainterTarget : public TargetState
{
public:
    ~PainterTarget() override = default;

    double ScaleLeft() const override { return 0; }
    double ScaleTop() const override { return 0; }

    void Print(const QString& text) override;
    double TextWidth(const QString& text) override;
    double TextHeight(const QString& text) override;

    void Line(double x1, double y1, double x2, double y2, const QColor& color = QColor(), bool box = false) override;
    void PSet(double x, double y, const QColor& color = QColor()) override;
    void Circle(double x, double y, double radius, const QColor& color = QColor()) override;
    void Disc(double x, double y, double radius, const QColor& color = QColor()) override;

    // Device pixels per inch: the resolution the page is drawn at.
    double dotsPerInch() const { return m_dotsPerInch; }
    // Texts, characters and pairs of characters laid out so far to be measured.
    qsizetype layoutCount() const { return m_shaper.layoutCount(); }

    // Back to the state of a new target (TargetState): the default typeface
    // at 10 points, regular, a black solid pen one unit wide, at the origin.
    // The fonts set up and the texts shaped so far stay.
    void resetState();

protected:
    PainterTarget()
        : TargetState(defaultTypeface())
    {}

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
    double toDevice(double twips) const { return twips * m_pixelsPerTwip; }
    // The shaper, measuring on paintDevice().
    TextShaper& shaper();
    TextShaper::Font& currentFont();
    void printLine(TextShaper::Font& font, const QString& line, const QPointF& baseline,
                   const DeferredDrawing::Pen& pen);
    // The outline that a shape centred at anchor (device pixels) joins, the
    // painter begun.
    QPainterPath& shapesAround(const QPointF& anchor, const DeferredDrawing::Pen& pen);
    void fontChanged();
    // A new font is looked up when the text next needs it; the pen is read
    // at each drawing.
    void stateSet(StateItem item, bool changed) override;
    DeferredDrawing::Pen penFor(const QColor& color) const;
    // The painter, begun, with nothing printed left undrawn.
    QPainter& activePainter();

    QPainter m_painter;
    DeferredDrawing m_deferred{m_painter};
    TextShaper m_shaper;
    double m_dotsPerInch = 1440;
    double m_pixelsPerTwip = 1;

    // The current font; null until it is next needed.
    TextShaper::Font* m_font = nullptr;

    static QString defaultTypeface();
};
