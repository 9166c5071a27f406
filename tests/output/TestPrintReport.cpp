#include "HalfYearRequest.h"
#include "LitreVariable.h"
#include "ScriptedStorePrinting.h"

#include "common/FakeReportStore.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "output/RecordingTarget.h"
#include "output/modPrintReport.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

using Kind = RecordedOp::Kind;

namespace
{
// On the recording target's letter page a table page holds 39 rows of the
// body font; 45 visits therefore take two bands.
constexpr int kVisits = 45;

ReportVariable Variable(const QString& name, bool inGraph, bool inTable)
{
    ReportVariable variable = LitreVariable(QStringLiteral("Pre"), name);
    variable.ShowInGraph = inGraph;
    variable.ShowInTable = inTable;
    return variable;
}

// FVC1..FVC<graphs> in graph and table, then FVC<graphs + 1>.. in the table only.
ReportInfo Info(int graphs, int tableOnly = 0)
{
    QList<ReportVariable> variables;
    for (int i = 1; i <= graphs + tableOnly; ++i)
        variables.append(Variable(QStringLiteral("FVC%1").arg(i), i <= graphs, true));
    return HalfYearRequest(variables);
}

QDate VisitDate(int n)
{
    return QDate(2024, 1, 1).addDays(7 * (n - 1));
}

// One visit a week; values around 4 with a small wobble, so each chart has a spread.
RecordsetPtr GraphVisits()
{
    auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
    for (int n = 1; n <= 10; ++n)
        data->AppendRow({QVariant(VisitDate(n)), QVariant(4.0 + 0.1 * (n % 3))});
    return data;
}

RecordsetPtr TableVisits(const ReportInfo& info, int visits)
{
    QStringList fields{QStringLiteral("VisitDate")};
    for (const ReportVariable& variable : info.Variables)
    {
        if (variable.ShowInTable)
            fields.append(variable.VarName);
    }
    auto data = std::make_shared<Recordset>(fields);
    for (int n = 1; n <= visits; ++n)
    {
        QVariantList row{QVariant(VisitDate(n))};
        for (int f = 1; f < fields.size(); ++f)
            row.append(QVariant(3.0 + f + n / 100.0));
        data->AppendRow(row);
    }
    return data;
}

QString Footer(int page)
{
    return QStringLiteral("T4084 ") + QString::number(page);
}

// The operations of each sheet: a new sheet begins after every NewPage.
std::vector<std::vector<RecordedOp>> Sheets(const RecordingTarget& target)
{
    std::vector<std::vector<RecordedOp>> sheets(1);
    for (const RecordedOp& op : target.ops())
    {
        if (op.kind == Kind::NewPage)
            sheets.emplace_back();
        else
            sheets.back().push_back(op);
    }
    return sheets;
}

QStringList TextsOf(const std::vector<RecordedOp>& ops)
{
    QStringList texts;
    for (const RecordedOp& op : ops)
    {
        if (op.kind == Kind::Print)
            texts.append(op.text);
    }
    return texts;
}

int CountOf(const std::vector<RecordedOp>& ops, Kind kind)
{
    return int(std::count_if(ops.begin(), ops.end(), [kind](const RecordedOp& op) { return op.kind == kind; }));
}

// The footers in printing order.
QStringList Footers(const RecordingTarget& target)
{
    return target.texts().filter(QRegularExpression(QStringLiteral("^T4084 \\d+$")));
}

// A recording target whose text is twice as high until the first text has
// been printed: a printer that measures differently before its job begins.
// The table laid out before the job then has about half as many rows a page.
class JobMetricsTarget final : public OutputTarget
{
public:
    RecordingTarget recorder;

