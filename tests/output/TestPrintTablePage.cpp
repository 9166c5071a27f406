#include "TestPrintTableFixtures.h"
#include "common/TestMain.h"

#include "common/TestStrings.h"
#include "output/RecordingTarget.h"
#include "platform/Clock.h"

#include <QTest>

using namespace PrintTableFixtures;
using Kind = RecordedOp::Kind;

namespace
{
// The header prints four lines and the footer one before the table's own texts.
constexpr int kFrameTexts = 5;

struct Printed
{
    QString text;
    double x;
    double y;
    bool bold;
};

// The table's own texts (headings and cells) of the last page drawn on target.
QList<Printed> tableTexts(const RecordingTarget& target)
{
    QList<Printed> printed;
    for (const RecordedOp& op : target.opsOf(Kind::Print))
        printed.append(Printed{op.text, op.x1, op.y1, op.fontBold});
    return printed.mid(kFrameTexts);
}

bool samePrinted(const QList<Printed>& actual, const QList<Printed>& expected)
{
    bool same = actual.size() == expected.size();
    if (!same)
        qWarning("%lld texts instead of %lld", qlonglong(actual.size()), qlonglong(expected.size()));
    for (qsizetype i = 0; i < std::min(actual.size(), expected.size()); ++i)
    {
        const Printed& a = actual[i];
        const Printed& e = expected[i];
        if (a.text != e.text || a.x != e.x || a.y != e.y || a.bold != e.bold)
        {
            qWarning("text %lld is \"%s\" at (%g, %g)%s, expected \"%s\" at (%g, %g)%s", qlonglong(i),
                     qPrintable(a.text), a.x, a.y, a.bold ? " bold" : "", qPrintable(e.text), e.x, e.y,
                     e.bold ? " bold" : "");
            same = false;
        }
    }
    return same;
}

ReportInfo spirometryInfo()
{
    return reportInfo({
        variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), 2),
        variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), 2),
    });
}

// 45 visits; FVC of visit n is n / 10, FEV1 one more.
RecordsetPtr fortyFiveVisits(const ReportInfo& info)
{
    return visitSet(fieldsOf(info), 45, [](int n, int f) { return QVariant(n / 10.0 + f); });
}
} // namespace

