#pragma once

#include <QColor>
#include <QString>

// The drawing surface of every report page, with the classic printer-object
// semantics. Coordinates are in the target's scale units: twips (1440 per
// inch) unless an implementation says otherwise.
//
// - Print draws text with its top-left corner at (CurrentX, CurrentY) in the
//   current font, then moves CurrentY one line down and CurrentX back to the
//   left edge (ScaleLeft).
// - DrawWidth is in device pixels; DrawStyle 0 is solid, 2 dotted.
// - Line, PSet, Circle and Disc draw in the given colour; an invalid QColor
//   means ForeColor. Circle's and Disc's radius is in horizontal units. Disc
//   is a filled circle: the outline Circle draws, and inside it all filled.
// - NewPage and EndDoc belong to printers, Cls to pictures; a target that has
//   no such operation ignores it. NewPage and Cls put CurrentX/CurrentY back
//   at the page's origin (ScaleLeft, ScaleTop).
class OutputTarget
{
public:
    virtual ~OutputTarget() = default;

    virtual double ScaleLeft() const = 0;
    virtual double ScaleTop() const = 0;
    virtual double ScaleWidth() const = 0;
    virtual double ScaleHeight() const = 0;

    virtual double CurrentX() const = 0;
    virtual double CurrentY() const = 0;
    virtual void SetCurrentX(double x) = 0;
    virtual void SetCurrentY(double y) = 0;

    virtual void Print(const QString& text) = 0;
    virtual double TextWidth(const QString& text) = 0;
    virtual double TextHeight(const QString& text) = 0;

    virtual void SetFont(const QString& typeface) = 0;
    virtual QString Font() const = 0;
    virtual void SetFontSize(double points) = 0;
    virtual double FontSize() const = 0;
    virtual void SetFontBold(bool bold) = 0;
    virtual bool FontBold() const = 0;

    virtual void SetForeColor(const QColor& color) = 0;
    virtual QColor ForeColor() const = 0;
    virtual void SetDrawWidth(int pixels) = 0;
    virtual int DrawWidth() const = 0;
    virtual void SetDrawStyle(int style) = 0;
    virtual int DrawStyle() const = 0;

    virtual void Line(double x1, double y1, double x2, double y2, const QColor& color = QColor(), bool box = false) = 0;
    virtual void PSet(double x, double y, const QColor& color = QColor()) = 0;
    virtual void Circle(double x, double y, double radius, const QColor& color = QColor()) = 0;
    virtual void Disc(double x, double y, double radius, const QColor& color = QColor()) = 0;

    virtual void NewPage() = 0;
    virtual void Cls() = 0;
    virtual void EndDoc() = 0;

    // The printer's device name; empty for targets that are no printer.
    virtual QString DeviceName() const = 0;

    // True when text measures the same before the first drawing as while the
    // pages are drawn: a layout made before the job needs no second one. A
    // printer may measure with other metrics once its job has begun, so by
    // default a layout is made again right before the pages it is for.
    virtual bool MeasuresAlikeBeforeTheJob() const { return false; }
};
