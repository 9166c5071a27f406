#include "common/TestMain.h"
#include "output/RecordingTarget.h"

#include <QTest>

using Kind = RecordedOp::Kind;

class TestRecordingTarget : public QObject
{
    Q_OBJECT

private slots:
    void defaultPageIsLetterInTwips()
    {
        RecordingTarget target;
        QCOMPARE(target.ScaleLeft(), 0.0);
        QCOMPARE(target.ScaleTop(), 0.0);
        QCOMPARE(target.ScaleWidth(), 12240.0);
        QCOMPARE(target.ScaleHeight(), 15840.0);
        QCOMPARE(target.Font(), QStringLiteral("Arial"));
        QCOMPARE(target.FontSize(), 10.0);
        QCOMPARE(target.FontBold(), false);
        QCOMPARE(target.ForeColor(), QColor(0, 0, 0));
        QCOMPARE(target.DrawWidth(), 1);
        QCOMPARE(target.DrawStyle(), 0);
        QCOMPARE(target.DeviceName(), QString());
    }

    void configurablePage()
    {
        RecordingTarget target(11906, 16838, 100, 200);
        QCOMPARE(target.ScaleWidth(), 11906.0);
        QCOMPARE(target.ScaleHeight(), 16838.0);
        QCOMPARE(target.ScaleLeft(), 100.0);
        QCOMPARE(target.ScaleTop(), 200.0);
        QCOMPARE(target.CurrentX(), 100.0);
        QCOMPARE(target.CurrentY(), 200.0);

        target.setPage(15840, 12240);
        QCOMPARE(target.ScaleWidth(), 15840.0);
        QCOMPARE(target.ScaleHeight(), 12240.0);
        QCOMPARE(target.ScaleLeft(), 0.0);

        target.setDeviceName(QStringLiteral("Lab Printer"));
        QCOMPARE(target.DeviceName(), QStringLiteral("Lab Printer"));
    }

    void textMetricsFollowTheirRules()
    {
        RecordingTarget target;
        target.SetFontSize(10);
        QCOMPARE(target.TextWidth(QStringLiteral("Page")), 480.0);
        QCOMPARE(target.TextHeight(QStringLiteral("Page")), 250.0);
        QCOMPARE(target.TextWidth(QString()), 0.0);
        QCOMPARE(target.TextHeight(QString()), 250.0);

        target.SetFontBold(true);
        target.SetFontSize(14);
        QCOMPARE(target.TextWidth(QStringLiteral("QC")), 2 * 14 * 12 * 1.125);
        QCOMPARE(target.TextHeight(QStringLiteral("QC")), 350.0);

        target.SetFontBold(false);
        target.SetFontSize(8);
        QCOMPARE(target.TextWidth(QStringLiteral("ab\nabcd\nc")), 4 * 96.0);
        QCOMPARE(target.TextHeight(QStringLiteral("ab\nabcd\nc")), 3 * 200.0);

        // The typeface does not change the numbers.
        target.SetFont(QStringLiteral("Courier New"));
        QCOMPARE(target.TextWidth(QStringLiteral("abcd")), 4 * 96.0);

        QCOMPARE(RecordingTarget::charWidth(8, false), 96.0);
        QCOMPARE(RecordingTarget::charWidth(8, true), 108.0);
        QCOMPARE(RecordingTarget::lineHeight(8), 200.0);
    }

    void printMovesOneLineDownAndBackToTheLeftEdge()
    {
        RecordingTarget target(12240, 15840, 50, 0);
        target.SetFontSize(12);
        target.SetCurrentX(1000);
        target.SetCurrentY(700);
        target.Print(QStringLiteral("Title"));
        QCOMPARE(target.CurrentX(), 50.0);
        QCOMPARE(target.CurrentY(), 700.0 + 300.0);

        target.Print(QStringLiteral("two\nlines"));
        QCOMPARE(target.CurrentY(), 1000.0 + 600.0);

        const std::vector<RecordedOp> printed = target.opsOf(Kind::Print);
        QCOMPARE(printed.size(), size_t(2));
        QCOMPARE(printed[0].x1, 1000.0);
        QCOMPARE(printed[0].y1, 700.0);
        QCOMPARE(printed[0].fontSize, 12.0);
        QCOMPARE(printed[1].x1, 50.0);
        QCOMPARE(printed[1].y1, 1000.0);
        QCOMPARE(target.texts(), QStringList({QStringLiteral("Title"), QStringLiteral("two\nlines")}));
    }

