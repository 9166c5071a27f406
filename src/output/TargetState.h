#pragma once

#include "output/OutputTarget.h"

#include <QColor>
#include <QString>

#include <utility>

// What every output target keeps alike and reads back as its properties: the
// current position, the font's name, size and weight, and the pen's colour,
// width and style. Each target sets the font and the pen in its own way.
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

protected:
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
