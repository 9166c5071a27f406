#include "TestPrintGraphData.h"
#include "common/FakeReportStore.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "output/modPrint.h"
#include "output/modPrintGraph.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"

#include <QTest>

using namespace GraphTestData;
using Kind = RecordedOp::Kind;

namespace
{
ReportInfo Info()
{
    ReportInfo info;
    info.PatientName = QStringLiteral("QC Subject A");
    info.PatientID = QStringLiteral("QC-001");
    info.FromDate = QStringLiteral("01/01/2024");
    info.ToDate = QStringLiteral("03/31/2024");
    return info;
}

ReportVariable Variable(const QString& table, const QString& name, const QString& unit, bool inGraph, qint32 decimals)
{
    ReportVariable variable;
    variable.TableName = table;
    variable.VarName = name;
    variable.Unit = unit;
    variable.Note = name + QStringLiteral(" note");
    variable.ShowInGraph = inGraph;
    variable.ShowInTable = true;
    variable.DecimalPlaces = decimals;
    return variable;
}

// Four charted series "Table 1".."Table 4", each with three visits.
GraphSeriesArray FourSeries()
{
    GraphSeriesArray series;
    for (int i = 1; i <= 4; ++i)
    {
        GraphSeries one =
            Series(10, 1, 0.1, 1, Visits({{Day(2024, 3, 1), 9.0}, {Day(2024, 3, 5), 12.0}, {Day(2024, 3, 11), 10.0}}));
        one.TableName = QStringLiteral("Table ") + QString::number(i);
        series.push_back(one);
    }
    return series;
}

// The page area the page frame leaves below its header and above its footer.
PageRect FramedArea()
{
    ScopedTestStrings strings;
    RecordingTarget scratch;
    PageRect area;
    double height = 0;
    double width = 0;
    GetPrintArea(scratch, area, height, width);
    PrintPageHeader(scratch, QStringLiteral("x"), QStringLiteral("01/01/2024"), QStringLiteral("03/31/2024"), area);
    PrintPageFooter(scratch, 1, area, 2);
    return area;
}

int IndexOf(const std::vector<RecordedOp>& ops, Kind kind)
{
    for (size_t i = 0; i < ops.size(); ++i)
    {
        if (ops[i].kind == kind)
            return int(i);
    }
    return -1;
}
} // namespace

class TestPrintGraphPages : public QObject
{
    Q_OBJECT

private slots:
    void pageCountIsThreeChartsAPage_data()
    {
        QTest::addColumn<qint32>("count");
        QTest::addColumn<qint32>("pages");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("negative") << -1 << 0;
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("two") << 2 << 1;
        QTest::newRow("three") << 3 << 1;
        QTest::newRow("four") << 4 << 2;
        QTest::newRow("five") << 5 << 2;
        QTest::newRow("six") << 6 << 2;
        QTest::newRow("seven") << 7 << 3;
        QTest::newRow("eight") << 8 << 3;
        QTest::newRow("nine") << 9 << 3;
    }
    void pageCountIsThreeChartsAPage()
    {
        QFETCH(qint32, count);
        QFETCH(qint32, pages);
        QCOMPARE(GraphPageCount(count), pages);
    }

    void slotsAreThreeRowsWithGaps()
    {
        const PageRect area = Rect(720, 2000, 11520, 14000);
        // Row 0: 2000 .. 2000 + 3500.5 = 5500.5 -> 5500 (half to even).
        PageRect slot = GetGraphSlot(area, 1, 3500.5f, 250.25f);
        QCOMPARE(slot.Left, 720);
        QCOMPARE(slot.Right, 11520);
        QCOMPARE(slot.Top, 2000);
        QCOMPARE(slot.Bottom, 5500);
        // Row 1: 3500.5 + 2000 + 250.25 = 5750.75 -> 5751; + 3500.5 = 9251.5 -> 9252.
        slot = GetGraphSlot(area, 2, 3500.5f, 250.25f);
        QCOMPARE(slot.Top, 5751);
        QCOMPARE(slot.Bottom, 9252);
        // Row 2: 7001 + 2000 + 500.5 = 9501.5 -> 9502; + 3500.5 = 13002.5 -> 13002.
        slot = GetGraphSlot(area, 3, 3500.5f, 250.25f);
        QCOMPARE(slot.Top, 9502);
        QCOMPARE(slot.Bottom, 13002);
        // The fourth series starts the next page at the top.
        slot = GetGraphSlot(area, 4, 3500.5f, 250.25f);
        QCOMPARE(slot.Top, 2000);
        QCOMPARE(slot.Bottom, 5500);
        slot = GetGraphSlot(area, 6, 3500.5f, 250.25f);
        QCOMPARE(slot.Top, 9502);
    }

