#include "ReportRunFixture.h"

#include "common/TestMain.h"
#include "output/modPrintReport.h"

#include <QTest>

using Kind = RecordedOp::Kind;

namespace
{
QString Footer(int page)
{
    return QStringLiteral("T4084 ") + QString::number(page);
}

QStringList Footers(int first, int last)
{
    QStringList footers;
    for (int page = first; page <= last; ++page)
        footers.append(Footer(page));
    return footers;
}
} // namespace

// Print from the main window: the print path from the request to EndDoc.
class TestReportRunPrint : public QObject
{
    Q_OBJECT

    std::unique_ptr<ReportRunFixture> f;

    ReportRunPanel& run() { return *f->window.run; }

private slots:
    void init() { f = std::make_unique<ReportRunFixture>(); }
    void cleanup() { f.reset(); }

    void graphSeriesThenTableThenGraphPagesThenTablePages()
    {
        // Four charts: two graph pages; 45 visits: two table pages.
        f->setVariables(4);
        f->store->tableVisits = 45;
        run().cmdPrint_Click();

        QCOMPARE(f->store->calls,
                 QStringList({QStringLiteral("GetGraphData 1 si=0"), QStringLiteral("GetGraphData 2 si=0"),
                              QStringLiteral("GetGraphData 3 si=0"), QStringLiteral("GetGraphData 4 si=0"),
                              QStringLiteral("GetTableData si=0")}));
        QCOMPARE(ReportRunFixture::Footers(*f->printer), Footers(1, 4));
        QCOMPARE(f->printer->countOf(Kind::NewPage), 3);
        QCOMPARE(f->printer->countOf(Kind::Cls), 0);
        // The charts are on the first two sheets, the visits' dates on the last two.
        const auto ops = f->printer->ops();
        const auto firstNewPage =
            std::find_if(ops.begin(), ops.end(), [](const RecordedOp& op) { return op.kind == Kind::NewPage; });
        QVERIFY(std::any_of(ops.begin(), firstNewPage, [](const RecordedOp& op) { return op.kind == Kind::Circle; }));
        QVERIFY(f->printer->texts().contains(QStringLiteral("Visit Date")));
        // The job ends once, after the last page.
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 1);
        QCOMPARE(ops.back().kind, Kind::EndDoc);
        QCOMPARE(f->boxes.count(), 0);
    }

    void printChangesNoPointer()
    {
        f->setVariables(2);
        run().cmdPrint_Click();
        QCOMPARE(f->store->cursors, QList<int>({-1, -1, -1}));
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void nothingIsPrintedWhenTheGraphCannotBePrepared()
    {
        // Nothing for the graph: no series, so the table is not even asked for.
        f->setVariables(0, 3);
        run().cmdPrint_Click();
        QCOMPARE(f->store->calls, QStringList());
        QVERIFY(f->printer->ops().empty());
        QCOMPARE(f->boxes.count(), 0);

        // The store fails on the second chart: no table, no page, no EndDoc, and the user is told why.
        f->setVariables(3);
        f->store->failOn = QStringLiteral("GetGraphData 2");
        run().cmdPrint_Click();
        QCOMPARE(f->store->calls,
                 QStringList({QStringLiteral("GetGraphData 1 si=0"), QStringLiteral("GetGraphData 2 si=0")}));
        QVERIFY(f->printer->ops().empty());
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, QStringLiteral("The store failed in GetGraphData 2"));
        QCOMPARE(f->boxes.last().style, 16);
        QCOMPARE(f->boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void nothingIsPrintedWithoutTheTable()
    {
        f->setVariables(2);
        f->store->noTable = true;
        run().cmdPrint_Click();
        QCOMPARE(f->store->calls.last(), QStringLiteral("GetTableData si=0"));
        QVERIFY(f->printer->ops().empty());
        QCOMPARE(f->boxes.count(), 0);
    }

    void withoutGraphPagesTheFirstTablePageIsPageOne()
    {
        // Both charts are asked for but have no data set: no graph page.
        f->setVariables(2);
        f->store->noGraphData = {1, 2};
        f->store->tableVisits = 45;
        run().cmdPrint_Click();
        QCOMPARE(ReportRunFixture::Footers(*f->printer), Footers(1, 2));
        QVERIFY(f->printer->drawOps().front().kind != Kind::NewPage);
        QCOMPARE(f->printer->countOf(Kind::NewPage), 1);
        QCOMPARE(f->printer->countOf(Kind::Circle), 0);
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 1);
    }

    void theWindowPrintsWhatThePrintPathPrintsForItsRequest()
    {
        // The window's Print and the batch renderer share the print path:
        // the window's pages are those PrintReport gives for the same request.
        f->setVariables(4, 2);
        f->store->tableVisits = 45;
        run().cmdPrint_Click();
        QVERIFY(f->printer->countOf(Kind::EndDoc) == 1);

        ReportInfo info;
        QCOMPARE(f->window.tabs->BuildReportInfo(0, info), 6);
        RecordingTarget direct;
        direct.setDeviceName(QStringLiteral("Test Printer"));
        QVERIFY(PrintReport(direct, info, false));
        QCOMPARE(ReportRunFixture::Describe(*f->printer), ReportRunFixture::Describe(direct));
    }

    void aSecondRunPrintsASecondJob()
    {
        f->setVariables(1);
        run().cmdPrint_Click();
        run().cmdPrint_Click();
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 2);
        QCOMPARE(ReportRunFixture::Footers(*f->printer), QStringList({Footer(1), Footer(2), Footer(1), Footer(2)}));
        // Each run prepares afresh.
        QCOMPARE(f->store->calls.size(), 4);
    }
};

CALVEX_TEST(TestReportRunPrint)
#include "TestReportRunPrint.moc"
