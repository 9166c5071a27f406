#include "output/RecordingTarget.h"

#include <QStringView>

#include <algorithm>

RecordingTarget::RecordingTarget(double scaleWidth, double scaleHeight, double scaleLeft, double scaleTop)
    : TargetState(QStringLiteral("Arial"))
{
    setPage(scaleWidth, scaleHeight, scaleLeft, scaleTop);
}

void RecordingTarget::setPage(double scaleWidth, double scaleHeight, double scaleLeft, double scaleTop)
{
    m_scaleWidth = scaleWidth;
    m_scaleHeight = scaleHeight;
    m_scaleLeft = scaleLeft;
    m_scaleTop = scaleTop;
    m_currentX = scaleLeft;
    m_currentY = scaleTop;
}

void RecordingTarget::setDeviceName(const QString& name)
{
    m_deviceName = name;
}

double RecordingTarget::charWidth(double fontSize, bool bold)
{
    return fontSize * 12 * (bold ? 1.125 : 1.0);
}

double RecordingTarget::lineHeight(double fontSize)
{
    return fontSize * 25;
}

std::vector<RecordedOp> RecordingTarget::opsOf(RecordedOp::Kind kind) const
{
    std::vector<RecordedOp> found;
    std::copy_if(m_ops.begin(), m_ops.end(), std::back_inserter(found),
                 [kind](const RecordedOp& op) { return op.kind == kind; });
    return found;
}

std::vector<RecordedOp> RecordingTarget::drawOps() const
{
    std::vector<RecordedOp> found;
    std::copy_if(m_ops.begin(), m_ops.end(), std::back_inserter(found),
                 [](const RecordedOp& op) { return !op.isStateChange(); });
    return found;
}

int RecordingTarget::countOf(RecordedOp::Kind kind) const
{
    return int(std::count_if(m_ops.begin(), m_ops.end(), [kind](const RecordedOp& op) { return op.kind == kind; }));
}

QStringList RecordingTarget::texts() const
{
    QStringList printed;
    for (const RecordedOp& op : m_ops)
    {
        if (op.kind == RecordedOp::Kind::Print)
            printed.append(op.text);
    }
    return printed;
}

void RecordingTarget::clearOps()
{
    m_ops.clear();
}

void RecordingTarget::Print(const QString& text)
{
    record(RecordedOp::Kind::Print, m_currentX, m_currentY, 0, 0, QColor(), text);
    m_currentY += TextHeight(text);
    m_currentX = m_scaleLeft;
}

double RecordingTarget::TextWidth(const QString& text)
{
    qsizetype longest = 0;
    for (QStringView line : QStringView(text).split(u'\n'))
        longest = std::max(longest, line.size());
    return double(longest) * charWidth(m_fontSize, m_fontBold);
}

double RecordingTarget::TextHeight(const QString& text)
{
    return double(text.count(u'\n') + 1) * lineHeight(m_fontSize);
}

void RecordingTarget::stateSet(StateItem item, bool /*changed*/)
{
    // Every setting is logged, also one that sets a value again.
    switch (item)
    {
    case StateItem::Font:
        record(RecordedOp::Kind::SetFont);
        break;
    case StateItem::FontSize:
        record(RecordedOp::Kind::SetFontSize);
        break;
    case StateItem::FontBold:
        record(RecordedOp::Kind::SetFontBold);
        break;
    case StateItem::ForeColor:
        record(RecordedOp::Kind::SetForeColor);
        break;
    case StateItem::DrawWidth:
        record(RecordedOp::Kind::SetDrawWidth);
        break;
    case StateItem::DrawStyle:
        record(RecordedOp::Kind::SetDrawStyle);
        break;
    }
}

void RecordingTarget::Line(double x1, double y1, double x2, double y2, const QColor& color, bool box)
{
    record(box ? RecordedOp::Kind::Box : RecordedOp::Kind::Line, x1, y1, x2, y2, color);
}

void RecordingTarget::PSet(double x, double y, const QColor& color)
{
    record(RecordedOp::Kind::PSet, x, y, 0, 0, color);
}

void RecordingTarget::Circle(double x, double y, double radius, const QColor& color)
{
    record(RecordedOp::Kind::Circle, x, y, radius, 0, color);
}

void RecordingTarget::Disc(double x, double y, double radius, const QColor& color)
{
    record(RecordedOp::Kind::Disc, x, y, radius, 0, color);
}

void RecordingTarget::NewPage()
{
    record(RecordedOp::Kind::NewPage);
    m_currentX = m_scaleLeft;
    m_currentY = m_scaleTop;
}

void RecordingTarget::Cls()
{
    record(RecordedOp::Kind::Cls);
    m_currentX = m_scaleLeft;
    m_currentY = m_scaleTop;
}

void RecordingTarget::EndDoc()
{
    record(RecordedOp::Kind::EndDoc);
}

void RecordingTarget::record(RecordedOp::Kind kind, double x1, double y1, double x2, double y2, const QColor& color,
                             const QString& text)
{
    RecordedOp op;
    op.kind = kind;
    op.x1 = x1;
    op.y1 = y1;
    op.x2 = x2;
    op.y2 = y2;
    op.text = text;
    op.color = color.isValid() ? color : m_foreColor;
    op.font = m_typeface;
    op.fontSize = m_fontSize;
    op.fontBold = m_fontBold;
    op.drawWidth = m_drawWidth;
    op.drawStyle = m_drawStyle;
    m_ops.push_back(std::move(op));
}
