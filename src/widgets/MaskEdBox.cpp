#include "widgets/MaskEdBox.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMouseEvent>

#include <algorithm>

namespace
{
// The template "__/__/____": month at 0-1, day at 3-4, year at 6-9.
constexpr int kTemplateLength = 10;
constexpr QLatin1Char kSlash('/');

bool isSlashPosition(int position)
{
    return position == 2 || position == 5;
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isFieldSeparator(QChar c)
{
    return c == kSlash || c == QLatin1Char('-') || c == QLatin1Char('.');
}

QString emptyTemplate(QChar prompt)
{
    QString mask(kTemplateLength, prompt);
    mask[2] = kSlash;
    mask[5] = kSlash;
    return mask;
}

bool isTemplate(const QString& text, QChar prompt)
{
    if (text.size() != kTemplateLength)
        return false;
    for (int i = 0; i < kTemplateLength; ++i)
    {
        const QChar c = text.at(i);
        if (isSlashPosition(i) ? c != kSlash : !(isDigit(c) || c == prompt))
            return false;
    }
    return true;
}

// One typed character at position: a digit fills the next open position, a
// separator completes a one-digit month or day with a leading zero and moves
// on to the next field; anything else is ignored.
void typeCharacter(QString& mask, int& position, QChar c, QChar prompt)
{
    if (isDigit(c))
    {
        int p = position;
        if (isSlashPosition(p))
            ++p;
        if (p >= kTemplateLength)
            return;
        mask[p] = c;
        ++p;
        if (isSlashPosition(p))
            ++p;
        position = p;
        return;
    }
    if (!isFieldSeparator(c) || position > 5)
        return; // the year has no field after it
    const int start = position <= 2 ? 0 : 3;
    const bool first = isDigit(mask.at(start));
    const bool second = isDigit(mask.at(start + 1));
    if (first && mask.at(start + 1) == prompt)
    {
        mask[start + 1] = mask.at(start);
        mask[start] = QLatin1Char('0');
    }
    else if (!(first && second))
    {
        return; // nothing typed in this field yet
    }
    position = start + 3;
}
} // namespace

MaskEdBox::MaskEdBox(QWidget* parent)
    : QLineEdit(parent)
{
    setPlaceholderText(emptyTemplate(m_promptChar));
    setAcceptDrops(false);
    connect(this, &QLineEdit::textEdited, this, &MaskEdBox::retypeEdited);
}

QString MaskEdBox::FormatDate(const QDate& date) const
{
    const auto runLength = [this](int i, QChar c) {
        int n = 0;
        while (i + n < m_format.size() && m_format.at(i + n).toLower() == c)
            ++n;
        return n;
    };
    const auto padded = [](int value, int width) {
        return QString::number(value).rightJustified(width, QLatin1Char('0'));
    };
    QString out;
    for (int i = 0; i < m_format.size();)
    {
        const QChar c = m_format.at(i).toLower();
        const int n = (c == QLatin1Char('m') || c == QLatin1Char('d') || c == QLatin1Char('y')) ? runLength(i, c) : 0;
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

QString MaskEdBox::templateText() const
{
    const QString current = text();
    if (isTemplate(current, m_promptChar))
        return current;
    QString mask = emptyTemplate(m_promptChar);
    int position = 0;
    for (const QChar c : current)
        typeCharacter(mask, position, c, m_promptChar);
    return mask;
}

void MaskEdBox::showTemplate(const QString& mask, int position)
{
    bool hasDigit = false;
    for (const QChar c : mask)
        hasDigit = hasDigit || isDigit(c);
    const QString shown = hasDigit ? mask : QString();
    if (shown != text())
        setText(shown);
    setCursorPosition(hasDigit ? position : 0);
}

int MaskEdBox::firstOpenPosition() const
{
    const int open = text().indexOf(m_promptChar);
    return open < 0 ? int(text().size()) : open;
}

int MaskEdBox::templatePosition(int position) const
{
    if (isTemplate(text(), m_promptChar))
        return position;
    if (position < text().size())
        return std::min(position, kTemplateLength);
    const int open = templateText().indexOf(m_promptChar);
    return open < 0 ? kTemplateLength : open;
}

void MaskEdBox::typeText(const QString& typed)
{
    QString mask = templateText();
    int position = templatePosition(cursorPosition());
    if (hasSelectedText())
    {
        position = templatePosition(selectionStart());
        const int end = templatePosition(selectionEnd());
        for (int i = position; i < end; ++i)
        {
            if (!isSlashPosition(i))
                mask[i] = m_promptChar;
        }
    }
    for (const QChar c : typed)
        typeCharacter(mask, position, c, m_promptChar);
    showTemplate(mask, position);
}

void MaskEdBox::erase(bool backwards)
{
    if (hasSelectedText())
    {
        typeText(QString());
        return;
    }
    QString mask = templateText();
    int position = templatePosition(cursorPosition());
    if (backwards)
    {
        int p = position - 1;
        while (p >= 0 && isSlashPosition(p))
            --p;
        if (p < 0)
            return;
        mask[p] = m_promptChar;
        position = p;
    }
    else
    {
        int p = position;
        while (p < kTemplateLength && isSlashPosition(p))
            ++p;
        if (p >= kTemplateLength)
            return;
        mask[p] = m_promptChar;
    }
    showTemplate(mask, position);
}

void MaskEdBox::retypeEdited(const QString& edited)
{
    QString mask = emptyTemplate(m_promptChar);
    int position = 0;
    for (const QChar c : edited)
        typeCharacter(mask, position, c, m_promptChar);
    showTemplate(mask, position);
}

void MaskEdBox::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Paste))
    {
        typeText(QGuiApplication::clipboard()->text());
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::Cut))
    {
        copy();
        typeText(QString());
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete)
    {
        erase(event->key() == Qt::Key_Backspace);
        event->accept();
        return;
    }
    const QString typed = event->text();
    const bool command = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (!command && typed.size() == 1 && typed.at(0).isPrint())
    {
        typeText(typed);
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void MaskEdBox::inputMethodEvent(QInputMethodEvent* event)
{
    if (event->preeditString().isEmpty() && !event->commitString().isEmpty())
    {
        typeText(event->commitString());
        event->accept();
        return;
    }
    QLineEdit::inputMethodEvent(event);
}

void MaskEdBox::mouseReleaseEvent(QMouseEvent* event)
{
    QLineEdit::mouseReleaseEvent(event);
    // A click past the digits typed so far puts the cursor where typing goes on.
    if (!hasSelectedText() && isTemplate(text(), m_promptChar) && cursorPosition() > firstOpenPosition())
        setCursorPosition(firstOpenPosition());
}
