#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// A comma-separated text for other programs (spreadsheets, a laboratory's
// own tools), built in memory record by record:
//
//   - UTF-8, starting with a byte-order mark, by which spreadsheets know the
//     encoding;
//   - every record ends with CRLF, the last one too;
//   - RFC 4180 quoting: a field that holds a comma, a double quote, a CR or
//     an LF is put in double quotes, each quote inside doubled; every other
//     field is written as it is (an empty field stays empty; a record of
//     one empty field is written as "", so that it is not an empty line).
//
// The text is written to a file whole by the caller (WholeFileWriter).
class CsvWriter final
{
public:
    CsvWriter();

    void addRecord(const QStringList& fields);

    // The text so far: the byte-order mark and every record added.
    const QByteArray& text() const { return m_text; }
    qint32 recordCount() const { return m_records; }

    // One field as it is written.
    static QString quoted(const QString& field);

private:
    QByteArray m_text;
    qint32 m_records = 0;
};