    void buildKeepsGraphVariablesInOrder()
    {
        auto script = std::make_shared<FakeReportStore::Script>();
        const RecordsetPtr first = Visits({{Day(2024, 3, 1), 1.0}});
        const RecordsetPtr third = Visits({{Day(2024, 3, 2), 2.0}});
        script->graph.insert(1, {4.5, 0.25, 0.0555, first});
        script->graph.insert(3, {7.0, 0.5, 0.0714, third});
        ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));

        ReportInfo info = Info();
        info.Variables = {Variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), true, 2),
                          Variable(QStringLiteral("Spirometry"), QStringLiteral("FEV1"), QStringLiteral("L"), false, 2),
                          Variable(QStringLiteral("DLCO"), QStringLiteral("TLCO"), QString(), true, 1)};
        GraphSeriesArray series(5);
        QVERIFY(BuildGraphSeries(info, series, true));

        QCOMPARE(series.size(), size_t(2));
        QCOMPARE(script->calls,
                 (QStringList{QStringLiteral("GetGraphData 1 si=1"), QStringLiteral("GetGraphData 3 si=1")}));
        QCOMPARE(script->created, 2);

        QCOMPARE(series[0].TableName, QStringLiteral("Spirometry"));
        QCOMPARE(series[0].Note, QStringLiteral("FVC note"));
        QCOMPARE(series[0].VarName, QStringLiteral("FVC"));
        QCOMPARE(series[0].Unit, QStringLiteral("L"));
        QCOMPARE(series[0].Mean, 4.5);
        QCOMPARE(series[0].SD, 0.25);
        QCOMPARE(series[0].CV, 0.0555);
        QCOMPARE(series[0].DecimalPlaces, 2);
        QCOMPARE(series[0].Data, first);

        QCOMPARE(series[1].TableName, QStringLiteral("DLCO"));
        QCOMPARE(series[1].VarName, QStringLiteral("TLCO"));
        QCOMPARE(series[1].Unit, QString());
        QCOMPARE(series[1].Mean, 7.0);
        QCOMPARE(series[1].DecimalPlaces, 1);
        QCOMPARE(series[1].Data, third);
    }

    void buildWithoutGraphVariablesIsFalse()
    {
        auto script = std::make_shared<FakeReportStore::Script>();
        ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));
        ReportInfo info = Info();
        info.Variables = {Variable(QStringLiteral("Spirometry"), QStringLiteral("FVC"), QStringLiteral("L"), false, 2)};
        GraphSeriesArray series(1);
        QVERIFY(!BuildGraphSeries(info, series, false));
        QVERIFY(series.empty());
        QVERIFY(script->calls.isEmpty());
    }

    void countOpenSeriesSkipsMissingAndClosed()
    {
        GraphSeriesArray series = FourSeries();
        QCOMPARE(CountOpenSeries(series), 4);
        series[1].Data.reset();
        series[2].Data->Close();
        QCOMPARE(CountOpenSeries(series), 2);
        QCOMPARE(CountOpenSeries(GraphSeriesArray()), 0);
    }

    void legendColumnIsTheWidestLineOfAllSeries()
    {
        RecordingTarget target;
        GraphSeriesArray series = FourSeries();
        series[2].Unit = QStringLiteral("mmol/min/kPa");
        // Bold 10 is 135 a character; "(mmol/min/kPa)  " has 16.
        QCOMPARE(MeasureLegendColumn(target, series), 2160.0f);
        QCOMPARE(target.FontBold(), true);
        QCOMPARE(target.FontSize(), 10.0);
        QCOMPARE(target.DrawStyle(), 0);
    }

    void legendPrintsNonBlankLinesCentred()
    {
        RecordingTarget target;
        GraphSeries series = Series(1, 0, 0, 0, nullptr);
        series.TableName.clear();
        series.Unit.clear();
        PageRect slot = Rect(720, 1000, 11520, 4000);
        PrintGraphLegend(target, slot, series, 1000.5f);

        // Three lines of 250 count for the centring, blank or not:
        // 1000 + (3000 - 750) / 2 = 2125. The blank table line takes no room.
        QCOMPARE(target.texts(), (QStringList{QStringLiteral("  FVC"), QStringLiteral("()  ")}));
        const std::vector<RecordedOp> prints = target.opsOf(Kind::Print);
        QCOMPARE(prints[0].x1, 720.0);
        QCOMPARE(prints[0].y1, 2125.0);
        QCOMPARE(prints[0].fontBold, true);
        QCOMPARE(prints[0].fontSize, 10.0);
        QCOMPARE(prints[1].x1, 720.0);
        QCOMPARE(prints[1].y1, 2375.0);
        // 720 + 1000.5 = 1720.5 -> 1720.
        QCOMPARE(slot.Left, 1720);
        QCOMPARE(slot.Top, 1000);
    }

    void fourSeriesMakeTwoPages()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        const GraphSeriesArray series = FourSeries();
        const ReportInfo info = Info();
        const qint32 total = GraphPageCount(CountOpenSeries(series));
        QCOMPARE(total, 2);

        const PageRect area = FramedArea();
        // Gap 12450 x 0.5 / 11 and slot height (12450 - 2 gaps) / 3 in single
        // precision give the slot tops below on the letter page.
        QCOMPARE(area.Top, 2070);
        QCOMPARE(area.Bottom, 14520);

        RecordingTarget target;
        qint32 page = 1;
        QCOMPARE(PrintGraphPage(&target, info, series, page, total, true), 2);
        QCOMPARE(target.countOf(Kind::NewPage), 0);
        QCOMPARE(target.countOf(Kind::Cls), 0);
        std::vector<RecordedOp> frames = target.opsOf(Kind::Box);
        QCOMPARE(frames.size(), size_t(3));
        QCOMPARE(frames[0].y1, 2070.0);
        QCOMPARE(frames[1].y1, 6409.0);
        QCOMPARE(frames[2].y1, 10747.0);
        // Slot bottoms 5843, 10182, 14520, less 1.25 statistics lines of 250, half to even.
        QCOMPARE(frames[0].y2, 5530.0);
        QCOMPARE(frames[1].y2, 9870.0);
        QCOMPARE(frames[2].y2, 14208.0);
        QStringList texts = target.texts();
        QVERIFY(texts.contains(QStringLiteral("  Table 1")));
        QVERIFY(texts.contains(QStringLiteral("  Table 3")));
        QVERIFY(!texts.contains(QStringLiteral("  Table 4")));
        QVERIFY(texts.contains(QStringLiteral("T4084 1 T4106 2")));
        QVERIFY(texts.contains(QStringLiteral("T4022:  QC Subject A")));
        QVERIFY(texts.contains(QStringLiteral("T4040:  01/01/2024 - 03/31/2024")));

        target.clearOps();
        page = 2;
        QCOMPARE(PrintGraphPage(&target, info, series, page, total, true), 3);
        const std::vector<RecordedOp> ops = target.ops();
        QCOMPARE(target.countOf(Kind::NewPage), 1);
        QVERIFY(IndexOf(ops, Kind::NewPage) < IndexOf(ops, Kind::Print));
        frames = target.opsOf(Kind::Box);
        QCOMPARE(frames.size(), size_t(1));
        QCOMPARE(frames[0].y1, 2070.0);
        QCOMPARE(frames[0].y2, 5530.0);
        texts = target.texts();
        QVERIFY(texts.contains(QStringLiteral("  Table 4")));
        QVERIFY(!texts.contains(QStringLiteral("  Table 1")));
        QVERIFY(texts.contains(QStringLiteral("T4084 2 T4106 2")));

        target.clearOps();
        page = 3;
        QCOMPARE(PrintGraphPage(&target, info, series, page, total, true), 0);
        QVERIFY(target.ops().empty());
        QCOMPARE(boxes.count(), 0);
    }

    void everyChartHasTheSameLegendColumn()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        GraphSeriesArray series = FourSeries();
        // The widest legend line belongs to the series on page 2.
        series[3].VarName = QStringLiteral("A long variable name");
        RecordingTarget target;
        qint32 page = 1;
        QCOMPARE(PrintGraphPage(&target, Info(), series, page, 2, true), 2);
        // "  A long variable name" is 22 bold characters of 135: the charts start
        // right of 720 + 2970 (and their value labels).
        for (const RecordedOp& frame : target.opsOf(Kind::Box))
            QVERIFY2(frame.x1 > 720 + 2970, qPrintable(QString::number(frame.x1)));
        const std::vector<RecordedOp> legend = target.opsOf(Kind::Print);
        QVERIFY(std::any_of(legend.begin(), legend.end(), [](const RecordedOp& op) {
            return op.text == QStringLiteral("  Table 1") && op.x1 == 720.0;
        }));
    }

    void previewClearsThePicture()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        const GraphSeriesArray series = FourSeries();
        RecordingTarget target;
        for (qint32 p = 1; p <= 2; ++p)
        {
            target.clearOps();
            qint32 page = p;
            QCOMPARE(PrintGraphPage(&target, Info(), series, page, 0, false), p + 1);
            QCOMPARE(target.countOf(Kind::Cls), 1);
            QCOMPARE(target.countOf(Kind::NewPage), 0);
            const std::vector<RecordedOp> ops = target.ops();
            QVERIFY(IndexOf(ops, Kind::Cls) < IndexOf(ops, Kind::Print));
            // With no total the footer shows the page number alone.
            QVERIFY(target.texts().contains(QStringLiteral("T4084 ") + QString::number(p)));
        }
    }

    void nothingToDrawIsPageZero()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        GraphSeriesArray series = FourSeries();
        qint32 page = 1;
        QCOMPARE(PrintGraphPage(nullptr, Info(), series, page, 2, true), 0);

        RecordingTarget target;
        for (GraphSeries& one : series)
            one.Data->Close();
        QCOMPARE(PrintGraphPage(&target, Info(), series, page, 2, true), 0);
        page = 0;
        QCOMPARE(PrintGraphPage(&target, Info(), FourSeries(), page, 2, true), 0);
        QVERIFY(target.ops().empty());
        QCOMPARE(boxes.count(), 0);
    }

    void chartWithoutVisitsLeavesTheRestOfThePage()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        GraphSeriesArray series = FourSeries();
        series[1].Data = Visits({});
        RecordingTarget target;
        qint32 page = 1;
        QCOMPARE(PrintGraphPage(&target, Info(), series, page, 2, true), 2);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, QStringLiteral("T4111"));
        const std::vector<RecordedOp> frames = target.opsOf(Kind::Box);
        QCOMPARE(frames.size(), size_t(2));
        QCOMPARE(frames[0].y1, 2070.0);
        QCOMPARE(frames[1].y1, 10747.0);
    }

    void failureOutsideAChartEndsThePage()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        FailingTarget target(FailingTarget::FailOn::Print);
        target.SetFontBold(true);
        qint32 page = 1;
        qint32 next = -1;
        QVERIFY_THROWS_NO_EXCEPTION(next = PrintGraphPage(&target, Info(), FourSeries(), page, 2, true));
        QCOMPARE(next, 0);
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, QStringLiteral("the device is gone"));
        QCOMPARE(boxes.last().style, 16);
        QCOMPARE(target.FontBold(), false);
        QCOMPARE(target.FontSize(), 10.0);
    }
};

CALVEX_TEST(TestPrintGraphPages)
#include "TestPrintGraphPages.moc"
