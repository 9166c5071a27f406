#include "TestPrintGraphData.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "output/modPrintGraph.h"
#include "platform/RecordingMessageService.h"

#include <QTest>

using namespace GraphTestData;
using Kind = RecordedOp::Kind;

namespace
{
// Three visits over eleven days around a mean of 10 with SD 1, not in date
// order. The chart works out to:
//   control limits 12 and 8; value range 8..12 centred on 10; axis 7.6..12.4 (span 4.8)
//   axis labels every Round(0.96, 2) = 0.96 from 8.56 to 11.44, the widest " 10.5  " (7 x 96)
//   label column 672 + half a tick of 200 = 772; plot Left 1000 + 772 = 1772
//   DaySlots 10 + 2 = 12; XStep (11000 - 1772) / 12 = 769; first day at x 2541
//   YScale 4000 / 4.8 = 833.33; marker radius 4000 x 0.02 = 80
GraphSeries ElevenDays()
{
    return Series(10, 1, 0.1, 1, Visits({{Day(2024, 3, 11), 10.0}, {Day(2024, 3, 1), 9.0}, {Day(2024, 3, 5), 12.0}}));
}

PageRect Plot()
{
    return Rect(1000, 1000, 11000, 5000);
}

// One framed chart drawn into Plot() on a recording target, with the test
// texts and a recorder for message boxes.
struct ChartRun
{
    ScopedTestStrings strings;
    RecordingMessageService boxes;
    RecordingTarget target;
    PageRect plot = Plot();

    bool draw(const GraphSeries& series, bool showStatistics = false)
    {
        return PrintGraphChart(target, plot, series, showStatistics, true);
    }
};

std::vector<RecordedOp> PrintsOf(const RecordingTarget& target, const QString& text)
{
    std::vector<RecordedOp> found;
    for (const RecordedOp& op : target.opsOf(Kind::Print))
    {
        if (op.text == text)
            found.push_back(op);
    }
    return found;
}
} // namespace

class TestPrintGraphChart : public QObject
{
    Q_OBJECT

private slots:
    void markerGeometryOfKnownVisits()
    {
        ChartRun run;
        QVERIFY(run.draw(ElevenDays()));
        QCOMPARE(run.boxes.count(), 0);

        QCOMPARE(run.plot.Left, 1772);
        QCOMPARE(run.plot.Top, 1000);
        QCOMPARE(run.plot.Right, 11000);
        QCOMPARE(run.plot.Bottom, 5000);

        const std::vector<RecordedOp> frames = run.target.opsOf(Kind::Box);
        QCOMPARE(frames.size(), size_t(1));
        QCOMPARE(frames[0].x1, 1772.0);
        QCOMPARE(frames[0].y1, 1000.0);
        QCOMPARE(frames[0].x2, 11000.0);
        QCOMPARE(frames[0].y2, 5000.0);
        QCOMPARE(frames[0].drawWidth, 4);
        QCOMPARE(frames[0].color, QColor(0, 0, 0));

        // In date order: 03/01 (9), 03/05 (12), 03/11 (10).
        const double xs[] = {2541, 2541 + 4 * 769, 2541 + 10 * 769};
        const double ys[] = {5000.0 - 3500.0 / 3, 4000.0 / 3, 3000};
        const std::vector<RecordedOp> points = run.target.opsOf(Kind::PSet);
        const std::vector<RecordedOp> circles = run.target.opsOf(Kind::Circle);
        QCOMPARE(points.size(), size_t(3));
        QCOMPARE(circles.size(), size_t(3));
        for (int i = 0; i < 3; ++i)
        {
            GRAPH_COMPARE_NEAR(points[i].x1, xs[i]);
            GRAPH_COMPARE_NEAR(points[i].y1, ys[i]);
            QCOMPARE(points[i].color, QColor(0, 0, 0));
            QCOMPARE(points[i].drawWidth, 5);
            QCOMPARE(points[i].fontBold, true);
            GRAPH_COMPARE_NEAR(circles[i].x1, xs[i]);
            GRAPH_COMPARE_NEAR(circles[i].y1, ys[i]);
            GRAPH_COMPARE_NEAR(circles[i].x2, 80);
        }

        // Each marker is a point, a circle and a cross of two strokes, in that order.
        const std::vector<RecordedOp> draws = run.target.drawOps();
        const auto first =
            std::find_if(draws.begin(), draws.end(), [](const RecordedOp& op) { return op.kind == Kind::PSet; });
        QVERIFY(first != draws.end());
        QCOMPARE(std::distance(first, draws.end()), 12);
        const RecordedOp& horizontal = *(first + 2);
        const RecordedOp& vertical = *(first + 3);
        QCOMPARE((first + 1)->kind, Kind::Circle);
        QCOMPARE(horizontal.kind, Kind::Line);
        QCOMPARE(vertical.kind, Kind::Line);
        GRAPH_COMPARE_NEAR(horizontal.x1, 2461);
        GRAPH_COMPARE_NEAR(horizontal.x2, 2621);
        GRAPH_COMPARE_NEAR(horizontal.y1, ys[0]);
        GRAPH_COMPARE_NEAR(horizontal.y2, ys[0]);
        GRAPH_COMPARE_NEAR(vertical.x1, 2541);
        GRAPH_COMPARE_NEAR(vertical.x2, 2541);
        GRAPH_COMPARE_NEAR(vertical.y1, ys[0] - 80);
        GRAPH_COMPARE_NEAR(vertical.y2, ys[0] + 80);

        // What the chart leaves behind.
        QCOMPARE(run.target.FontBold(), false);
        QCOMPARE(run.target.DrawWidth(), 1);
    }