    double ScaleLeft() const override { return recorder.ScaleLeft(); }
    double ScaleTop() const override { return recorder.ScaleTop(); }
    double ScaleWidth() const override { return recorder.ScaleWidth(); }
    double ScaleHeight() const override { return recorder.ScaleHeight(); }
    double CurrentX() const override { return recorder.CurrentX(); }
    double CurrentY() const override { return recorder.CurrentY(); }
    void SetCurrentX(double x) override { recorder.SetCurrentX(x); }
    void SetCurrentY(double y) override { recorder.SetCurrentY(y); }
    void Print(const QString& text) override
    {
        m_jobBegun = true;
        recorder.Print(text);
    }
    double TextWidth(const QString& text) override { return recorder.TextWidth(text); }
    double TextHeight(const QString& text) override { return recorder.TextHeight(text) * (m_jobBegun ? 1 : 2); }
    void SetFont(const QString& typeface) override { recorder.SetFont(typeface); }
    QString Font() const override { return recorder.Font(); }
    void SetFontSize(double points) override { recorder.SetFontSize(points); }
    double FontSize() const override { return recorder.FontSize(); }
    void SetFontBold(bool bold) override { recorder.SetFontBold(bold); }
    bool FontBold() const override { return recorder.FontBold(); }
    void SetForeColor(const QColor& color) override { recorder.SetForeColor(color); }
    QColor ForeColor() const override { return recorder.ForeColor(); }
    void SetDrawWidth(int pixels) override { recorder.SetDrawWidth(pixels); }
    int DrawWidth() const override { return recorder.DrawWidth(); }
    void SetDrawStyle(int style) override { recorder.SetDrawStyle(style); }
    int DrawStyle() const override { return recorder.DrawStyle(); }
    void Line(double x1, double y1, double x2, double y2, const QColor& color, bool box) override
    {
        recorder.Line(x1, y1, x2, y2, color, box);
    }
    void PSet(double x, double y, const QColor& color) override { recorder.PSet(x, y, color); }
    void Circle(double x, double y, double radius, const QColor& color) override
    {
        recorder.Circle(x, y, radius, color);
    }
    void Disc(double x, double y, double radius, const QColor& color) override { recorder.Disc(x, y, radius, color); }
    void NewPage() override { recorder.NewPage(); }
    void Cls() override { recorder.Cls(); }
    void EndDoc() override { recorder.EndDoc(); }
    QString DeviceName() const override { return recorder.DeviceName(); }

private:
    bool m_jobBegun = false;
};
} // namespace

class TestPrintReport : public QObject
{
    Q_OBJECT

    std::unique_ptr<ScriptedStorePrinting> m_printing;

    // Every charted variable answers with ten weekly visits; the table with `visits` rows.
    void answer(const ReportInfo& info, int visits = kVisits)
    {
        for (int i = 1; i <= info.VariableCount(); ++i)
            m_printing->store->graph.insert(i, {4.1, 0.08, 0.02, GraphVisits()});
        m_printing->store->table = TableVisits(info, visits);
    }

private slots:
    void init() { m_printing = std::make_unique<ScriptedStorePrinting>(); }

    void cleanup() { m_printing.reset(); }

