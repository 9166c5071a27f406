#include "common/TestMain.h"
#include "platform/CsvWriter.h"

#include <QTest>

namespace
{
const QByteArray kBom("\xEF\xBB\xBF");
} // namespace

class TestCsvWriter : public QObject
{
    Q_OBJECT

private slots:
    void anEmptyTextIsTheByteOrderMarkAlone()
    {
        const CsvWriter csv;
        QCOMPARE(csv.text(), kBom);
        QCOMPARE(csv.recordCount(), 0);
    }

    void recordsEndWithCrLfAfterTheByteOrderMark()
    {
        CsvWriter csv;
        csv.addRecord({QStringLiteral("Visit Date"), QStringLiteral("Pre FVC (L)")});
        csv.addRecord({QStringLiteral("2024-01-08"), QStringLiteral("4.61")});
        csv.addRecord({QStringLiteral("2024-01-15"), QString()});
        QCOMPARE(csv.text(), kBom + "Visit Date,Pre FVC (L)\r\n2024-01-08,4.61\r\n2024-01-15,\r\n");
        QCOMPARE(csv.recordCount(), 3);
    }

    void quoting_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("written");
        QTest::newRow("plain") << QStringLiteral("FEV1/FVC (%)") << QStringLiteral("FEV1/FVC (%)");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("blanks stay as they are") << QStringLiteral(" a b ") << QStringLiteral(" a b ");
        QTest::newRow("comma") << QStringLiteral("Pre FVC, best") << QStringLiteral("\"Pre FVC, best\"");
        QTest::newRow("quote") << QStringLiteral("the \"best\" FVC") << QStringLiteral("\"the \"\"best\"\" FVC\"");
        QTest::newRow("comma and quote") << QStringLiteral("Pre \"X\", Y (L)")
                                         << QStringLiteral("\"Pre \"\"X\"\", Y (L)\"");
        QTest::newRow("line feed") << QStringLiteral("two\nlines") << QStringLiteral("\"two\nlines\"");
        QTest::newRow("carriage return") << QStringLiteral("two\rlines") << QStringLiteral("\"two\rlines\"");
        QTest::newRow("a quote alone") << QStringLiteral("\"") << QStringLiteral("\"\"\"\"");
        QTest::newRow("semicolon is no separator") << QStringLiteral("a;b") << QStringLiteral("a;b");
    }

    void quoting()
    {
        QFETCH(QString, field);
        QFETCH(QString, written);
        QCOMPARE(CsvWriter::quoted(field), written);
        CsvWriter csv;
        csv.addRecord({field, QStringLiteral("x")});
        QCOMPARE(csv.text(), kBom + written.toUtf8() + ",x\r\n");
    }

    void textIsUtf8()
    {
        CsvWriter csv;
        csv.addRecord({QStringLiteral("Sp\u00F6ttel"), QStringLiteral("\u00B5mol/L")});
        QCOMPARE(csv.text(), kBom + "Sp\xC3\xB6ttel,\xC2\xB5mol/L\r\n");
    }

    void aRecordOfOneEmptyFieldIsNoEmptyLine()
    {
        CsvWriter csv;
        csv.addRecord({QString()});
        csv.addRecord({QString(), QString()});
        QCOMPARE(csv.text(), kBom + "\"\"\r\n,\r\n");
    }
};

CALVEX_TEST(TestCsvWriter)
#include "TestCsvWriter.moc"
