#include "TestPrintTableFixtures.h"
#include "common/TestMain.h"

#include "output/RecordingTarget.h"

#include <QDateTime>
#include <QTest>

using namespace PrintTableFixtures;

namespace
{
TableColumn columnWithDecimals(qint32 decimals)
{
    TableColumn column;
    column.DecimalPlaces = decimals;
    return column;
}

// Body text is 120 units a character at 10 points and gets a quarter more as room.
constexpr double kBodyChar = 120 * 1.25;
// Headings are bold: 135 units a character at 10 points.
constexpr double kHeadingChar = 135;
} // namespace

class TestPrintTableMeasure : public QObject
{
    Q_OBJECT

private slots:
    void numbersHaveTheColumnsDecimalsAndGrouping()
    {
        const TableColumn two = columnWithDecimals(2);
        QCOMPARE(CellText(1234.5, two), QStringLiteral("1,234.50"));
        QCOMPARE(CellText(-0.5, two), QStringLiteral("-0.50"));
        QCOMPARE(CellText(4, two), QStringLiteral("4.00"));
        QCOMPARE(CellText(QStringLiteral("12.5"), two), QStringLiteral("12.50"));
        QCOMPARE(CellText(4480.0, columnWithDecimals(0)), QStringLiteral("4,480"));
        QCOMPARE(CellText(3.14159, columnWithDecimals(3)), QStringLiteral("3.142"));
    }

    void zeroAndNullAreBlank()
    {
        const TableColumn two = columnWithDecimals(2);
        QCOMPARE(CellText(0.0, two), QString());
        QCOMPARE(CellText(0, two), QString());
        QCOMPARE(CellText(QStringLiteral("0"), two), QString());
        QCOMPARE(CellText(QVariant(), two), QString());
        QCOMPARE(CellText(QVariant(QMetaType(QMetaType::Double)), two), QString());
    }

    void datesAreMonthFirst()
    {
        const TableColumn date = columnWithDecimals(0);
        QCOMPARE(CellText(QDate(2024, 3, 7), date), QStringLiteral("03/07/2024"));
        QCOMPARE(CellText(QDateTime(QDate(2024, 3, 7), QTime(14, 30)), date), QStringLiteral("03/07/2024"));
        QCOMPARE(CellText(QStringLiteral("3/7/2024"), date), QStringLiteral("03/07/2024"));
        // A date wins over the column's decimals.
        QCOMPARE(CellText(QDate(2024, 12, 31), columnWithDecimals(2)), QStringLiteral("12/31/2024"));
    }

    void otherTextIsAsItIs()
    {
        const TableColumn two = columnWithDecimals(2);
        QCOMPARE(CellText(QStringLiteral("hemolysed"), two), QStringLiteral("hemolysed"));
        QCOMPARE(CellText(QStringLiteral("  n/a "), two), QStringLiteral("  n/a "));
        QCOMPARE(CellText(QString(), two), QString());
    }

    void headingWidthIsTheWidestLineMeasuredBare()
    {
        RecordingTarget target;
        TableColumn column;
        column.TableName = QStringLiteral("Spirometry");
        column.Heading = QStringLiteral("FVC");
        column.Unit = QStringLiteral("L");
        QCOMPARE(MeasureColumnHeading(target, column), float(10 * kHeadingChar));
        QVERIFY(target.FontBold());
        QCOMPARE(target.FontSize(), 10.0);

        column.Heading = QStringLiteral("Forced Vital Capacity");
        QCOMPARE(MeasureColumnHeading(target, column), float(21 * kHeadingChar));

        // The unit as stored, blanks included, without the parentheses it is printed in.
        column.TableName = QStringLiteral("PF");
        column.Heading = QStringLiteral("V");
        column.Unit = QStringLiteral("  mL/min  ");
        QCOMPARE(MeasureColumnHeading(target, column), float(10 * kHeadingChar));
        column.Unit = QStringLiteral("mL/min");
        QCOMPARE(MeasureColumnHeading(target, column), float(6 * kHeadingChar));

        QCOMPARE(MeasureColumnHeading(target, TableColumn()), 0.0f);
    }

