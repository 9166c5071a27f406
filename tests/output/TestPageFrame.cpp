#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "output/RecordingTarget.h"
#include "output/modPrint.h"
#include "platform/Clock.h"

#include <QTest>

using Kind = RecordedOp::Kind;

namespace
{
// The recording target's metrics in the three report fonts.
const double TitleLine = RecordingTarget::lineHeight(14);   // 350
const double HeadingLine = RecordingTarget::lineHeight(10); // 250
const double SmallLine = RecordingTarget::lineHeight(8);    // 200
const double HeadingChar = RecordingTarget::charWidth(10, false);
const double SmallChar = RecordingTarget::charWidth(8, false);

PageRect LetterArea()
{
    PageRect area;
    area.Left = 720;
    area.Top = 720;
    area.Right = 11520;
    area.Bottom = 15120;
    return area;
}
} // namespace

class TestPageFrame : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // A Tuesday; "today" in the header reads 03/05/2024.
        Clock::pin(QDateTime(QDate(2024, 3, 5), QTime(9, 30)));
    }

    void cleanup() { Clock::pin(QDateTime()); }

    void printAreaOfALetterPage()
    {
        RecordingTarget target(12240, 15840);
        PageRect area;
        double height = 0;
        double width = 0;
        GetPrintArea(target, area, height, width);
        QCOMPARE(area.Left, 720);
        QCOMPARE(area.Top, 720);
        QCOMPARE(area.Right, 11520);
        QCOMPARE(area.Bottom, 15120);
        QCOMPARE(height, 14400.0);
        QCOMPARE(width, 10800.0);
    }

    void printAreaKeepsItsProportions_data()
    {
        QTest::addColumn<double>("pageWidth");
        QTest::addColumn<double>("pageHeight");
        QTest::addColumn<int>("left");
        QTest::addColumn<int>("top");
        QTest::addColumn<int>("right");
        QTest::addColumn<int>("bottom");
        // A4 in twips: margins 11906 / 17 = 700.35 and 16838 / 22 = 765.36.
        QTest::newRow("A4") << 11906.0 << 16838.0 << 700 << 765 << 11205 << 16072;
        // Letter landscape: 15840 / 17 = 931.76, 12240 / 22 = 556.36.
        QTest::newRow("Letter landscape") << 15840.0 << 12240.0 << 932 << 556 << 14908 << 11683;
        // Legal: 12240 x 20160, the vertical margin 916.36.
        QTest::newRow("Legal") << 12240.0 << 20160.0 << 720 << 916 << 11520 << 19243;
        // Exact halves round to even: 722.5 / 17 = 42.5 -> 42, 739.5 / 17 = 43.5 -> 44;
        // 1001 / 22 = 45.5 -> 46 and 1045 / 22 = 47.5 -> 48.
        QTest::newRow("half to even, down") << 722.5 << 1001.0 << 42 << 46 << 680 << 956;
        QTest::newRow("half to even, up") << 739.5 << 1045.0 << 44 << 48 << 696 << 998;
    }

    void printAreaKeepsItsProportions()
    {
        QFETCH(double, pageWidth);
        QFETCH(double, pageHeight);
        RecordingTarget target(pageWidth, pageHeight);
        PageRect area;
        double height = 0;
        double width = 0;
        GetPrintArea(target, area, height, width);
        QTEST(area.Left, "left");
        QTEST(area.Top, "top");
        QTEST(area.Right, "right");
        QTEST(area.Bottom, "bottom");
        QCOMPARE(height, double(area.Bottom - area.Top));
        QCOMPARE(width, double(area.Right - area.Left));
    }

    void printAreaFollowsTheOrigin()
    {
        RecordingTarget target(12240, 15840, 100, -200);
        PageRect area;
        double height = 0;
        double width = 0;
        GetPrintArea(target, area, height, width);
        QCOMPARE(area.Left, 820);
        QCOMPARE(area.Top, 520);
        QCOMPARE(area.Right, 11620);
        QCOMPARE(area.Bottom, 14920);
        QCOMPARE(width, 10800.0);
        QCOMPARE(height, 14400.0);
    }

    void reportFontsSetTypefaceSizeWeightAndLineStyle()
    {
        RecordingTarget target;
        const auto check = [&target](void (*setFont)(OutputTarget&), bool bold, double size) {
            target.SetFont(QStringLiteral("Courier New"));
            target.SetFontBold(!bold);
            target.SetFontSize(99);
            target.SetDrawStyle(2);
            setFont(target);
            QCOMPARE(target.Font(), QStringLiteral("Arial"));
            QCOMPARE(target.FontBold(), bold);
            QCOMPARE(target.FontSize(), size);
            QCOMPARE(target.DrawStyle(), 0);
        };
        check(SetTitleFont, true, 14);
        check(SetHeadingFont, false, 10);
        check(SetSmallFont, false, 8);
    }

    void headerAndFooterHeights()
    {
        RecordingTarget target;
        // One title line and four heading lines.
        QCOMPARE(HeaderHeight(target), TitleLine + 4 * HeadingLine);
        QCOMPARE(target.FontSize(), 10.0);
        QCOMPARE(target.FontBold(), false);
        // Three lines of the small font.
        QCOMPARE(FooterHeight(target), 3 * SmallLine);
        QCOMPARE(target.FontSize(), 8.0);
    }

    void headerDrawsTitleDatePeriodAndPatient()
    {
        ScopedTestStrings strings;
        RecordingTarget target;
        PageRect area = LetterArea();
        PrintPageHeader(target, QStringLiteral("Doe, John"), QStringLiteral("01/02/2024"), QStringLiteral("02/29/2024"),
                        area);

        const std::vector<RecordedOp> printed = target.opsOf(Kind::Print);
        QCOMPARE(printed.size(), size_t(4));

        QCOMPARE(printed[0].text, QStringLiteral("T4104"));
        QCOMPARE(printed[0].x1, 720.0);
        QCOMPARE(printed[0].y1, 720.0);
        QCOMPARE(printed[0].fontBold, true);
        QCOMPARE(printed[0].fontSize, 14.0);
        QCOMPARE(printed[0].font, QStringLiteral("Arial"));

        // Today, right-aligned on the title line in the heading font.
        QCOMPARE(printed[1].text, QStringLiteral("03/05/2024"));
        QCOMPARE(printed[1].x1, 11520 - 10 * HeadingChar);
        QCOMPARE(printed[1].y1, 720.0);
        QCOMPARE(printed[1].fontBold, false);
        QCOMPARE(printed[1].fontSize, 10.0);

        QCOMPARE(printed[2].text, QStringLiteral("T4040:  01/02/2024 - 02/29/2024"));
        QCOMPARE(printed[2].x1, 720.0);
        QCOMPARE(printed[2].y1, 720 + TitleLine);
        QCOMPARE(printed[2].fontSize, 10.0);

        QCOMPARE(printed[3].text, QStringLiteral("T4022:  Doe, John"));
        QCOMPARE(printed[3].x1, 720.0);
        QCOMPARE(printed[3].y1, 720 + TitleLine + HeadingLine);

        // The header takes one title line and four heading lines; the other edges stay.
        QCOMPARE(area.Top, qint32(720 + TitleLine + 4 * HeadingLine));
        QCOMPARE(area.Left, 720);
        QCOMPARE(area.Right, 11520);
        QCOMPARE(area.Bottom, 15120);
    }

    void periodLine_data()
    {
        QTest::addColumn<QString>("fromDate");
        QTest::addColumn<QString>("toDate");
        QTest::addColumn<QString>("line");
        QTest::newRow("from today, no end")
            << QStringLiteral("03/05/2024") << QString() << QStringLiteral("T4040:  T4105");
        QTest::newRow("from today to a date") << QStringLiteral("03/05/2024") << QStringLiteral("03/06/2024")
                                              << QStringLiteral("T4040:  03/05/2024 - 03/06/2024");
        QTest::newRow("empty end, other start")
            << QStringLiteral("01/15/2024") << QString() << QStringLiteral("T4040:  01/15/2024 - ");
        // Only the "mm/dd/yyyy" text of today counts as today.
        QTest::newRow("today written short")
            << QStringLiteral("3/5/2024") << QString() << QStringLiteral("T4040:  3/5/2024 - ");
        QTest::newRow("no dates at all") << QString() << QString() << QStringLiteral("T4040:   - ");
    }

    void periodLine()
    {
        QFETCH(QString, fromDate);
        QFETCH(QString, toDate);
        ScopedTestStrings strings;
        RecordingTarget target;
        PageRect area = LetterArea();
        PrintPageHeader(target, QStringLiteral("Roe, Ann"), fromDate, toDate, area);
        QTEST(target.texts().value(2), "line");
    }

    void footerWithoutTotalShowsTheNumberOnly()
    {
        ScopedTestStrings strings;
        RecordingTarget target;
        PageRect area = LetterArea();
        PrintPageFooter(target, 3, area, 0);

        const std::vector<RecordedOp> printed = target.opsOf(Kind::Print);
        QCOMPARE(printed.size(), size_t(1));
        QCOMPARE(printed[0].text, QStringLiteral("T4084 3"));
        QCOMPARE(printed[0].fontSize, 8.0);
        QCOMPARE(printed[0].fontBold, false);
        // Centred between Left and Right, its line ending on the bottom edge.
        QCOMPARE(printed[0].x1, 720 + (10800 - 7 * SmallChar) / 2);
        QCOMPARE(printed[0].y1, 15120 - SmallLine);
        QCOMPARE(area.Bottom, qint32(15120 - 3 * SmallLine));
        QCOMPARE(area.Top, 720);
        QCOMPARE(area.Left, 720);
        QCOMPARE(area.Right, 11520);
    }

    void footerWithTotal()
    {
        ScopedTestStrings strings;
        RecordingTarget target;
        PageRect area = LetterArea();
        PrintPageFooter(target, 3, area, 7);
        QCOMPARE(target.texts(), QStringList{QStringLiteral("T4084 3 T4106 7")});
        QCOMPARE(target.opsOf(Kind::Print)[0].x1, 720 + (10800 - 15 * SmallChar) / 2);

        // A negative total is no total either.
        RecordingTarget other;
        PageRect area2 = LetterArea();
        PrintPageFooter(other, 12, area2, -1);
        QCOMPARE(other.texts(), QStringList{QStringLiteral("T4084 12")});
    }

    void aWholePageFrameLeavesTheRectangleForTheLayout()
    {
        ScopedTestStrings strings;
        RecordingTarget target;
        PageRect area;
        double height = 0;
        double width = 0;
        GetPrintArea(target, area, height, width);
        PrintPageHeader(target, QStringLiteral("Doe, John"), QStringLiteral("01/02/2024"), QString(), area);
        PrintPageFooter(target, 1, area, 2);
        QCOMPARE(area.Left, 720);
        QCOMPARE(area.Top, 720 + 1350);
        QCOMPARE(area.Right, 11520);
        QCOMPARE(area.Bottom, 15120 - 600);
        QCOMPARE(target.texts(), QStringList({QStringLiteral("T4104"), QStringLiteral("03/05/2024"),
                                              QStringLiteral("T4040:  01/02/2024 - "),
                                              QStringLiteral("T4022:  Doe, John"), QStringLiteral("T4084 1 T4106 2")}));
        // The frame draws text only.
        QCOMPARE(target.drawOps().size(), size_t(5));
    }
};

CALVEX_TEST(TestPageFrame)
#include "TestPageFrame.moc"
