#pragma once

#include "output/OutputTarget.h"
#include "output/TargetState.h"

#include <QColor>
#include <QString>
#include <QStringList>

#include <vector>

// One drawing or page operation as a RecordingTarget saw it, with the state
// that applied to it.
struct RecordedOp
{
    enum class Kind
    {
        Print,  // text at (x1, y1)
        Line,   // (x1, y1)-(x2, y2)
        Box,    // Line with the box option: rectangle outline (x1, y1)-(x2, y2)
        PSet,   // point at (x1, y1)
        Circle, // centre (x1, y1), radius in x2
        Disc,   // filled circle: centre (x1, y1), radius in x2
        NewPage,
        Cls,
        EndDoc,
        // Changes of the drawing state; the new value is in the state fields
        // below (and in color for SetForeColor).
        SetFont,
        SetFontSize,
        SetFontBold,
        SetForeColor,
        SetDrawWidth,
        SetDrawStyle
    };

    bool isStateChange() const { return kind >= Kind::SetFont; }

    Kind kind = Kind::Print;
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    QString text;
    // The colour used: the one passed, or ForeColor when none was.
    QColor color;
    // The state at the time of the operation (after it, for a state change).
    QString font;
    double fontSize = 0;
    bool fontBold = false;
    int drawWidth = 0;
    int drawStyle = 0;
};

// An output target that draws nothing and keeps a log of every operation
// (drawing, page and state changes; moves of CurrentX/CurrentY are not logged
// but show in the position of the next Print), so that a page layout can be
// checked number by number. Its text metrics follow
// exact rules instead of a real font:
//
//   TextWidth  = characters of the longest line x FontSize x 12 x (FontBold ? 1.125 : 1)
//   TextHeight = lines x FontSize x 25
//
// (a 10-point line is 250 units high and each character 120 units wide; lines
// are separated by '\n', and an empty text is one line of width 0). The font
// name does not change the metrics.
//
// The page defaults to 12240 x 15840 units (8.5 x 11 inches in twips) with its
// origin at (0, 0). The initial state is Arial 10 regular, black, DrawWidth 1,
// DrawStyle 0, CurrentX/CurrentY at the origin.
class RecordingTarget final : public TargetState
{
public:
    explicit RecordingTarget(double scaleWidth = 12240, double scaleHeight = 15840, double scaleLeft = 0,
                             double scaleTop = 0);

    // Changes the page's coordinate system (for tests of other page sizes).
    void setPage(double scaleWidth, double scaleHeight, double scaleLeft = 0, double scaleTop = 0);
    void setDeviceName(const QString& name);

    // The metric rules above, for tests that compute the numbers they expect.
    static double charWidth(double fontSize, bool bold);
    static double lineHeight(double fontSize);

    // The log: every operation in order.
    const std::vector<RecordedOp>& ops() const { return m_ops; }
    // The drawing and page operations only, without the state changes.
    std::vector<RecordedOp> drawOps() const;
    std::vector<RecordedOp> opsOf(RecordedOp::Kind kind) const;
    int countOf(RecordedOp::Kind kind) const;
    // The texts of every Print, in order.
    QStringList texts() const;
    // Empties the log; the page and the current state stay.
    void clearOps();

    double ScaleLeft() const override { return m_scaleLeft; }
    double ScaleTop() const override { return m_scaleTop; }
    double ScaleWidth() const override { return m_scaleWidth; }
    double ScaleHeight() const override { return m_scaleHeight; }

    void Print(const QString& text) override;
    double TextWidth(const QString& text) override;
    double TextHeight(const QString& text) override;

    void Line(double x1, double y1, double x2, double y2, const QColor& color = QColor(), bool box = false) override;
    void PSet(double x, double y, const QColor& color = QColor()) override;
    void Circle(double x, double y, double radius, const QColor& color = QColor()) override;
    void Disc(double x, double y, double radius, const QColor& color = QColor()) override;

    void NewPage() override;
    void Cls() override;
    void EndDoc() override;

    QString DeviceName() const override { return m_deviceName; }

protected:
    // Logs the setting as a state change.
    void stateSet(StateItem item, bool changed) override;

private:
    void record(RecordedOp::Kind kind, double x1 = 0, double y1 = 0, double x2 = 0, double y2 = 0,
                const QColor& color = QColor(), const QString& text = QString());

    double m_scaleLeft = 0;
    double m_scaleTop = 0;
    double m_scaleWidth = 0;
    double m_scaleHeight = 0;
    QString m_deviceName;
    std::vector<RecordedOp> m_ops;
};