    void controlLineSequence()
    {
        ChartRun run;
        QVERIFY(run.draw(ElevenDays()));

        const std::vector<RecordedOp>& ops = run.target.ops();
        const auto frame =
            std::find_if(ops.begin(), ops.end(), [](const RecordedOp& op) { return op.kind == Kind::Box; });
        QVERIFY(frame != ops.end());
        QVERIFY(std::distance(frame, ops.end()) > 11);
        QCOMPARE((frame - 1)->kind, Kind::SetDrawWidth);
        QCOMPARE((frame - 1)->drawWidth, 4);
        QCOMPARE((frame + 1)->kind, Kind::SetDrawWidth);
        QCOMPARE((frame + 1)->drawWidth, 1);

        const auto s = frame + 2;
        QCOMPARE(s[0].kind, Kind::SetDrawWidth);
        QCOMPARE(s[0].drawWidth, 4);
        QCOMPARE(s[1].kind, Kind::SetForeColor);
        QCOMPARE(s[1].color, QColor(128, 128, 128));
        QCOMPARE(s[2].kind, Kind::SetForeColor);
        QCOMPARE(s[2].color, QColor(0, 0, 0));
        QCOMPARE(s[3].kind, Kind::SetDrawWidth);
        QCOMPARE(s[3].drawWidth, 1);

        // The mean line, solid, black and one pixel wide.
        QCOMPARE(s[4].kind, Kind::Line);
        QCOMPARE(s[4].x1, 1772.0);
        QCOMPARE(s[4].x2, 11000.0);
        GRAPH_COMPARE_NEAR(s[4].y1, 3000);
        GRAPH_COMPARE_NEAR(s[4].y2, 3000);
        QCOMPARE(s[4].drawStyle, 0);
        QCOMPARE(s[4].drawWidth, 1);
        QCOMPARE(s[4].color, QColor(0, 0, 0));

        // Dotted lines at mean + 2 SD = 12 and mean - 2 SD = 8.
        QCOMPARE(s[5].kind, Kind::SetDrawStyle);
        QCOMPARE(s[5].drawStyle, 2);
        QCOMPARE(s[6].kind, Kind::Line);
        GRAPH_COMPARE_NEAR(s[6].y1, 4000.0 / 3);
        GRAPH_COMPARE_NEAR(s[6].y2, 4000.0 / 3);
        QCOMPARE(s[6].drawStyle, 2);
        QCOMPARE(s[7].kind, Kind::Line);
        GRAPH_COMPARE_NEAR(s[7].y1, 14000.0 / 3);
        QCOMPARE(s[7].drawStyle, 2);
        QCOMPARE(s[7].x1, 1772.0);
        QCOMPARE(s[7].x2, 11000.0);
        QCOMPARE(s[8].kind, Kind::SetDrawStyle);
        QCOMPARE(s[8].drawStyle, 0);
    }