class TestPrintTablePage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_strings = std::make_unique<ScopedTestStrings>();
        Clock::pin(QDateTime(QDate(2024, 6, 1), QTime(9, 0)));
    }

    void cleanupTestCase()
    {
        Clock::pin(QDateTime());
        m_strings.reset();
    }

    void afterThreeGraphPagesTheTableStartsANewSheetNumberedOn()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        RecordingTarget target;
        TablePageList pages;
        SetUpTablePages(target, table, pages);
        target.clearOps();

        QCOMPARE(PrintTablePage(&target, table, info, pages[0], 3, true), 2);
        QCOMPARE(target.drawOps().front().kind, Kind::NewPage);
        QCOMPARE(target.countOf(Kind::NewPage), 1);
        QCOMPARE(target.countOf(Kind::Cls), 0);
        const QStringList texts = target.texts();
        QVERIFY(texts.contains(QStringLiteral("T4084 4")));
        for (const QString& text : texts)
            QVERIFY2(!text.contains(QStringLiteral("T4106")), qPrintable(text));
    }

    void theFirstSheetOfAPrintRunIsNotEndedFirst()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        RecordingTarget target;
        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QCOMPARE(pages.size(), 2); // 39 rows a letter page

        target.clearOps();
        QCOMPARE(PrintTablePage(&target, table, info, pages[0], 0, true), 2);
        QCOMPARE(target.countOf(Kind::NewPage), 0);
        QVERIFY(target.texts().contains(QStringLiteral("T4084 1")));

        target.clearOps();
        QCOMPARE(PrintTablePage(&target, table, info, pages[1], 0, true), 3);
        QCOMPARE(target.drawOps().front().kind, Kind::NewPage);
        QCOMPARE(target.countOf(Kind::NewPage), 1);
        QVERIFY(target.texts().contains(QStringLiteral("T4084 2")));
    }

    void thePreviewClearsItsPictureInsteadOfStartingASheet()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        RecordingTarget target;
        TablePageList pages;
        SetUpTablePages(target, table, pages);

        for (const TablePage& page : pages)
        {
            target.clearOps();
            QCOMPARE(PrintTablePage(&target, table, info, page, 3, false), page.PageNumber + 1);
            QCOMPARE(target.drawOps().front().kind, Kind::Cls);
            QCOMPARE(target.countOf(Kind::Cls), 1);
            QCOMPARE(target.countOf(Kind::NewPage), 0);
            QVERIFY(target.texts().contains(QStringLiteral("T4084 %1").arg(page.PageNumber + 3)));
        }
    }

    void aPageDrawsItsHeadingsAndItsBandOfRows()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        RecordingTarget target; // letter page: print area 720, 720, 11520, 15120
        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QCOMPARE(table.Columns[0].Width, 1500.0f); // "02/09/2024" x 120 x 1.25
        QCOMPARE(table.Columns[1].Width, 1350.0f); // "Spirometry" in bold
        QCOMPARE(table.Columns[2].Width, 1350.0f);
        target.clearOps();

        QCOMPARE(PrintTablePage(&target, table, info, pages[1], 0, true), 3);
        QCOMPARE(pages[1].FirstRow, 40);
        QCOMPARE(pages[1].LastRow, 45);

        // Headings below the header (720 + 1350), right-aligned in columns
        // starting at 720, 2220 and 3570; the unit trimmed and in parentheses.
        QList<Printed> expected{
            {QStringLiteral("Visit Date"), 870, 2320, true},  {QStringLiteral("Spirometry"), 2220, 2070, true},
            {QStringLiteral("FVC"), 3165, 2320, true},        {QStringLiteral("(L)"), 3165, 2570, true},
            {QStringLiteral("Spirometry"), 3570, 2070, true}, {QStringLiteral("FEV1"), 4380, 2320, true},
            {QStringLiteral("(L)"), 4515, 2570, true},
        };
        // Rows of 312.5 from four heading lines further down, each top rounded half to even.
        const QList<double> rowTops{3070, 3382, 3694, 4006, 4318, 4630};
        const QStringList dates{QStringLiteral("02/09/2024"), QStringLiteral("02/10/2024"),
                                QStringLiteral("02/11/2024"), QStringLiteral("02/12/2024"),
                                QStringLiteral("02/13/2024"), QStringLiteral("02/14/2024")};
        for (int i = 0; i < 6; ++i)
        {
            const int visit = 40 + i;
            const QString fvc = QString::number(visit / 10.0, 'f', 2);
            const QString fev1 = QString::number(visit / 10.0 + 1, 'f', 2);
            expected.append({dates[i], 720 + 1500 - 1200, rowTops[i], false});
            expected.append({fvc, 2220 + 1350 - 120.0 * fvc.size(), rowTops[i], false});
            expected.append({fev1, 3570 + 1350 - 120.0 * fev1.size(), rowTops[i], false});
        }
        QVERIFY(samePrinted(tableTexts(target), expected));

        // The data set is left after the page's last row, the target in the body font.
        QVERIFY(table.Data->IsEOF());
        QVERIFY(!target.FontBold());
        QCOMPARE(target.FontSize(), 10.0);
        QVERIFY(target.texts().contains(QStringLiteral("T4022:  Control, Quality")));
    }

    void onlyTheFirstColumnGroupShowsTheVisitDate()
    {
        QList<ReportVariable> variables;
        for (int i = 1; i <= 8; ++i)
            variables.append(
                variable(QStringLiteral("Spirometry"), QStringLiteral("V%1").arg(i), QStringLiteral("L"), 2));
        const ReportInfo info = reportInfo(variables);
        TableData table = buildTable(info, visitSet(fieldsOf(info), 3, [](int, int f) { return QVariant(f + 1.25); }));
        RecordingTarget target;
        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QCOMPARE(pages.size(), 2);
        QCOMPARE(pages[1].FirstColumn, 7);

        target.clearOps();
        PrintTablePage(&target, table, info, pages[0], 0, true);
        QStringList texts = target.texts();
        QVERIFY(texts.contains(QStringLiteral("Visit Date")));
        QVERIFY(texts.contains(QStringLiteral("01/01/2024")));
        QVERIFY(texts.contains(QStringLiteral("V6")));
        QVERIFY(!texts.contains(QStringLiteral("V7")));

        target.clearOps();
        PrintTablePage(&target, table, info, pages[1], 0, true);
        texts = target.texts();
        QVERIFY(!texts.contains(QStringLiteral("Visit Date")));
        QVERIFY(!texts.contains(QStringLiteral("01/01/2024")));
        QVERIFY(!texts.contains(QStringLiteral("V6")));
        // The second group (V7, V8) starts at the left edge: "Spirometry" fills its column of 1350.
        const QList<Printed> printed = tableTexts(target);
        QCOMPARE(printed.size(), 2 * 3 + 3 * 2);
        QCOMPARE(printed.at(0).text, QStringLiteral("Spirometry"));
        QCOMPARE(printed.at(0).x, 720.0);
        QCOMPARE(printed.at(1).text, QStringLiteral("V7"));
        QCOMPARE(printed.at(6).text, QStringLiteral("7.25"));
        QCOMPARE(printed.at(6).x, 720 + 1350 - 480.0);
        QCOMPARE(printed.at(7).text, QStringLiteral("8.25"));
        QCOMPARE(printed.at(7).x, 2070 + 1350 - 480.0);
    }

    void unitsArePrintedTrimmedButMeasuredBare()
    {
        const ReportInfo info = reportInfo({
            variable(QString(), QStringLiteral("V"), QStringLiteral("mL/min"), 0),
            variable(QString(), QStringLiteral("W"), QStringLiteral("  L  "), 0),
            variable(QString(), QStringLiteral("Z"), QStringLiteral("   "), 0),
        });
        TableData table = buildTable(info, visitSet(fieldsOf(info), 1, [](int, int) { return QVariant(0.0); }));
        RecordingTarget target;
        TablePageList pages;
        SetUpTablePages(target, table, pages);
        QCOMPARE(table.Columns[1].Width, 810.0f); // "mL/min"
        QCOMPARE(table.Columns[2].Width, 675.0f); // "  L  "
        QCOMPARE(table.Columns[3].Width, 405.0f); // "   "
        target.clearOps();

        PrintTablePage(&target, table, info, pages[0], 0, true);
        const QList<Printed> expected{
            {QStringLiteral("Visit Date"), 870, 2320, true},
            // "(mL/min)" is wider than its column and reaches 270 to the left of it.
            {QStringLiteral("V"), 2220 + 810 - 135, 2320, true},
            {QStringLiteral("(mL/min)"), 2220 + 810 - 1080, 2570, true},
            {QStringLiteral("W"), 3030 + 675 - 135, 2320, true},
            {QStringLiteral("(L)"), 3030 + 675 - 405, 2570, true},
            {QStringLiteral("Z"), 3705 + 405 - 135, 2320, true},
            {QString(), 3705 + 405, 2570, true},
            // Zero readings are blank cells.
            {QStringLiteral("01/01/2024"), 1020, 3070, false},
            {QString(), 3030, 3070, false},
            {QString(), 3705, 3070, false},
            {QString(), 4110, 3070, false},
        };
        QVERIFY(samePrinted(tableTexts(target), expected));
    }

    void aRowIsOneAndAQuarterLinesHigh()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        RecordingTarget target;
        SetTableBodyFont(target);
        QCOMPARE(PrintTableRow(target, table, PageRect{720, 1000, 11520, 15000}, 0, 2), 312.5);
        QCOMPARE(target.countOf(Kind::Print), 3);
    }

    void withoutATargetNothingIsDrawn()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        QCOMPARE(PrintTablePage(nullptr, table, info, TablePage{1, 0, 2, 1, 20}, 0, true), 0);
    }

    void aRunTimeErrorEndsThePageWithZero()
    {
        const ReportInfo info = spirometryInfo();
        TableData table = buildTable(info, fortyFiveVisits(info));
        RecordingTarget target;
        qint32 next = -1;
        try
        {
            // Row 99 is beyond the data set.
            next = PrintTablePage(&target, table, info, TablePage{1, 0, 2, 99, 100}, 0, true);
        }
        catch (...)
        {
            QFAIL("PrintTablePage let an exception escape");
        }
        QCOMPARE(next, 0);

        table.Data->Close();
        QCOMPARE(PrintTablePage(&target, table, info, TablePage{1, 0, 2, 1, 20}, 0, true), 0);

        table.Data.reset();
        QCOMPARE(PrintTablePage(&target, table, info, TablePage{1, 0, 2, 1, 20}, 0, true), 0);
    }

private:
    std::unique_ptr<ScopedTestStrings> m_strings;
};

CALVEX_TEST(TestPrintTablePage)
#include "TestPrintTablePage.moc"
