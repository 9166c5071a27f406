#include "platform/CsvWriter.h"

namespace
{
const QByteArray kByteOrderMark("\xEF\xBB\xBF");
const QByteArray kRecordEnd("\r\n");
} // namespace

CsvWriter::CsvWriter()
    : m_text(kByteOrderMark)
{}

void CsvWriter::addRecord(const QStringList& fields)
{
    QString record;
    for (qsizetype i = 0; i < fields.size(); ++i)
    {
        if (i > 0)
            record += QLatin1Char(',');
        record += quoted(fields.at(i));
    }
    // A record of one empty field is a pair of quotes: a line with nothing on
    // it would read as no record at all.
    if (fields.size() == 1 && record.isEmpty())
        record = QStringLiteral("\"\"");
    m_text += record.toUtf8();
    m_text += kRecordEnd;
    ++m_records;
}

QString CsvWriter::quoted(const QString& field)
{
    const bool needsQuotes = field.contains(QLatin1Char(',')) || field.contains(QLatin1Char('"')) ||
                             field.contains(QLatin1Char('\r')) || field.contains(QLatin1Char('\n'));
    if (!needsQuotes)
        return field;
    QString text = field;
    text.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}
