#include "TestPrintTableFixtures.h"
#include "common/LocaleScope.h"
#include "common/TestMain.h"

#include "output/TableCsv.h"
#include "suite/CsvReader.h"

#include <QBuffer>
#include <QLocale>
#include <QTest>

using namespace PrintTableFixtures;

namespace
{
// Every record of a CSV text, read back with the suite's RFC 4180 reader;
// a test failure for a record it finds broken.
QList<QStringList> Records(QByteArray text)
{
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    CsvReader reader(buffer);
    QList<QStringList> records;
    while (reader.readRecord())
    {
        if (!reader.error().isEmpty())
            qFatal("record %lld: %s", reader.recordLine(), qPrintable(reader.error()));
        records.append(reader.fields());
    }
    return records;
}

} // namespace

class TestTableCsv : public QObject
{
    Q_OBJECT

    // FVC (L, 2 places), DLCO (mL/min/mmHg, 1 place) and Hb (no unit, 0 places) over five visits.
    static TableData table(const std::function<QVariant(int, int)>& value)
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Pre"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
                        variable(QStringLiteral("Pre"), QStringLiteral("DLCO"), QStringLiteral(" mL/min/mmHg "), 1),
                        variable(QStringLiteral("Pre"), QStringLiteral("Hb"), QString(), 0)});
        return buildTable(info, visitSet(fieldsOf(info), 5, value));
    }

private slots:
    void headingsAreTableVariableAndUnit()
    {
        const TableData t = table([](int, int) { return QVariant(1.0); });
        QCOMPARE(TableCsvHeading(t.Columns.at(0)), QStringLiteral("Visit Date"));
        QCOMPARE(TableCsvHeading(t.Columns.at(1)), QStringLiteral("Pre FVC (L)"));
        // The unit trimmed, as the table prints it.
        QCOMPARE(TableCsvHeading(t.Columns.at(2)), QStringLiteral("Pre DLCO (mL/min/mmHg)"));
        QCOMPARE(TableCsvHeading(t.Columns.at(3)), QStringLiteral("Pre Hb"));
    }

    void cells_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("text");
        QTest::newRow("date") << QVariant(QDate(2024, 3, 7)) << 0 << QStringLiteral("2024-03-07");
        QTest::newRow("date and time") << QVariant(QDateTime(QDate(2024, 3, 7), QTime(9, 30))) << 0
                                       << QStringLiteral("2024-03-07");
        QTest::newRow("decimals") << QVariant(4.6) << 2 << QStringLiteral("4.60");
        QTest::newRow("rounded as the table") << QVariant(2.675) << 2 << QStringLiteral("2.68");
        QTest::newRow("no grouping") << QVariant(1234.5) << 2 << QStringLiteral("1234.50");
        QTest::newRow("negative") << QVariant(-0.5) << 2 << QStringLiteral("-0.50");
        QTest::newRow("no decimals") << QVariant(141.0) << 0 << QStringLiteral("141");
        QTest::newRow("zero reading") << QVariant(0.0) << 2 << QString();
        QTest::newRow("no reading") << QVariant(QMetaType(QMetaType::Double)) << 2 << QString();
        QTest::newRow("text") << QVariant(QStringLiteral("n/a")) << 2 << QStringLiteral("n/a");
    }

    void cells()
    {
        QFETCH(QVariant, value);
        QFETCH(int, decimals);
        QFETCH(QString, text);
        TableColumn column;
        column.DecimalPlaces = decimals;
        QCOMPARE(TableCsvCell(value, column), text);
        // A locale of a comma for a point changes nothing.
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(TableCsvCell(value, column), text);
    }

    void everyCellIsThePrintedCellForOtherPrograms()
    {
        // Values with thousands, negatives, zeros and missing readings.
        const TableData t = table([](int n, int f) {
            if (n == 2 && f == 1)
                return QVariant(QMetaType(QMetaType::Double));
            if (n == 4 && f == 0)
                return QVariant(0.0);
            return QVariant((n * 1234.567 - 2000) / (f + 1));
        });
        const QList<QStringList> records = Records(TableCsv(t));
        QCOMPARE(records.size(), 6);
        QCOMPARE(records.at(0), (QStringList{QStringLiteral("Visit Date"), QStringLiteral("Pre FVC (L)"),
                                             QStringLiteral("Pre DLCO (mL/min/mmHg)"), QStringLiteral("Pre Hb")}));
        int cells = 0;
        for (int n = 1; n <= 5; ++n)
        {
            const QStringList& record = records.at(n);
            QCOMPARE(record.size(), 4);
            QCOMPARE(record.at(0), visitDate(n).toString(Qt::ISODate));
            t.Data->SetAbsolutePosition(n);
            for (int c = 1; c < 4; ++c)
            {
                // The table's own text in en_US, less its digit grouping.
                const QString printed = CellText(t.Data->Value(c), t.Columns.at(c));
                QCOMPARE(record.at(c), QString(printed).remove(QLatin1Char(',')));
                cells += printed.isEmpty() ? 0 : 1;
            }
        }
        QCOMPARE(cells, 13); // 15 cells, one missing and one zero reading
        QCOMPARE(records.at(2).at(2), QString());
        QCOMPARE(records.at(4).at(1), QString());
        QCOMPARE(records.at(1).at(1), QStringLiteral("-765.43")); // 1234.567 - 2000
    }

    void theTextIsUtf8WithAByteOrderMarkAndCrLf()
    {
        const TableData t = table([](int n, int) { return QVariant(double(n)); });
        const QByteArray text = TableCsv(t);
        QVERIFY(text.startsWith("\xEF\xBB\xBF"
                                "Visit Date,Pre FVC (L),"));
        QCOMPARE(text.count("\r\n"), 6);
        QCOMPARE(text.count('\n'), 6);
        QVERIFY(text.endsWith("2024-01-05,5.00,5.0,5\r\n"));
    }

    void theDataSetKeepsItsPosition()
    {
        const TableData t = table([](int n, int) { return QVariant(double(n)); });
        t.Data->SetAbsolutePosition(3);
        TableCsv(t);
        QCOMPARE(t.Data->AbsolutePosition(), 3);
    }

    void aTableWithoutVisitsIsItsHeadingsAlone()
    {
        const TableData t = table([](int, int) { return QVariant(); });
        TableData empty = t;
        empty.Data = visitSet(QStringList{QStringLiteral("FVC"), QStringLiteral("DLCO"), QStringLiteral("Hb")}, 0,
                              [](int, int) { return QVariant(); });
        QCOMPARE(TableCsv(empty), QByteArray("\xEF\xBB\xBF"
                                             "Visit Date,Pre FVC (L),Pre DLCO (mL/min/mmHg),Pre Hb\r\n"));
    }
};

CALVEX_TEST(TestTableCsv)
#include "TestTableCsv.moc"