    void limitLabelsBesideTheirLines()
    {
        ChartRun run;
        QVERIFY(run.draw(ElevenDays()));

        QVERIFY(PrintsOf(run.target, QStringLiteral(" \u00B1 2SD")).empty());
        const std::vector<RecordedOp> upper = PrintsOf(run.target, QStringLiteral(" + 2SD"));
        const std::vector<RecordedOp> lower = PrintsOf(run.target, QStringLiteral(" - 2SD"));
        QCOMPARE(upper.size(), size_t(1));
        QCOMPARE(lower.size(), size_t(1));
        // Size 6 lines are 150 high: each label is centred on its line, just right of the frame.
        QCOMPARE(upper[0].x1, 11000.0);
        GRAPH_COMPARE_NEAR(upper[0].y1, 4000.0 / 3 - 75);
        QCOMPARE(lower[0].x1, 11000.0);
        GRAPH_COMPARE_NEAR(lower[0].y1, 14000.0 / 3 - 75);
        QCOMPARE(upper[0].fontSize, 6.0);
        QCOMPARE(upper[0].fontBold, false);
    }

    void zeroSDGivesOneLimitLabel()
    {
        ChartRun run;
        // Limits 5 and 5; values 4..6 give the axis 3.8..6.2 with the mean line at 3000.
        QVERIFY(run.draw(Series(5, 0, 0, 1, Visits({{Day(2024, 3, 1), 4.0}, {Day(2024, 3, 2), 6.0}}))));
        const std::vector<RecordedOp> both = PrintsOf(run.target, QStringLiteral(" \u00B1 2SD"));
        QCOMPARE(both.size(), size_t(1));
        QCOMPARE(both[0].x1, 11000.0);
        GRAPH_COMPARE_NEAR(both[0].y1, 3000 - 75);
        QVERIFY(PrintsOf(run.target, QStringLiteral(" + 2SD")).empty());
        QVERIFY(PrintsOf(run.target, QStringLiteral(" - 2SD")).empty());
    }

    void limitsEqualInSinglePrecisionShareOneLabel()
    {
        ChartRun run;
        // An SD of 1e-9 puts the two limits some 1e-5 units apart: different
        // doubles, the same single-precision value.
        QVERIFY(run.draw(Series(5, 1e-9, 0, 1, Visits({{Day(2024, 3, 1), 4.0}, {Day(2024, 3, 2), 6.0}}))));
        QCOMPARE(PrintsOf(run.target, QStringLiteral(" \u00B1 2SD")).size(), size_t(1));
        QVERIFY(PrintsOf(run.target, QStringLiteral(" + 2SD")).empty());
    }

    void allZeroSeriesHasSymmetricAxisAndNoMarkers()
    {
        ChartRun run;
        const RecordsetPtr zeros = Visits({{Day(2024, 3, 1), 0.0}, {Day(2024, 3, 2), 0.0}, {Day(2024, 3, 4), 0.0}});
        QVERIFY(run.draw(Series(0, 0, 0, 2, zeros)));

        QCOMPARE(run.target.countOf(Kind::PSet), 0);
        QCOMPARE(run.target.countOf(Kind::Circle), 0);

        // Axis -1.2..1.2: YScale 4000 / 2.4, labels every Round(0.48, 3) = 0.48.
        const QStringList labels{QStringLiteral(" -0.72  "), QStringLiteral(" -0.24  "), QStringLiteral(" 0.24  "),
                                 QStringLiteral(" 0.72  ")};
        const double ys[] = {4200, 3400, 2600, 1800};
        QCOMPARE(run.target.texts().mid(0, 4), labels);
        const std::vector<RecordedOp> prints = run.target.opsOf(Kind::Print);
        for (int i = 0; i < 4; ++i)
            GRAPH_COMPARE_NEAR(prints[i].y1, ys[i] - 100);
        QCOMPARE(run.target.texts().mid(4), QStringList{QStringLiteral(" \u00B1 2SD")});
        GRAPH_COMPARE_NEAR(prints[4].y1, 3000 - 75);
    }

    void allZeroSeriesLabelStepFollowsDecimals()
    {
        ChartRun run;
        const RecordsetPtr zeros = Visits({{Day(2024, 3, 1), 0.0}, {Day(2024, 3, 2), 0.0}});
        QVERIFY(run.draw(Series(0, 0, 0, 0, zeros)));

        // Round(0.48, 1) = 0.5: ticks at -0.7, -0.2, 0.3 and 0.8 on the axis -1.2..1.2.
        // The axis's tick marks are the lines drawn before the frame.
        std::vector<double> ticks;
        for (const RecordedOp& op : run.target.ops())
        {
            if (op.kind == Kind::Box)
                break;
            if (op.kind == Kind::Line)
                ticks.push_back(op.y1);
        }
        const double scale = 4000 / 2.4;
        const double expected[] = {5000 - 0.5 * scale, 5000 - 1.0 * scale, 5000 - 1.5 * scale, 5000 - 2.0 * scale};
        QCOMPARE(ticks.size(), size_t(4));
        for (int i = 0; i < 4; ++i)
            GRAPH_COMPARE_NEAR(ticks[size_t(i)], expected[i]);
    }

