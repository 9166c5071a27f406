#include "suite/CsvReader.h"

#include <QIODevice>

namespace
{
constexpr qint64 kBlockSize = 1 << 16;

bool isLineBreak(int c)
{
    return c == '\n' || c == '\r';
}
} // namespace

CsvReader::CsvReader(QIODevice& input)
    : m_input(input)
{}

bool CsvReader::fill()
{
    m_consumed += m_position;
    m_position = 0;
    m_block = m_input.read(kBlockSize);
    return !m_block.isEmpty();
}

int CsvReader::next()
{
    if (m_position >= m_block.size() && !fill())
        return -1;
    return uchar(m_block.at(m_position++));
}

int CsvReader::peek()
{
    if (m_position >= m_block.size() && !fill())
        return -1;
    return uchar(m_block.at(m_position));
}

bool CsvReader::readRecord()
{
    if (!m_started)
    {
        m_started = true;
        fill();
        if (m_block.startsWith("\xEF\xBB\xBF"))
            m_position = 3;
    }
    m_fields.clear();
    m_error.clear();
    int c = peek();
    while (isLineBreak(c))
    {
        lineBreak(next());
        c = peek();
    }
    if (c == -1)
        return false;
    m_recordLine = m_line;
    while (readField() == Next::Field)
    {}
    return true;
}

CsvReader::Next CsvReader::readField()
{
    m_field.resize(0);
    if (peek() == '"')
    {
        next();
        return readQuotedField();
    }
    for (;;)
    {
        const int c = next();
        if (c == -1)
        {
            appendField();
            return Next::End;
        }
        if (c == ',')
        {
            appendField();
            return Next::Field;
        }
        if (isLineBreak(c))
        {
            appendField();
            return lineBreak(c);
        }
        if (c == '"')
        {
            fail(QStringLiteral("a field that does not start with a quote holds one (quote the whole field and "
                                "double the quotes inside)"));
            appendField();
            return skipToRecordEnd();
        }
        m_field.append(char(c));
    }
}

CsvReader::Next CsvReader::readQuotedField()
{
    for (;;)
    {
        const int c = next();
        if (c == -1)
        {
            fail(QStringLiteral("a quoted field is not closed"));
            appendField();
            return Next::End;
        }
        if (c == '"')
        {
            const int after = peek();
            if (after == '"')
            {
                next();
                m_field.append('"');
                continue;
            }
            if (after == ',')
            {
                next();
                appendField();
                return Next::Field;
            }
            if (after == -1)
            {
                appendField();
                return Next::End;
            }
            if (isLineBreak(after))
            {
                appendField();
                return lineBreak(next());
            }
            fail(QStringLiteral("a closing quote is followed by more text (double a quote inside a quoted field)"));
            appendField();
            return skipToRecordEnd();
        }
        // Line breaks inside quotes belong to the field; they still count as lines of the file.
        if (c == '\n' || (c == '\r' && peek() != '\n'))
            ++m_line;
        m_field.append(char(c));
    }
}

CsvReader::Next CsvReader::skipToRecordEnd()
{
    for (;;)
    {
        const int c = next();
        if (c == -1)
            return Next::End;
        if (isLineBreak(c))
            return lineBreak(c);
    }
}

CsvReader::Next CsvReader::lineBreak(int c)
{
    if (c == '\r' && peek() == '\n')
        next();
    ++m_line;
    return Next::Record;
}

void CsvReader::appendField()
{
    m_fields.append(m_decoder.decode(m_field));
    if (m_decoder.hasError())
    {
        fail(QStringLiteral("the text is not UTF-8"));
        m_decoder.resetState();
    }
}

void CsvReader::fail(const QString& reason)
{
    if (m_error.isEmpty())
        m_error = reason;
}
