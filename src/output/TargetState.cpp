#include "output/TargetState.h"

namespace
{
// Keeps value in field; true when it differs from what field held.
template <typename T> bool assign(T& field, const T& value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}
} // namespace

void TargetState::SetFont(const QString& typeface)
{
    stateSet(StateItem::Font, assign(m_typeface, typeface));
}

void TargetState::SetFontSize(double points)
{
    stateSet(StateItem::FontSize, points > 0 && assign(m_fontSize, points));
}

void TargetState::SetFontBold(bool bold)
{
    stateSet(StateItem::FontBold, assign(m_fontBold, bold));
}

void TargetState::SetForeColor(const QColor& color)
{
    stateSet(StateItem::ForeColor, assign(m_foreColor, color));
}

void TargetState::SetDrawWidth(int pixels)
{
    stateSet(StateItem::DrawWidth, assign(m_drawWidth, pixels));
}

void TargetState::SetDrawStyle(int style)
{
    stateSet(StateItem::DrawStyle, assign(m_drawStyle, style));
}