    void oneDayPutsEveryMarkerInTheMiddle()
    {
        ChartRun run;
        const RecordsetPtr sameDay = Visits({{Day(2024, 3, 1), 9.0}, {Day(2024, 3, 1), 10.0}, {Day(2024, 3, 1), 11.0}});
        QVERIFY(run.draw(Series(10, 1, 0.1, 1, sameDay)));

        // DaySlots 2: XStep is half the plot's width, so x = Left + half.
        const std::vector<RecordedOp> frames = run.target.opsOf(Kind::Box);
        QCOMPARE(frames.size(), size_t(1));
        const double middle = (frames[0].x1 + frames[0].x2) / 2;
        QCOMPARE(middle, 6386.0);
        const std::vector<RecordedOp> points = run.target.opsOf(Kind::PSet);
        QCOMPARE(points.size(), size_t(3));
        for (const RecordedOp& point : points)
            QCOMPARE(point.x1, middle);
    }

    void zeroValuesAreNeitherPlottedNorTheMinimum()
    {
        ChartRun run;
        const RecordsetPtr data =
            Visits({{Day(2024, 3, 1), 0.0}, {Day(2024, 3, 2), 9.0}, {Day(2024, 3, 3), 0.0}, {Day(2024, 3, 4), 12.0}});
        QVERIFY(run.draw(Series(10, 0.5, 0.05, 1, data)));

        // Smallest value 9, not 0: the axis is 7.6..12.4 as for the values 9..12.
        QCOMPARE(run.target.texts().mid(0, 4), (QStringList{QStringLiteral(" 8.6  "), QStringLiteral(" 9.5  "),
                                                            QStringLiteral(" 10.5  "), QStringLiteral(" 11.4  ")}));
        // DaySlots 5, XStep 9228 / 5: markers for 03/02 and 03/04 only.
        const std::vector<RecordedOp> points = run.target.opsOf(Kind::PSet);
        QCOMPARE(points.size(), size_t(2));
        GRAPH_COMPARE_NEAR(points[0].x1, 1772 + 2 * 1845.6);
        GRAPH_COMPARE_NEAR(points[0].y1, 5000.0 - 3500.0 / 3);
        GRAPH_COMPARE_NEAR(points[1].x1, 1772 + 4 * 1845.6);
        GRAPH_COMPARE_NEAR(points[1].y1, 4000.0 / 3);
    }

    void scanSkipsLeadingZeros()
    {
        qint32 count = 0;
        QDate first;
        QDate last;
        double valueMin = 0;
        double valueMax = 0;
        const RecordsetPtr data =
            Visits({{Day(2024, 3, 4), 12.0}, {Day(2024, 3, 1), 0.0}, {Day(2024, 3, 3), 0.0}, {Day(2024, 3, 2), 9.0}});
        QVERIFY(ScanSeriesRange(*data, count, first, last, valueMin, valueMax));
        QCOMPARE(count, 4);
        QCOMPARE(first, QDate(2024, 3, 1));
        QCOMPARE(last, QDate(2024, 3, 4));
        QCOMPARE(valueMin, 9.0);
        QCOMPARE(valueMax, 12.0);
    }

