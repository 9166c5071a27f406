#include "TestPrintGraphData.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "output/modPrintGraph.h"
#include "platform/RecordingMessageService.h"

#include <QTest>

using namespace GraphTestData;
using Kind = RecordedOp::Kind;

class TestPrintGraphAxis : public QObject
{
    Q_OBJECT

private slots:
    void labelColumnIsWidestLabelAndHalfATick()
    {
        RecordingTarget target;
        target.SetFontBold(true);
        // Axis 7.6..12.4 with one decimal: labels 8.6, 9.5, 10.5, 11.4 every 0.96;
        // " 10.5  " is 7 characters of 96 at size 8; a tick is 2 % of 10000.
        const float width = MeasureAxisLabels(target, 7.6, 12.4, 4.8, Rect(1000, 1000, 11000, 5000), 1);
        QCOMPARE(width, 772.0f);
        QCOMPARE(target.FontBold(), false);
        QCOMPARE(target.FontSize(), 8.0);
        QVERIFY(target.drawOps().empty());
    }

    void labelsAndTicksStraddleTheLeftEdge()
    {
        RecordingTarget target;
        PageRect plot = Rect(1000, 1000, 11000, 5000);
        const double yScale = 4000 / 4.8;
        PrintValueAxis(target, 7.6, 12.4, 4.8, yScale, plot, 772.0f, 1);

        QCOMPARE(plot.Left, 1772);
        QCOMPARE(plot.Top, 1000);
        QCOMPARE(plot.Right, 11000);
        QCOMPARE(plot.Bottom, 5000);

        // Tick 2 % of the narrowed width: (11000 - 1772) x 0.02 = 184.56.
        const double tick = 184.56;
        const QStringList labels{QStringLiteral(" 8.6  "), QStringLiteral(" 9.5  "), QStringLiteral(" 10.5  "),
                                 QStringLiteral(" 11.4  ")};
        QCOMPARE(target.texts(), labels);
        const double ys[] = {4200, 3400, 2600, 1800};
        const std::vector<RecordedOp> prints = target.opsOf(Kind::Print);
        const std::vector<RecordedOp> ticks = target.opsOf(Kind::Line);
        QCOMPARE(ticks.size(), size_t(4));
        for (int i = 0; i < 4; ++i)
        {
            const double labelWidth = labels[i].size() * 96;
            GRAPH_COMPARE_NEAR(prints[size_t(i)].x1, 1772 - labelWidth - tick / 2);
            GRAPH_COMPARE_NEAR(prints[size_t(i)].y1, ys[i] - 100);
            QCOMPARE(prints[size_t(i)].fontSize, 8.0);
            GRAPH_COMPARE_NEAR(ticks[size_t(i)].x1, 1772 - tick / 2);
            GRAPH_COMPARE_NEAR(ticks[size_t(i)].x2, 1772 + tick / 2);
            GRAPH_COMPARE_NEAR(ticks[size_t(i)].y1, ys[i]);
            GRAPH_COMPARE_NEAR(ticks[size_t(i)].y2, ys[i]);
        }
    }

    void leftEdgeRoundsHalfToEven()
    {
        RecordingTarget target;
        PageRect plot = Rect(1000, 1000, 11000, 5000);
        PrintValueAxis(target, 0, 1, 1, 4000, plot, 772.5f, 1);
        QCOMPARE(plot.Left, 1772);
        plot = Rect(1001, 1000, 11000, 5000);
        PrintValueAxis(target, 0, 1, 1, 4000, plot, 772.5f, 1);
        QCOMPARE(plot.Left, 1774);
    }

    void stepRoundingToZeroDrawsNoLabels()
    {
        RecordingTarget target;
        // Span 0.2 / 5 = 0.04 rounds to 0.0 at one decimal place.
        const float width = MeasureAxisLabels(target, 0, 0.2, 0.2, Rect(1000, 1000, 11000, 5000), 0);
        QCOMPARE(width, 100.0f);
        PageRect plot = Rect(1000, 1000, 11000, 5000);
        PrintValueAxis(target, 0, 0.2, 0.2, 20000, plot, width, 0);
        QCOMPARE(plot.Left, 1100);
        QVERIFY(target.drawOps().empty());
    }

