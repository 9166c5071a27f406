#include "common/TestMain.h"

#include "suite/CsvReader.h"

#include <QBuffer>
#include <QTest>

namespace
{
struct Record
{
    qint64 line;
    QStringList fields;
    QString error;
};

QStringList utf8(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

// Every record of text as the reader returns it.
QList<Record> readAll(const QByteArray& text)
{
    QByteArray data = text;
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    CsvReader reader(buffer);
    QList<Record> records;
    while (reader.readRecord())
        records.append({reader.recordLine(), reader.fields(), reader.error()});
    return records;
}
} // namespace

class TestCsvReader : public QObject
{
    Q_OBJECT

private slots:
    void plainFieldsAndLineEnds()
    {
        const QList<Record> records = readAll("a,b,c\n1,,3\r\nx,y,z");
        QCOMPARE(records.size(), 3);
        QCOMPARE(records[0].fields, utf8({"a", "b", "c"}));
        QCOMPARE(records[1].fields, utf8({"1", "", "3"}));
        QCOMPARE(records[2].fields, utf8({"x", "y", "z"}));
        QCOMPARE(records[2].line, 3);
        for (const Record& record : records)
            QCOMPARE(record.error, QString());
    }

    void aLoneCarriageReturnEndsALine()
    {
        const QList<Record> records = readAll("a,b\r1,2\r");
        QCOMPARE(records.size(), 2);
        QCOMPARE(records[1].fields, utf8({"1", "2"}));
        QCOMPARE(records[1].line, 2);
    }

    void quotedFieldsHoldCommasQuotesAndLineBreaks()
    {
        const QList<Record> records =
            readAll("\"O'Brien, Jr.\",\"say \"\"hi\"\"\",\"two\r\nlines\",\"\"\nnext,\"a\nb\nc\",end\nlast,x,y\n");
        QCOMPARE(records.size(), 3);
        QCOMPARE(records[0].fields, utf8({"O'Brien, Jr.", "say \"hi\"", "two\r\nlines", ""}));
        QCOMPARE(records[0].line, 1);
        // Lines inside quotes count: the second record starts on line 3, the third on line 6.
        QCOMPARE(records[1].fields, utf8({"next", "a\nb\nc", "end"}));
        QCOMPARE(records[1].line, 3);
        QCOMPARE(records[2].line, 6);
        for (const Record& record : records)
            QCOMPARE(record.error, QString());
    }

    void aByteOrderMarkIsSkipped()
    {
        const QList<Record> records = readAll("\xEF\xBB\xBFPatientID,Value\nQC1,1.5\n");
        QCOMPARE(records.size(), 2);
        QCOMPARE(records[0].fields.first(), QStringLiteral("PatientID"));
        // Only the one at the start of the input: a field may begin with the character.
        QCOMPARE(readAll("a,\xEF\xBB\xBF"
                         "b\n")
                     .first()
                     .fields.at(1),
                 QStringLiteral("\uFEFFb"));
    }

    void fieldsAreUtf8()
    {
        const QList<Record> records = readAll("\xC3\x96"
                                              "berg,\"M\xC3\xBCller\",\xC2\xB0"
                                              "F\n");
        QCOMPARE(records.size(), 1);
        QCOMPARE(records[0].fields,
                 (QStringList{QStringLiteral("Öberg"), QStringLiteral("Müller"), QStringLiteral("°F")}));
        QCOMPARE(records[0].error, QString());
    }

    void textThatIsNotUtf8IsAnError()
    {
        const QList<Record> records = readAll("ok,\xE9t\xE9\nnext,\xC3\nfine,line\n");
        QCOMPARE(records.size(), 3);
        QCOMPARE(records[0].error, QStringLiteral("the text is not UTF-8"));
        // A sequence cut off at the end of a field is no better.
        QCOMPARE(records[1].error, QStringLiteral("the text is not UTF-8"));
        QCOMPARE(records[2].error, QString());
    }

    void emptyLinesAreSkipped()
    {
        const QList<Record> records = readAll("\n\na,b\n\r\n\n1,2\n\n");
        QCOMPARE(records.size(), 2);
        QCOMPARE(records[0].line, 3);
        QCOMPARE(records[1].line, 6);
        QCOMPARE(records[1].fields, utf8({"1", "2"}));
    }

    void aLastLineWithoutLineEndAndAnEmptyLastField()
    {
        const QList<Record> records = readAll("a,\n\"b\",");
        QCOMPARE(records.size(), 2);
        QCOMPARE(records[0].fields, utf8({"a", ""}));
        QCOMPARE(records[1].fields, utf8({"b", ""}));
    }

    void aQuoteInsideAnUnquotedFieldIsAnErrorOfThatRecordOnly()
    {
        const QList<Record> records = readAll("ab\"c,d\nnext,line\n");
        QCOMPARE(records.size(), 2);
        QVERIFY(records[0].error.startsWith(QLatin1String("a field that does not start with a quote holds one")));
        QCOMPARE(records[1].fields, utf8({"next", "line"}));
        QCOMPARE(records[1].line, 2);
        QCOMPARE(records[1].error, QString());
    }

    void textAfterAClosingQuoteIsAnError()
    {
        const QList<Record> records = readAll("\"ab\"c,d\nnext,line\n");
        QCOMPARE(records.size(), 2);
        QVERIFY(records[0].error.startsWith(QLatin1String("a closing quote is followed by more text")));
        QCOMPARE(records[1].fields, utf8({"next", "line"}));
        QCOMPARE(records[1].error, QString());
    }

    void anUnclosedQuoteRunsToTheEnd()
    {
        const QList<Record> records = readAll("a,b\n1,\"open\n2,3\n");
        QCOMPARE(records.size(), 2);
        QCOMPARE(records[1].line, 2);
        QCOMPARE(records[1].error, QStringLiteral("a quoted field is not closed"));
        QCOMPARE(records[1].fields.last(), QStringLiteral("open\n2,3\n"));
    }

    void recordsLongerThanTheReadBlock()
    {
        // Fields and quotes that straddle the reader's blocks of 64 KiB.
        QByteArray text;
        QStringList expected;
        for (int i = 0; i < 3000; ++i)
        {
            const QByteArray field = "\"v" + QByteArray::number(i) + ",\"\"q\"\"\n" + QByteArray(i % 97, 'x') + "\"";
            text += QByteArray::number(i) + ',' + field + "\r\n";
            expected.append(QStringLiteral("v%1,\"q\"\n").arg(i) + QString(i % 97, u'x'));
        }
        QVERIFY(text.size() > 3 * 65536);
        const QList<Record> records = readAll(text);
        QCOMPARE(records.size(), 3000);
        for (int i = 0; i < 3000; ++i)
        {
            QCOMPARE(records[i].fields.at(0), QString::number(i));
            QCOMPARE(records[i].fields.at(1), expected.at(i));
            QCOMPARE(records[i].line, 1 + 2 * i);
            QCOMPARE(records[i].error, QString());
        }
    }

    void bytesReadGrowsToTheSize()
    {
        QByteArray data("a,b\n1,2\n");
        QBuffer buffer(&data);
        buffer.open(QIODevice::ReadOnly);
        CsvReader reader(buffer);
        QVERIFY(reader.readRecord());
        QVERIFY(reader.readRecord());
        QVERIFY(!reader.readRecord());
        QCOMPARE(reader.bytesRead(), data.size());
    }
};

CALVEX_TEST(TestCsvReader)
#include "TestCsvReader.moc"
