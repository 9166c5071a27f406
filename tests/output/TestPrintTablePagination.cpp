#include "TestPrintTableFixtures.h"
#include "common/TestMain.h"

#include "common/TestStrings.h"
#include "output/RecordingTarget.h"
#include "output/modPrint.h"

#include <QTest>

using namespace PrintTableFixtures;

namespace
{
// A target whose every text is `lineHeight` high, so that a row height of
// 1.25 lines can divide a whole-unit rectangle into exact halves.
class FixedLineTarget final : public OutputTarget
{
public:
    explicit FixedLineTarget(double lineHeight)
        : m_lineHeight(lineHeight)
    {}

    double ScaleLeft() const override { return 0; }
    double ScaleTop() const override { return 0; }
    double ScaleWidth() const override { return 12240; }
    double ScaleHeight() const override { return 15840; }
    double CurrentX() const override { return 0; }
    double CurrentY() const override { return 0; }
    void SetCurrentX(double) override {}
    void SetCurrentY(double) override {}
    void Print(const QString&) override {}
    double TextWidth(const QString& text) override { return 100.0 * double(text.size()); }
    double TextHeight(const QString&) override { return m_lineHeight; }
    void SetFont(const QString&) override {}
    QString Font() const override { return QStringLiteral("Arial"); }
    void SetFontSize(double) override {}
    double FontSize() const override { return 10; }
    void SetFontBold(bool) override {}
    bool FontBold() const override { return false; }
    void SetForeColor(const QColor&) override {}
    QColor ForeColor() const override { return QColor(0, 0, 0); }
    void SetDrawWidth(int) override {}
    int DrawWidth() const override { return 1; }
    void SetDrawStyle(int) override {}
    int DrawStyle() const override { return 0; }
    void Line(double, double, double, double, const QColor&, bool) override {}
    void PSet(double, double, const QColor&) override {}
    void Circle(double, double, double, const QColor&) override {}
    void Disc(double, double, double, const QColor&) override {}
    void NewPage() override {}
    void Cls() override {}
    void EndDoc() override {}
    QString DeviceName() const override { return QString(); }

private:
    double m_lineHeight;
};

// A letter-wide page 9400 units high: 20 body rows fit under the header.
constexpr double kTwentyRowPageHeight = 9400;

TablePage page(qint32 number, qint32 firstColumn, qint32 lastColumn, qint32 firstRow, qint32 lastRow)
{
    return TablePage{number, firstColumn, lastColumn, firstRow, lastRow};
}

bool samePages(const TablePageList& actual, const TablePageList& expected)
{
    if (actual.size() != expected.size())
    {
        qWarning("%lld pages instead of %lld", qlonglong(actual.size()), qlonglong(expected.size()));
        return false;
    }
    for (qsizetype i = 0; i < actual.size(); ++i)
    {
        const TablePage& a = actual[i];
        const TablePage& e = expected[i];
        if (a.PageNumber != e.PageNumber || a.FirstColumn != e.FirstColumn || a.LastColumn != e.LastColumn ||
            a.FirstRow != e.FirstRow || a.LastRow != e.LastRow)
        {
            qWarning("page %lld is {%d, %d, %d, %d, %d}, expected {%d, %d, %d, %d, %d}", qlonglong(i + 1), a.PageNumber,
                     a.FirstColumn, a.LastColumn, a.FirstRow, a.LastRow, e.PageNumber, e.FirstColumn, e.LastColumn,
                     e.FirstRow, e.LastRow);
            return false;
        }
    }
    return true;
}

TableData tableOfWidths(const QList<float>& widths)
{
    TableData table;
    for (float w : widths)
    {
        TableColumn column;
        column.Width = w;
        table.Columns.append(column);
    }
    table.ColumnCount = qint16(table.Columns.size());
    return table;
}

// The rectangle the pagination of target works in.
PageRect contentRectOf(OutputTarget& target)
{
    PageRect area;
    double height = 0;
    double width = 0;
    GetPrintArea(target, area, height, width);
    return TableContentRect(target, area);
}
} // namespace