    void scanReadsTextDatesAndValues()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        qint32 count = 0;
        QDate first;
        QDate last;
        double valueMin = 0;
        double valueMax = 0;
        const RecordsetPtr data = Visits({{QStringLiteral("03/05/2024"), QStringLiteral("4.5")},
                                          {QStringLiteral("03/01/2024"), QStringLiteral("3.25")}});
        QVERIFY(ScanSeriesRange(*data, count, first, last, valueMin, valueMax));
        QCOMPARE(boxes.count(), 0);
        QCOMPARE(first, QDate(2024, 3, 1));
        QCOMPARE(last, QDate(2024, 3, 5));
        QCOMPARE(valueMin, 3.25);
        QCOMPARE(valueMax, 4.5);
    }

    void emptyDataSetShowsMessageAndDrawsNothing()
    {
        ChartRun run;
        QVERIFY(!run.draw(Series(10, 1, 0.1, 1, Visits({})), true));
        QCOMPARE(run.boxes.count(), 1);
        QCOMPARE(run.boxes.last().text, QStringLiteral("T4111"));
        QCOMPARE(run.boxes.last().style, 48);
        QCOMPARE(run.boxes.last().title, QStringLiteral("T4087"));
        QVERIFY(run.target.drawOps().empty());
        QCOMPARE(run.plot.Left, 1000);
        QCOMPARE(run.plot.Bottom, 5000);
    }

    void missingVisitDateShowsMessage()
    {
        ChartRun run;
        const RecordsetPtr data = Visits({{Day(2024, 3, 1), 9.0}, {QVariant(), 10.0}});
        QVERIFY(!run.draw(Series(10, 1, 0.1, 1, data), true));
        QCOMPARE(run.boxes.count(), 1);
        QCOMPARE(run.boxes.last().text, QStringLiteral("T4111"));
        QCOMPARE(run.boxes.last().style, 48);
        QCOMPARE(run.boxes.last().title, QStringLiteral("T4087"));
        QVERIFY(run.target.drawOps().empty());
    }

    void closedOrMissingDataSetIsNoChart()
    {
        ChartRun run;
        QVERIFY(!run.draw(Series(10, 1, 0.1, 1, std::make_shared<Recordset>()), true));
        QVERIFY(!run.draw(Series(10, 1, 0.1, 1, nullptr), true));
        QCOMPARE(run.boxes.count(), 0);
        QVERIFY(run.target.ops().empty());
    }

    void failingDeviceResetsTheFont()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        FailingTarget target(FailingTarget::FailOn::Circle);
        PageRect plot = Plot();
        QVERIFY(!PrintGraphChart(target, plot, ElevenDays(), true, true));

        // The marker set-up had made the font bold; the failure puts it back.
        RecordingTarget& recorded = target.recorded();
        QCOMPARE(recorded.countOf(Kind::PSet), 1);
        QCOMPARE(recorded.FontBold(), false);
        QCOMPARE(recorded.FontSize(), 10.0);
        QCOMPARE(recorded.DrawStyle(), 0);
        const std::vector<RecordedOp>& ops = recorded.ops();
        QCOMPARE(ops[ops.size() - 3].kind, Kind::SetFontBold);
        QCOMPARE(ops[ops.size() - 2].kind, Kind::SetFontSize);
        QCOMPARE(ops[ops.size() - 1].kind, Kind::SetDrawStyle);
        QCOMPARE(boxes.count(), 0);
    }

    void valueThatIsNoNumberEndsTheChart()
    {
        ChartRun run;
        run.target.SetFontBold(true);
        run.target.SetFontSize(14);
        run.target.SetDrawStyle(2);
        const RecordsetPtr data = Visits({{Day(2024, 3, 1), 9.0}, {Day(2024, 3, 2), QStringLiteral("n/a")}});
        QVERIFY(!run.draw(Series(10, 1, 0.1, 1, data), true));
        QCOMPARE(run.target.FontBold(), false);
        QCOMPARE(run.target.FontSize(), 10.0);
        QCOMPARE(run.target.DrawStyle(), 0);
        QVERIFY(run.target.drawOps().empty());
    }

    void tenThousandVisitsDrawTenThousandMarkers()
    {
        auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
        const QDate start(2000, 1, 1);
        for (int i = 0; i < 10000; ++i)
            data->AppendRow(QVariantList{start.addDays(i), 4.0 + (i % 7) * 0.1});
        ChartRun run;
        QVERIFY(run.draw(Series(4.3, 0.2, 0.05, 2, data), true));
        QCOMPARE(run.target.countOf(Kind::PSet), 10000);
        QCOMPARE(run.target.countOf(Kind::Circle), 10000);
        // The last visit sits one step inside the right edge of the frame.
        const RecordedOp frame = run.target.opsOf(Kind::Box).front();
        const double step = (frame.x2 - frame.x1) / 10001;
        GRAPH_COMPARE_NEAR(run.target.opsOf(Kind::PSet).back().x1, frame.x2 - step);
    }
};

CALVEX_TEST(TestPrintGraphChart)
#include "TestPrintGraphChart.moc"
