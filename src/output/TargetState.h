#pragma once

#include "output/OutputTarget.h"

#include <QColor>
#include <QString>

#include <utility>

// What every output target keeps alike and reads back as its properties: the
// current position, the font's name, size and weight, and the pen's colour,
// width and style. The font and the pen are set here for every target; each
// setting is then handed to the target (stateSet), which applies it to its
// device or logs it.
class TargetState : public OutputTarget
{
public:
    double CurrentX() const override { return m_currentX; }
    double CurrentY() const override { return m_currentY; }
    void SetCurrentX(double x) override { m_currentX = x; }
    void SetCurrentY(double y) override { m_currentY = y; }

    QString Font() const override { return m_typeface; }
    double FontSize() const override { return m_fontSize; }
    bool FontBold() const override { return m_fontBold; }

    QColor ForeColor() const override { return m_foreColor; }
    int DrawWidth() const override { return m_drawWidth; }
    int DrawStyle() const override { return m_drawStyle; }

    void SetFont(const QString& typeface) final;
    // A size that is no size (0 or less) leaves the size as it is.
    void SetFontSize(double points) final;
    void SetFontBold(bool bold) final;
    void SetForeColor(const QColor& color) final;
    void SetDrawWidth(int pixels) final;
    void SetDrawStyle(int style) final;

protected:
    enum class StateItem
    {
        Font,
        FontSize,
        FontBold,
        ForeColor,
        DrawWidth,
        DrawStyle
    };

    // After each setting of the font or the pen, with what was set and
    // whether its value changed (setting a value again changes nothing).
    virtual void stateSet(StateItem item, bool changed) = 0;

    // The state of a new target: the typeface at 10 points, regular, a black
    // solid pen one unit wide, at the origin.
    explicit TargetState(QString typeface)
        : m_typeface(std::move(typeface))
    {}

    double m_currentX = 0;
    double m_currentY = 0;
    QString m_typeface;
    double m_fontSize = 10;
    bool m_fontBold = false;
    QColor m_foreColor = QColor(0, 0, 0);
    int m_drawWidth = 1;
    int m_drawStyle = 0;
};