    void bodyCellsGetAQuarterMoreRoomThanHeadings()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("PF"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
            variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), 2),
        });
        const TableData table = buildTable(info, visitSet(fieldsOf(info), 4, [](int n, int f) {
                                               if (f == 1)
                                                   return QVariant(4.25);
                                               return QVariant(n == 3 ? 1234.5 : 2.0);
                                           }));
        RecordingTarget target;
        // "03/07/2024"-like dates (10 characters) are wider than "Visit Date" in bold.
        QCOMPARE(MeasureColumn(target, table, 0), float(10 * kBodyChar));
        // "1,234.50" is the widest cell of the FVC column.
        QCOMPARE(MeasureColumn(target, table, 1), float(8 * kBodyChar));
        // "4.25" is narrower than "Spirometry": the heading sets the width exactly.
        QCOMPARE(MeasureColumn(target, table, 2), float(10 * kHeadingChar));
        QVERIFY(!target.FontBold());
        QCOMPARE(target.FontSize(), 10.0);
        QCOMPARE(target.DrawStyle(), 0);
    }

    void zeroCellsTakeNoRoom()
    {
        const ReportInfo info = reportInfo({variable(QString(), QStringLiteral("V"), QString(), 2)});
        const TableData table = buildTable(
            info, visitSet(fieldsOf(info), 3, [](int n, int) { return n == 2 ? QVariant(1.5) : QVariant(0.0); }));
        RecordingTarget target;
        QCOMPARE(MeasureColumn(target, table, 1), float(4 * kBodyChar)); // "1.50"
    }

    void measuringKeepsTheCurrentRecord()
    {
        const ReportInfo info = reportInfo({variable(QString(), QStringLiteral("V"), QString(), 1)});
        const TableData table = buildTable(
            info, visitSet(fieldsOf(info), 5, [](int n, int) { return QVariant(n == 5 ? 10000.0 : double(n)); }));
        Recordset& data = *table.Data;
        data.Sort(QStringLiteral("VisitDate DESC"));
        data.SetAbsolutePosition(2);
        const QVariant before = data.Value(0);

        RecordingTarget target;
        QCOMPARE(MeasureColumn(target, table, 1), float(8 * kBodyChar)); // "10,000.0", first in the sorted order
        QCOMPARE(data.AbsolutePosition(), 2);
        QCOMPARE(data.Value(0), before);
    }

    void measuringFromTheEndWalksEveryRecordAndStaysThere()
    {
        const ReportInfo info = reportInfo({variable(QString(), QStringLiteral("V"), QString(), 1)});
        const TableData table =
            buildTable(info, visitSet(fieldsOf(info), 3, [](int n, int) { return QVariant(n == 1 ? 123.0 : 1.0); }));
        Recordset& data = *table.Data;
        data.MoveLast();
        data.MoveNext();
        QVERIFY(data.IsEOF());

        RecordingTarget target;
        QCOMPARE(MeasureColumn(target, table, 1), float(5 * kBodyChar)); // "123.0" of the first record
        QVERIFY(data.IsEOF());
    }

    void anEmptyDataSetMeasuresTheHeadingsOnly()
    {
        const ReportInfo info = reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("V"), QString(), 1)});
        const TableData table = buildTable(info, visitSet(fieldsOf(info), 0, [](int, int) { return QVariant(); }));
        RecordingTarget target;
        QCOMPARE(MeasureColumn(target, table, 0), float(10 * kHeadingChar)); // "Visit Date"
        QCOMPARE(MeasureColumn(target, table, 1), float(10 * kHeadingChar)); // "Spirometry"
    }

    void measureColumnsSetsEveryWidthAndTheTotal()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("PF"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
            variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), 2),
        });
        TableData table =
            buildTable(info, visitSet(fieldsOf(info), 2, [](int, int f) { return QVariant(f == 0 ? 1234.5 : 4.25); }));
        RecordingTarget target;
        MeasureColumns(target, table);
        QCOMPARE(table.Columns[0].Width, float(10 * kBodyChar));
        QCOMPARE(table.Columns[1].Width, float(8 * kBodyChar));
        QCOMPARE(table.Columns[2].Width, float(10 * kHeadingChar));
        QCOMPARE(table.TotalWidth, 10 * kBodyChar + 8 * kBodyChar + 10 * kHeadingChar);
    }
};

CALVEX_TEST(TestPrintTableMeasure)
#include "TestPrintTableMeasure.moc"