    void stepTooSmallToAdvanceEndsTheAxis()
    {
        RecordingTarget target;
        // Near 1e17 doubles are 16 apart, so adding the step of 6.4 leaves the
        // value where it was: one label, then the walk stops.
        const double axisMin = 1e17;
        const double axisMax = 1e17 + 32;
        PageRect plot = Rect(1000, 1000, 11000, 5000);
        PrintValueAxis(target, axisMin, axisMax, 32, 125, plot, 500.0f, 0);
        QCOMPARE(target.countOf(Kind::Print), 1);
        QCOMPARE(target.countOf(Kind::Line), 1);
        QVERIFY(MeasureAxisLabels(target, axisMin, axisMax, 32, plot, 0) > 0);
    }

    void statisticsLineCentresSDOnTheCVWidth()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        RecordingTarget target;
        target.SetFontBold(true);
        PageRect plot = Rect(1000, 1000, 11000, 5001);
        PrintStatisticsLine(target, plot, 10.25, 0.5, 0.123, 772.5f);
        QCOMPARE(boxes.count(), 0);

        // Size 10: 120 per character, lines 250 high. x0 = 1772.5, W = 9227.5.
        QCOMPARE(target.texts(), (QStringList{QStringLiteral("T4108: 10.25"), QStringLiteral("T4109: 12.3%"),
                                              QStringLiteral("T4110: 0.5")}));
        const std::vector<RecordedOp> prints = target.opsOf(Kind::Print);
        QCOMPARE(prints[0].x1, 1772.5);
        QCOMPARE(prints[0].y1, 4751.0);
        QCOMPARE(prints[0].fontBold, false);
        QCOMPARE(prints[0].fontSize, 10.0);
        // CV at the right: 1772.5 + 9227.5 - 12 x 120.
        QCOMPARE(prints[1].x1, 9560.0);
        QCOMPARE(prints[1].y1, 4751.0);
        // SD at x0 + (W - width of the CV text) / 2, not its own 10 x 120.
        QCOMPARE(prints[2].x1, 1772.5 + (9227.5 - 1440) / 2);
        QCOMPARE(prints[2].y1, 4751.0);
        // 5001 - 1.25 x 250 = 4688.5, rounded half to even.
        QCOMPARE(plot.Bottom, 4688);
        QCOMPARE(plot.Left, 1000);
    }

    void statisticsLineReportsItsOwnFailure()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        FailingTarget target(FailingTarget::FailOn::Print);
        PageRect plot = Rect(1000, 1000, 11000, 5000);
        PrintStatisticsLine(target, plot, 10, 1, 0.1, 772.0f);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, QStringLiteral("the device is gone"));
        QCOMPARE(boxes.last().style, 16);
        QCOMPARE(plot.Bottom, 5000);
    }

    void chartWithStatisticsPlotsAboveTheLine()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        RecordingTarget target;
        PageRect plot = Rect(1000, 1000, 11000, 5000);
        const GraphSeries series =
            Series(10, 1, 0.1, 1, Visits({{Day(2024, 3, 11), 10.0}, {Day(2024, 3, 1), 9.0}, {Day(2024, 3, 5), 12.0}}));
        QVERIFY(PrintGraphChart(target, plot, series, true, true));

        // The statistics line starts where the plot starts (1000 + 772) and
        // takes 1.25 lines: Bottom 5000 - 312.5 = 4687.5 -> 4688.
        const std::vector<RecordedOp> prints = target.opsOf(Kind::Print);
        QCOMPARE(prints[0].text, QStringLiteral("T4108: 10"));
        QCOMPARE(prints[0].x1, 1772.0);
        QCOMPARE(prints[0].y1, 4750.0);
        QCOMPARE(prints[1].text, QStringLiteral("T4109: 10%"));
        QCOMPARE(prints[2].text, QStringLiteral("T4110: 1"));
        QCOMPARE(prints[2].x1, 1772 + (9228 - 1200) / 2.0);
        QCOMPARE(plot.Bottom, 4688);
        const std::vector<RecordedOp> frames = target.opsOf(Kind::Box);
        QCOMPARE(frames.size(), size_t(1));
        QCOMPARE(frames[0].y2, 4688.0);
        // YScale (4688 - 1000) / 4.8: the mean of 10 lies 2.4 above the axis's 7.6.
        GRAPH_COMPARE_NEAR(target.opsOf(Kind::PSet).back().y1, 4688 - 2.4 * 3688 / 4.8);
    }
};

CALVEX_TEST(TestPrintGraphAxis)
#include "TestPrintGraphAxis.moc"
