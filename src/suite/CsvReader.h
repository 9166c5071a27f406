#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

class QIODevice;

// Reads comma-separated records from a UTF-8 text, one at a time, with the
// quoting of RFC 4180: a field in double quotes may hold commas, line breaks
// and doubled quotes (each standing for one quote). Records end with CRLF,
// LF or a lone CR; a byte-order mark at the start is skipped, and so are
// lines that hold nothing at all.
//
// The input is read in blocks as the records are asked for, so a file of any
// size takes little memory. A record that breaks the quoting rules or is not
// UTF-8 is still returned, with error() saying what is wrong with it; the
// next record starts after its end.
class CsvReader
{
public:
    explicit CsvReader(QIODevice& input);

    // Reads the next record into fields(); false at the end of the input.
    bool readRecord();

    const QStringList& fields() const { return m_fields; }
    // The physical line the record starts on, the first line being 1.
    qint64 recordLine() const { return m_recordLine; }
    // What is wrong with the record; empty when it is sound.
    const QString& error() const { return m_error; }
    // How far into the input the reader is, in bytes.
    qint64 bytesRead() const { return m_consumed + m_position; }

private:
    enum class Next
    {
        Field,  // a comma: another field follows
        Record, // the record ended with a line break
        End,    // the input ended
    };

    bool fill();
    // The next byte, or -1 at the end of the input.
    int next();
    int peek();
    Next readField();
    Next readQuotedField();
    Next skipToRecordEnd();
    Next lineBreak(int c);
    void appendField();
    void fail(const QString& reason);

    QIODevice& m_input;
    QByteArray m_block;
    qsizetype m_position = 0;
    qint64 m_consumed = 0;
    bool m_started = false;
    qint64 m_line = 1; // the line the next byte is on
    qint64 m_recordLine = 0;
    QByteArray m_field;
    QStringList m_fields;
    QString m_error;
    // Each field is decoded on its own: a sequence cut off at a field's end is an error, not carried over.
    // A byte-order mark is skipped at the start of the input only; one that begins a field stays in it.
    QStringDecoder m_decoder{QStringDecoder::Utf8,
                             QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom};
};