class TestPrintTablePagination : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_strings = std::make_unique<ScopedTestStrings>(); }
    void cleanupTestCase() { m_strings.reset(); }

    void contentRectangleLeavesRoomForHeaderHeadingLineAndFooter()
    {
        RecordingTarget target; // letter page: print area 720, 720, 11520, 15120
        const PageRect area{720, 720, 11520, 15120};
        const PageRect rect = TableContentRect(target, area);
        // Header: a 14-point title line (350) and four 10-point lines (1000); one
        // bold 10-point heading line (250); footer: three 8-point lines (600).
        QCOMPARE(rect.Left, 720);
        QCOMPARE(rect.Top, 720 + 1350 + 250);
        QCOMPARE(rect.Right, 11520);
        QCOMPARE(rect.Bottom, 15120 - 600);
        // The area itself is left alone.
        QCOMPARE(area.Top, 720);
        QCOMPARE(area.Bottom, 15120);
    }

    void contentRectangleRoundsHalfToEven()
    {
        // Header 5 lines, heading 1 line: Top moves 6 lines; the footer takes 3.
        FixedLineTarget quarter(100.25);                                              // 6 lines 601.5, 3 lines 300.75
        QCOMPARE(TableContentRect(quarter, PageRect{0, 1000, 5000, 9000}).Top, 1602); // 1601.5
        QCOMPARE(TableContentRect(quarter, PageRect{0, 1001, 5000, 9000}).Top, 1602); // 1602.5
        QCOMPARE(TableContentRect(quarter, PageRect{0, 1000, 5000, 9000}).Bottom, 8699); // 8699.25

        FixedLineTarget half(100.5);                                                  // 3 lines 301.5
        QCOMPARE(TableContentRect(half, PageRect{0, 1000, 5000, 9000}).Bottom, 8698); // 8698.5
        QCOMPARE(TableContentRect(half, PageRect{0, 1000, 5000, 9001}).Bottom, 8700); // 8699.5
    }

    void rowsPerPageRoundsToNearestHalfToEven()
    {
        FixedLineTarget target(200); // rows of 250
        QCOMPARE(RowsPerPage(target, PageRect{0, 0, 100, 2500}), 10);
        QCOMPARE(RowsPerPage(target, PageRect{0, 0, 100, 2624}), 10);   // 10.496
        QCOMPARE(RowsPerPage(target, PageRect{0, 0, 100, 2625}), 10);   // 10.5: to even
        QCOMPARE(RowsPerPage(target, PageRect{0, 0, 100, 2626}), 11);   // 10.504: not truncated
        QCOMPARE(RowsPerPage(target, PageRect{0, 100, 100, 2975}), 12); // 11.5: to even
        QCOMPARE(RowsPerPage(target, PageRect{0, 0, 100, 124}), 0);
    }

    void rowsPerPageUsesTheBodyFont()
    {
        RecordingTarget target;
        target.SetFontBold(true);
        target.SetFontSize(14);
        // 10-point rows of 312.5: 6250 / 312.5 = 20.
        QCOMPARE(RowsPerPage(target, PageRect{0, 1000, 100, 7250}), 20);
        QVERIFY(!target.FontBold());
        QCOMPARE(target.FontSize(), 10.0);
    }

    void fitColumnsTakesTheColumnsThatFit()
    {
        const TableData table = tableOfWidths({400, 400, 400});
        const PageRect rect{100, 0, 1100, 1000}; // 1000 wide
        QCOMPARE(FitColumns(table, rect, 0), 1);
        QCOMPARE(FitColumns(table, rect, 1), 2);
        QCOMPARE(FitColumns(table, rect, 2), 2);
    }

    void fitColumnsBeyondTheLastColumnIsMinusOne()
    {
        const PageRect rect{0, 0, 1000, 1000};
        QCOMPARE(FitColumns(tableOfWidths({400, 400, 400}), rect, 3), -1);
        QCOMPARE(FitColumns(tableOfWidths({}), rect, 0), -1);
    }

    void fitColumnsWhenAllFit()
    {
        const PageRect rect{0, 0, 1000, 1000};
        QCOMPARE(FitColumns(tableOfWidths({300, 300, 300}), rect, 0), 2);
        // Filling the width exactly still fits.
        QCOMPARE(FitColumns(tableOfWidths({500, 500}), rect, 0), 1);
        QCOMPARE(FitColumns(tableOfWidths({500, 500.5f}), rect, 0), 0);
    }

    void fitColumnsPlacesATooWideColumnAlone()
    {
        const PageRect rect{0, 0, 1000, 1000};
        QCOMPARE(FitColumns(tableOfWidths({1500, 300}), rect, 0), 0);
        const TableData table = tableOfWidths({300, 1500, 300});
        QCOMPARE(FitColumns(table, rect, 0), 0);
        QCOMPARE(FitColumns(table, rect, 1), 1);
        QCOMPARE(FitColumns(table, rect, 2), 2);
    }

    void fortyFiveVisitsAtTwentyRowsMakeThreePages()
    {
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
            variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), 2),
        });
        TableData table = buildTable(info, visitSet(fieldsOf(info), 45, [](int n, int) { return n * 0.1; }));
        RecordingTarget target(12240, kTwentyRowPageHeight);
        QCOMPARE(RowsPerPage(target, contentRectOf(target)), 20);

        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QVERIFY(samePages(pages, {page(1, 0, 2, 1, 20), page(2, 0, 2, 21, 40), page(3, 0, 2, 41, 45)}));
        QCOMPARE(table.TotalWidth, 1500.0 + 1350 + 1350);

        // Laid out again, the list is rebuilt, not extended.
        SetUpTablePages(target, table, pages);
        QCOMPARE(pages.size(), 3);
    }

    void columnsInTwoGroupsRunBandByBand()
    {
        QList<ReportVariable> variables;
        for (int i = 1; i <= 8; ++i)
            variables.append(
                variable(QStringLiteral("Spirometry"), QStringLiteral("V%1").arg(i), QStringLiteral("L"), 2));
        const ReportInfo info = reportInfo(variables);
        TableData table = buildTable(info, visitSet(fieldsOf(info), 45, [](int, int) { return 4.25; }));
        RecordingTarget target(12240, kTwentyRowPageHeight);

        TablePageList pages;
        SetUpTablePages(target, table, pages);
        // 10800 wide: the dates (1500) and six columns of 1350 fit, a seventh does not.
        QCOMPARE(table.Columns[0].Width, 1500.0f);
        QCOMPARE(table.Columns[8].Width, 1350.0f);
        QVERIFY(samePages(pages, {page(1, 0, 6, 1, 20), page(2, 7, 8, 1, 20), page(3, 0, 6, 21, 40),
                                  page(4, 7, 8, 21, 40), page(5, 0, 6, 41, 45), page(6, 7, 8, 41, 45)}));
    }

    void anEmptyDataSetHasNoPages()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        TableData table = buildTable(info, visitSet(fieldsOf(info), 0, [](int, int) { return QVariant(); }));
        RecordingTarget target;
        TablePageList pages{page(1, 0, 1, 1, 5)};
        SetUpTablePages(target, table, pages);
        QVERIFY(pages.isEmpty());
    }

    void aColumnWiderThanThePageGetsAPageOfItsOwn()
    {
        const QString wide = QString(81, QLatin1Char('W')); // 81 x 135 = 10935, wider than 10800
        const ReportInfo info = reportInfo({
            variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
            variable(wide, QStringLiteral("FEV1"), QStringLiteral("L"), 2),
            variable(QStringLiteral("Spirometry"), QStringLiteral("PEF"), QStringLiteral("L/s"), 2),
        });
        TableData table = buildTable(info, visitSet(fieldsOf(info), 5, [](int, int) { return 4.25; }));
        RecordingTarget target;

        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QCOMPARE(table.Columns[2].Width, 10935.0f);
        QVERIFY(samePages(pages, {page(1, 0, 1, 1, 5), page(2, 2, 2, 1, 5), page(3, 3, 3, 1, 5)}));
    }

    void aPageTooShortForOneRowStillTakesOne()
    {
        const ReportInfo info =
            reportInfo({variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2)});
        TableData table = buildTable(info, visitSet(fieldsOf(info), 3, [](int, int) { return 4.25; }));
        RecordingTarget target(12240, 2500);
        QCOMPARE(RowsPerPage(target, contentRectOf(target)), 0);

        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QVERIFY(samePages(pages, {page(1, 0, 1, 1, 1), page(2, 0, 1, 2, 2), page(3, 0, 1, 3, 3)}));
    }

private:
    std::unique_ptr<ScopedTestStrings> m_strings;
};

CALVEX_TEST(TestPrintTablePagination)
#include "TestPrintTablePagination.moc"
