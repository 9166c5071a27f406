#include "widgets/MaskEdBox.h"

namespace
{
// Length of the run of character c starting at position i of text.
int runLength(const QString& text, int i, QChar c)
{
    int n = 0;
    while (i + n < text.size() && text.at(i + n).toLower() == c)
        ++n;
    return n;
}

QString padded(int value, int width)
{
    return QString::number(value).rightJustified(width, QLatin1Char('0'));
}
} // namespace

MaskEdBox::MaskEdBox(QWidget* parent)
    : QLineEdit(parent)
{
    setPlaceholderText(QStringLiteral("__/__/____"));
}

QString MaskEdBox::FormatDate(const QDate& date) const
{
    QString out;
    for (int i = 0; i < m_format.size();)
    {
        const QChar c = m_format.at(i).toLower();
        const int n =
            (c == QLatin1Char('m') || c == QLatin1Char('d') || c == QLatin1Char('y')) ? runLength(m_format, i, c) : 0;
        if (c == QLatin1Char('m'))
            out += padded(date.month(), n >= 2 ? 2 : 1);
        else if (c == QLatin1Char('d'))
            out += padded(date.day(), n >= 2 ? 2 : 1);
        else if (c == QLatin1Char('y'))
            out += n >= 4 ? padded(date.year(), 4) : padded(date.year() % 100, 2);
        else
            out += m_format.at(i);
        i += n > 0 ? n : 1;
    }
    return out;
}