    void asksTheStoreForEachChartThenForTheTable()
    {
        // Variable 3 is in the table only: it gets no chart and no graph data.
        ReportInfo info = Info(4);
        info.Variables[2].ShowInGraph = false;
        answer(info);
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, true));
        QCOMPARE(m_printing->store->calls,
                 QStringList({QStringLiteral("GetGraphData 1 si=1"), QStringLiteral("GetGraphData 2 si=1"),
                              QStringLiteral("GetGraphData 4 si=1"), QStringLiteral("GetTableData si=1")}));

        m_printing->store->calls.clear();
        RecordingTarget conventional;
        QVERIFY(PrintReport(conventional, info, false));
        QCOMPARE(m_printing->store->calls.last(), QStringLiteral("GetTableData si=0"));
        QCOMPARE(m_printing->store->calls.first(), QStringLiteral("GetGraphData 1 si=0"));
        // Nothing but the run's own preparation: the pages are drawn from what it fetched.
        QCOMPARE(m_printing->store->calls.size(), 4);
    }

    void graphPagesFirstThenTablePagesNumberedOn()
    {
        const ReportInfo info = Info(4);
        answer(info);
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, false));

        // Four charts take two graph pages (three and one), 45 visits two table pages.
        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2), Footer(3), Footer(4)}));
        const auto sheets = Sheets(target);
        QCOMPARE(int(sheets.size()), 4);
        QCOMPARE(target.countOf(Kind::NewPage), 3);
        QCOMPARE(target.countOf(Kind::Cls), 0);

        // Each chart's legend names its variable; the table pages head their columns.
        const QStringList page1 = TextsOf(sheets[0]);
        const QStringList page2 = TextsOf(sheets[1]);
        for (int i = 1; i <= 3; ++i)
            QVERIFY(page1.contains(QStringLiteral("  FVC%1").arg(i)));
        QVERIFY(page2.contains(QStringLiteral("  FVC4")));
        QVERIFY(!page2.contains(QStringLiteral("  FVC1")));
        QCOMPARE(CountOf(sheets[0], Kind::Circle), 3 * 10);
        QCOMPARE(CountOf(sheets[1], Kind::Circle), 10);
        for (int sheet = 2; sheet < 4; ++sheet)
        {
            QCOMPARE(CountOf(sheets[size_t(sheet)], Kind::Circle), 0);
            QVERIFY(TextsOf(sheets[size_t(sheet)]).contains(QStringLiteral("Visit Date")));
        }
        // The first band holds the first visits, the second band the rest.
        QVERIFY(TextsOf(sheets[2]).contains(QStringLiteral("01/01/2024")));
        QVERIFY(!TextsOf(sheets[3]).contains(QStringLiteral("01/01/2024")));
        QVERIFY(TextsOf(sheets[3]).contains(FormatVisit(kVisits)));

        // Every page carries the header of the request.
        for (const auto& sheet : sheets)
        {
            QVERIFY(TextsOf(sheet).contains(QStringLiteral("T4104")));
            QVERIFY(TextsOf(sheet).contains(QStringLiteral("T4040:  01/01/2024 - 06/30/2024")));
            QVERIFY(TextsOf(sheet).contains(QStringLiteral("T4022:  Adam Q Control")));
        }

        // The job ends once, after the last page.
        QCOMPARE(target.countOf(Kind::EndDoc), 1);
        QCOMPARE(target.ops().back().kind, Kind::EndDoc);
        QCOMPARE(m_printing->boxes.count(), 0);
    }

    void threeChartsFillOnePage()
    {
        const ReportInfo info = Info(3);
        answer(info, 10);
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, false));
        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2)}));
        QCOMPARE(target.countOf(Kind::NewPage), 1);
    }

    void nothingIsPrintedWhenTheGraphCannotBePrepared()
    {
        // No variable for the graph: no series, so the table is never fetched.
        const ReportInfo info = Info(0, 3);
        answer(info);
        RecordingTarget target;
        QVERIFY(!PrintReport(target, info, false));
        QCOMPARE(m_printing->store->calls, QStringList());
        QVERIFY(target.ops().empty());
    }

    void aStoreErrorWhilePreparingReachesTheCallerBeforeAnyDrawing()
    {
        const ReportInfo info = Info(2);
        answer(info);
        m_printing->store->failOn = QStringLiteral("GetGraphData 2");
        RecordingTarget target;
        QVERIFY_THROWS_EXCEPTION(RuntimeError, PrintReport(target, info, false));
        QVERIFY(!m_printing->store->calls.contains(QStringLiteral("GetTableData si=0")));
        QVERIFY(target.ops().empty());
    }

    void nothingIsPrintedWithoutTheTable()
    {
        const ReportInfo info = Info(2);
        answer(info);
        m_printing->store->table = nullptr;
        RecordingTarget target;
        QVERIFY(!PrintReport(target, info, false));
        QCOMPARE(m_printing->store->calls.last(), QStringLiteral("GetTableData si=0"));
        QVERIFY(target.ops().empty());

        // A store that fails on the table is no error of the run: it just does not print.
        answer(info);
        m_printing->store->failOn = QStringLiteral("GetTableData");
        QVERIFY(!PrintReport(target, info, false));
        QVERIFY(target.ops().empty());
    }

    void withoutOpenChartsTheTableStartsOnTheFirstSheet()
    {
        // The series are there but none has a data set: no graph page at all.
        const ReportInfo info = Info(2);
        answer(info);
        m_printing->store->graph.clear();
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, false));
        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2)}));
        QCOMPARE(target.countOf(Kind::NewPage), 1);
        QVERIFY(target.drawOps().front().kind != Kind::NewPage);
        QCOMPARE(target.countOf(Kind::Circle), 0);
        QCOMPARE(target.countOf(Kind::EndDoc), 1);
    }

    void theTableIsLaidOutAgainOnceTheJobHasBegun()
    {
        const ReportInfo info = Info(1);
        answer(info);
        PreparedReport report;
        QVERIFY(PrepareReport(info, false, report));

        // Before the job the doubled text height gives 16 rows a page (three bands)...
        JobMetricsTarget printer;
        SetUpReportPages(printer, report);
        QCOMPARE(report.TablePages.size(), 3);

        // ...but the pages printed are those of the printer's metrics once printing has begun.
        PrintPreparedReport(printer, report);
        QCOMPARE(report.TablePages.size(), 2);
        QCOMPARE(Footers(printer.recorder), QStringList({Footer(1), Footer(2), Footer(3)}));
        QCOMPARE(printer.recorder.countOf(Kind::EndDoc), 1);
    }

    void thePreviewPrintsThePagesItLaidOut()
    {
        const ReportInfo info = Info(1);
        answer(info);
        PreparedReport report;
        JobMetricsTarget picture; // nothing is printed on it, so its text stays doubled
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        QCOMPARE(report.TablePages.size(), 3);
        QCOMPARE(ReportPageCount(report), 4);

        RecordingTarget printer;
        PrintPreviewedReport(printer, report);
        QCOMPARE(Footers(printer), QStringList({Footer(1), Footer(2), Footer(3), Footer(4)}));
        QCOMPARE(printer.countOf(Kind::NewPage), 3);
        QCOMPARE(printer.countOf(Kind::Cls), 0);
        QCOMPARE(printer.countOf(Kind::EndDoc), 1);
        QCOMPARE(printer.ops().back().kind, Kind::EndDoc);
        // No second preparation.
        QCOMPARE(m_printing->store->calls,
                 QStringList({QStringLiteral("GetGraphData 1 si=0"), QStringLiteral("GetTableData si=0")}));
    }

    void thePreviewShowsTheGraphPagesWhenTheTableFails()
    {
        const ReportInfo info = Info(4);
        answer(info);
        m_printing->store->table = nullptr;
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        QCOMPARE(ReportGraphPageCount(report), 2);
        QCOMPARE(ReportPageCount(report), 2);
        QVERIFY(DrawReportPage(picture, report, 2));
        QVERIFY(!DrawReportPage(picture, report, 3));
    }

    void thePreviewHasNothingToShowWithoutTheGraph()
    {
        const ReportInfo info = Info(0, 2);
        answer(info);
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(!PrepareReportPreview(picture, info, false, report));
        QCOMPARE(m_printing->store->calls, QStringList());
        QVERIFY(picture.ops().empty());
    }

    void pagesAreDrawnOneAtATimeOnAClearedPicture()
    {
        const ReportInfo info = Info(4);
        answer(info);
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        QCOMPARE(ReportPageCount(report), 4);

        for (int page = 1; page <= 4; ++page)
        {
            picture.clearOps();
            QVERIFY(DrawReportPage(picture, report, page));
            QCOMPARE(picture.drawOps().front().kind, Kind::Cls);
            QCOMPARE(picture.countOf(Kind::Cls), 1);
            QCOMPARE(picture.countOf(Kind::NewPage), 0);
            QCOMPARE(picture.countOf(Kind::EndDoc), 0);
            QCOMPARE(Footers(picture), QStringList({Footer(page)}));
            QCOMPARE(picture.countOf(Kind::Circle) > 0, page <= 2);
        }

        // Pages out of range draw nothing.
        for (int page : {0, -1, 5})
        {
            picture.clearOps();
            QVERIFY(!DrawReportPage(picture, report, page));
            QVERIFY(picture.ops().empty());
        }

        // The same page drawn twice looks the same: the data sets are read afresh each time.
        picture.clearOps();
        DrawReportPage(picture, report, 1);
        const QStringList first = picture.texts();
        picture.clearOps();
        DrawReportPage(picture, report, 1);
        QCOMPARE(picture.texts(), first);
    }

    void releasingClosesTheDataSets()
    {
        const ReportInfo info = Info(2);
        answer(info);
        const RecordsetPtr chart1 = m_printing->store->graph.value(1).data;
        const RecordsetPtr chart2 = m_printing->store->graph.value(2).data;
        const RecordsetPtr table = m_printing->store->table;
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        QVERIFY(chart1->IsOpen() && chart2->IsOpen() && table->IsOpen());
        QCOMPARE(report.TablePages.size(), 2);

        ReleaseReportGraphs(report);
        QVERIFY(!chart1->IsOpen());
        QVERIFY(!chart2->IsOpen());
        QVERIFY(report.Graphs.empty());
        QVERIFY(table->IsOpen());
        QCOMPARE(ReportGraphPageCount(report), 0);

        ReleaseReportTable(report);
        QVERIFY(!table->IsOpen());
        QVERIFY(!report.Table.Data);
        QVERIFY(report.TablePages.isEmpty());
        QCOMPARE(ReportPageCount(report), 0);
        // Releasing what is released already does nothing.
        ReleaseReportGraphs(report);
        ReleaseReportTable(report);
    }

    void aNewPreparationLetsGoOfTheLastOne()
    {
        const ReportInfo first = Info(2);
        answer(first);
        const RecordsetPtr oldChart = m_printing->store->graph.value(1).data;
        const RecordsetPtr oldTable = m_printing->store->table;
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, first, false, report));

        // The second request is the report's own copy; the first one's data sets are closed.
        ReportInfo second = Info(1);
        second.PatientName = QStringLiteral("Second Subject");
        answer(second);
        QVERIFY(PrepareReportPreview(picture, second, false, report));
        QVERIFY(!oldChart->IsOpen());
        QVERIFY(!oldTable->IsOpen());
        QCOMPARE(report.Info.PatientName, QStringLiteral("Second Subject"));
        QCOMPARE(int(report.Graphs.size()), 1);
        QVERIFY(report.Table.Data->IsOpen());

        // Print's preparation lets go of the preview's.
        const RecordsetPtr previewTable = m_printing->store->table;
        answer(second);
        QVERIFY(PrepareReport(second, false, report));
        QVERIFY(!previewTable->IsOpen());
        QVERIFY(report.Table.Data->IsOpen());
    }

    void aPreviewWhoseGraphFailsKeepsItsTableUntouched()
    {
        // Graph first: when it fails, the table is neither released nor asked for again.
        const ReportInfo info = Info(1);
        answer(info);
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        m_printing->store->calls.clear();
        QVERIFY(!PrepareReportPreview(picture, Info(0, 1), false, report));
        QCOMPARE(m_printing->store->calls, QStringList());
        QVERIFY(report.Graphs.empty());
        QVERIFY(report.Table.Data && report.Table.Data->IsOpen());
    }

    void aPreviewWhoseTableFailsReleasesIt()
    {
        const ReportInfo info = Info(2);
        answer(info);
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        const RecordsetPtr oldTable = report.Table.Data;
        QVERIFY(oldTable);

        answer(info);
        m_printing->store->failOn = QStringLiteral("GetTableData");
        QVERIFY(PrepareReportPreview(picture, info, false, report));
        QVERIFY(!oldTable->IsOpen());
        QVERIFY(!report.Table.Data);
        QVERIFY(report.TablePages.isEmpty());
        QCOMPARE(ReportPageCount(report), 1);
    }

private:
    static QString FormatVisit(int n) { return VisitDate(n).toString(QStringLiteral("MM/dd/yyyy")); }
};

CALVEX_TEST(TestPrintReport)
#include "TestPrintReport.moc"