    void everyOperationIsLoggedWithTheStateOfItsTime()
    {
        RecordingTarget target;
        target.SetFont(QStringLiteral("Arial"));
        target.SetFontSize(8);
        target.SetFontBold(true);
        target.SetDrawWidth(3);
        target.SetDrawStyle(2);
        target.SetForeColor(QColor(0, 0, 255));
        target.Line(10, 20, 30, 40);
        target.Line(1, 2, 3, 4, QColor(255, 0, 0), true);
        target.SetDrawStyle(0);
        target.PSet(5, 6);
        target.Circle(7, 8, 90, QColor(0, 128, 0));
        target.SetCurrentX(11);
        target.SetCurrentY(12);
        target.Print(QStringLiteral("x"));

        const std::vector<RecordedOp> ops = target.drawOps();
        QCOMPARE(ops.size(), size_t(5));

        QCOMPARE(ops[0].kind, Kind::Line);
        QCOMPARE(ops[0].x1, 10.0);
        QCOMPARE(ops[0].y1, 20.0);
        QCOMPARE(ops[0].x2, 30.0);
        QCOMPARE(ops[0].y2, 40.0);
        QCOMPARE(ops[0].color, QColor(0, 0, 255));
        QCOMPARE(ops[0].drawWidth, 3);
        QCOMPARE(ops[0].drawStyle, 2);

        QCOMPARE(ops[1].kind, Kind::Box);
        QCOMPARE(ops[1].color, QColor(255, 0, 0));
        QCOMPARE(ops[1].x2, 3.0);

        QCOMPARE(ops[2].kind, Kind::PSet);
        QCOMPARE(ops[2].x1, 5.0);
        QCOMPARE(ops[2].y1, 6.0);
        QCOMPARE(ops[2].color, QColor(0, 0, 255));
        QCOMPARE(ops[2].drawStyle, 0);

        QCOMPARE(ops[3].kind, Kind::Circle);
        QCOMPARE(ops[3].x1, 7.0);
        QCOMPARE(ops[3].y1, 8.0);
        QCOMPARE(ops[3].x2, 90.0);
        QCOMPARE(ops[3].color, QColor(0, 128, 0));

        QCOMPARE(ops[4].kind, Kind::Print);
        QCOMPARE(ops[4].text, QStringLiteral("x"));
        QCOMPARE(ops[4].font, QStringLiteral("Arial"));
        QCOMPARE(ops[4].fontSize, 8.0);
        QCOMPARE(ops[4].fontBold, true);
        QCOMPARE(ops[4].color, QColor(0, 0, 255));

        QCOMPARE(target.countOf(Kind::Line), 1);
        QCOMPARE(target.countOf(Kind::NewPage), 0);
    }

    void stateChangesAreLoggedInOrderWithTheirNewValue()
    {
        RecordingTarget target;
        target.SetDrawWidth(4);
        target.SetForeColor(QColor(128, 128, 128));
        target.SetForeColor(QColor(0, 0, 0));
        target.SetDrawWidth(1);
        target.Line(0, 10, 100, 10);
        target.SetDrawStyle(2);
        target.SetFont(QStringLiteral("Arial"));
        target.SetFontSize(6);
        target.SetFontBold(true);

        const std::vector<RecordedOp>& ops = target.ops();
        QCOMPARE(ops.size(), size_t(9));
        QCOMPARE(ops[0].kind, Kind::SetDrawWidth);
        QCOMPARE(ops[0].drawWidth, 4);
        QCOMPARE(ops[1].kind, Kind::SetForeColor);
        QCOMPARE(ops[1].color, QColor(128, 128, 128));
        QCOMPARE(ops[2].kind, Kind::SetForeColor);
        QCOMPARE(ops[2].color, QColor(0, 0, 0));
        QCOMPARE(ops[3].kind, Kind::SetDrawWidth);
        QCOMPARE(ops[3].drawWidth, 1);
        QCOMPARE(ops[4].kind, Kind::Line);
        QVERIFY(!ops[4].isStateChange());
        QCOMPARE(ops[5].kind, Kind::SetDrawStyle);
        QCOMPARE(ops[5].drawStyle, 2);
        QCOMPARE(ops[6].kind, Kind::SetFont);
        QCOMPARE(ops[6].font, QStringLiteral("Arial"));
        QCOMPARE(ops[7].kind, Kind::SetFontSize);
        QCOMPARE(ops[7].fontSize, 6.0);
        QCOMPARE(ops[8].kind, Kind::SetFontBold);
        QCOMPARE(ops[8].fontBold, true);
        QVERIFY(ops[8].isStateChange());

        QCOMPARE(target.drawOps().size(), size_t(1));
        QCOMPARE(target.countOf(Kind::SetForeColor), 2);
    }

    void pageOperationsAreLoggedAndResetThePosition()
    {
        RecordingTarget target;
        target.SetCurrentX(500);
        target.SetCurrentY(600);
        target.NewPage();
        QCOMPARE(target.CurrentX(), 0.0);
        QCOMPARE(target.CurrentY(), 0.0);
        target.SetCurrentY(600);
        target.Cls();
        QCOMPARE(target.CurrentY(), 0.0);
        target.NewPage();
        target.EndDoc();
        QCOMPARE(target.countOf(Kind::NewPage), 2);
        QCOMPARE(target.countOf(Kind::Cls), 1);
        QCOMPARE(target.countOf(Kind::EndDoc), 1);
        QCOMPARE(target.ops().back().kind, Kind::EndDoc);

        target.clearOps();
        QVERIFY(target.ops().empty());
        QCOMPARE(target.ScaleWidth(), 12240.0);
    }
};

CALVEX_TEST(TestRecordingTarget)
#include "TestRecordingTarget.moc"
