#include "HalfYearRequest.h"
#include "LitreVariable.h"
#include "ScriptedStorePrinting.h"

#include "common/FakeReportStore.h"
#include "common/FlaggedRecording.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "output/RecordingTarget.h"
#include "output/modPrintReport.h"
#include "output/modPrintViolations.h"
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
// Every chart of these tests: mean 10 and SD 1, so 2 SD lies at 8 and 12 and
// 3 SD at 7 and 13.
constexpr double kMean = 10;
constexpr double kSD = 1;

QDate VisitDate(int n)
{
    return QDate(2024, 1, 1).addDays(7 * (n - 1));
}

QString VisitText(int n)
{
    return VisitDate(n).toString(QStringLiteral("MM/dd/yyyy"));
}

// One weekly visit for each value, from January 1, 2024; a value of 0 is a
// zero reading.
RecordsetPtr Visits(const QList<double>& values)
{
    auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
    for (qsizetype i = 0; i < values.size(); ++i)
        data->AppendRow({QVariant(VisitDate(int(i) + 1)), QVariant(values.at(i))});
    return data;
}

ReportVariable Variable(const QString& table, const QString& name, qint32 paramsDefId)
{
    ReportVariable variable = LitreVariable(table, name);
    variable.ParamsDefID = paramsDefId;
    return variable;
}

RecordsetPtr TableVisits(const ReportInfo& info, int visits)
{
    QStringList fields{QStringLiteral("VisitDate")};
    for (const ReportVariable& variable : info.Variables)
        fields.append(variable.VarName);
    auto data = std::make_shared<Recordset>(fields);
    for (int n = 1; n <= visits; ++n)
    {
        QVariantList row{QVariant(VisitDate(n))};
        for (int f = 1; f < fields.size(); ++f)
            row.append(QVariant(10.0 + n / 100.0));
        data->AppendRow(row);
    }
    return data;
}

QStringList Footers(const RecordingTarget& target)
{
    return target.texts().filter(QRegularExpression(QStringLiteral("^T4084 \\d+$")));
}

QString Footer(int page)
{
    return QStringLiteral("T4084 ") + QString::number(page);
}

// The operations of each sheet: a new sheet begins after every NewPage.
std::vector<std::vector<RecordedOp>> Sheets(const std::vector<RecordedOp>& ops)
{
    std::vector<std::vector<RecordedOp>> sheets(1);
    for (const RecordedOp& op : ops)
    {
        if (op.kind == Kind::NewPage)
            sheets.emplace_back();
        else
            sheets.back().push_back(op);
    }
    return sheets;
}

const QStringList kHeadings{QStringLiteral("T4132"), QStringLiteral("T4133"), QStringLiteral("T4134"),
                            QStringLiteral("T4135"), QStringLiteral("T4136")};
} // namespace

// QC rules on the report's pages: filled markers on the charts for the visits
// that broke a rule, and the violation pages after the table, on the
// recording target.
class TestPrintViolations : public QObject
{
    Q_OBJECT

    std::unique_ptr<ScriptedStorePrinting> m_printing;

    // The charts answer with the values given, one list per variable, and the
    // table with `visits` rows.
    void answer(const ReportInfo& info, const QList<QList<double>>& values, int visits = 10)
    {
        for (qsizetype i = 0; i < values.size(); ++i)
            m_printing->store->graph.insert(qint32(i) + 1, {kMean, kSD, kSD / kMean, Visits(values.at(i))});
        m_printing->store->table = TableVisits(info, visits);
    }

    // The report printed on a recording printer without rules and with them.
    struct Printed
    {
        RecordingTarget without;
        RecordingTarget with;
    };
    std::unique_ptr<Printed> printBoth(const ReportInfo& info, const QList<QList<double>>& values,
                                       const QCRuleSet& rules, int visits = 10)
    {
        auto printed = std::make_unique<Printed>();
        answer(info, values, visits);
        if (!PrintReport(printed->without, info, false))
            return nullptr;
        answer(info, values, visits);
        if (!PrintReport(printed->with, info, false, rules))
            return nullptr;
        return printed;
    }

private slots:
    void init() { m_printing = std::make_unique<ScriptedStorePrinting>(); }

    void cleanup() { m_printing.reset(); }

    void aViolatingVisitIsAFilledDiscAndNothingElseChanges()
    {
        // Visit 2 is beyond 3 SD; visit 5 is a zero reading and has no marker.
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        const auto printed = printBoth(info, {{10, 13.5, 10.2, 9.8, 0, 10.1}}, QCRuleSet{QCRule::Rule13s});
        QVERIFY(printed);
        const RecordingTarget& with = printed->with;

        QCOMPARE(with.countOf(Kind::Disc), 1);
        QCOMPARE(with.countOf(Kind::Circle), 4);
        QCOMPARE(with.countOf(Kind::PSet), 4);
        QCOMPARE(printed->without.countOf(Kind::Disc), 0);
        QCOMPARE(printed->without.countOf(Kind::Circle), 5);

        // The disc sits where visit 2's circled cross sat, with its radius,
        // black, in the markers' pen.
        const RecordedOp disc = with.opsOf(Kind::Disc).front();
        const RecordedOp cross = printed->without.opsOf(Kind::Circle).at(1);
        QCOMPARE(disc.x1, cross.x1);
        QCOMPARE(disc.y1, cross.y1);
        QCOMPARE(disc.x2, cross.x2);
        QVERIFY(disc.x2 > 0);
        QCOMPARE(disc.color, QColor(0, 0, 0));
        QCOMPARE(disc.drawWidth, 5);
        QCOMPARE(disc.drawStyle, 0);
        // The second marker from the left: one week after the first.
        const std::vector<RecordedOp> circles = with.opsOf(Kind::Circle);
        QVERIFY(circles.at(0).x1 < disc.x1 && disc.x1 < circles.at(1).x1);

        // Every other operation of the chart pages is as it was; the
        // violation page comes after the table page.
        const FlaggedRecording compared = FlaggedRecording::compare(printed->without.ops(), with.ops());
        QVERIFY2(compared.difference.isEmpty(), qPrintable(compared.difference));
        QCOMPARE(compared.discs, 1);
        const auto firstDrawing = std::find_if(compared.appended.begin(), compared.appended.end(),
                                               [](const RecordedOp& op) { return !op.isStateChange(); });
        QVERIFY(firstDrawing != compared.appended.end());
        QCOMPARE(firstDrawing->kind, Kind::NewPage);
        QCOMPARE(int(std::count_if(compared.appended.begin(), compared.appended.end(),
                                   [](const RecordedOp& op) { return op.kind == Kind::NewPage; })),
                 1);
    }

    // Two visits on one day with one value: only the reading that broke the
    // rule is a disc. Here R-4s joins the second of them to the next visit,
    // 2.5 SD below the mean; the first breaks nothing.
    void ofTwoLikeReadingsOnOneDayOnlyTheFlaggedOneIsADisc()
    {
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
        for (const auto& [visit, value] : {std::pair{1, 10.0}, {2, 12.5}, {2, 12.5}, {3, 7.5}})
            data->AppendRow({QVariant(VisitDate(visit)), QVariant(value)});
        m_printing->store->graph.insert(1, {kMean, kSD, kSD / kMean, data});
        m_printing->store->table = TableVisits(info, 4);
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, false, QCRuleSet{QCRule::RuleR4s}));

        QCOMPARE(target.countOf(Kind::Disc), 2);
        QCOMPARE(target.countOf(Kind::Circle), 2);
        // The circled crosses are the first visit's and the first of the two
        // on the second day, which share their place with the disc after them.
        const std::vector<RecordedOp> circles = target.opsOf(Kind::Circle);
        const std::vector<RecordedOp> discs = target.opsOf(Kind::Disc);
        QCOMPARE(circles.at(1).x1, discs.at(0).x1);
        QCOMPARE(circles.at(1).y1, discs.at(0).y1);
        QVERIFY(discs.at(1).x1 > discs.at(0).x1);
    }

    void withoutRulesNothingIsCheckedAndNothingAsked()
    {
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("DLCO"), 18)});
        answer(info, {{10, 13.5, 6}});
        PreparedReport report;
        QVERIFY(PrepareReport(info, false, report));
        QVERIFY(report.Rules.isEmpty());
        QVERIFY(report.Graphs.front().Violations.isEmpty());
        QVERIFY(report.Violations.Rows.isEmpty());
        RecordingTarget target;
        PrintPreparedReport(target, report);
        QVERIFY(report.Violations.Pages.isEmpty());
        QCOMPARE(ReportPageCount(report), 2);
        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2)}));
        QCOMPARE(target.countOf(Kind::Disc), 0);
        QVERIFY(!target.texts().contains(QStringLiteral("T4130")));
        QCOMPARE(m_printing->store->calls,
                 QStringList({QStringLiteral("GetGraphData 1 si=0"), QStringLiteral("GetTableData si=0")}));
    }

    void violationPagesFollowTheTableInDateOrderNumberedOn()
    {
        // Four charts make two graph pages, 45 visits two table pages.
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1),
                                                 Variable(QStringLiteral("Post"), QStringLiteral("FEV1"), 2),
                                                 Variable(QStringLiteral("Pre"), QStringLiteral("PEF"), 3),
                                                 Variable(QStringLiteral("Pre"), QStringLiteral("SVC"), 4)});
        // FEV1 breaks 1-3s at visit 2, FVC breaks 2-2s at visits 3 and 4, SVC
        // 1-3s and 2-2s at visits 2 and 3 (13.25 and 12.125).
        answer(info,
               {{10, 10.5, 12.5, 12.75, 10}, {10, 13.5, 10, 10, 10}, {10, 11, 9, 10, 10}, {10, 13.25, 12.125, 10, 10}},
               45);
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, false, QCRuleSet{QCRule::Rule13s, QCRule::Rule22s}));

        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2), Footer(3), Footer(4), Footer(5)}));
        const auto sheets = Sheets(target.ops());
        QCOMPARE(int(sheets.size()), 5);
        QCOMPARE(target.countOf(Kind::EndDoc), 1);
        QCOMPARE(target.ops().back().kind, Kind::EndDoc);

        const QStringList page = FlaggedRecording::texts(sheets[4]);
        QVERIFY(page.contains(QStringLiteral("T4104")));
        QVERIFY(page.contains(QStringLiteral("T4040:  01/01/2024 - 06/30/2024")));
        QVERIFY(page.contains(QStringLiteral("T4022:  Adam Q Control")));
        QVERIFY(!page.contains(QStringLiteral("Visit Date")));
        // Title, headings and the lines in date order; charts in the report's
        // order within a day.
        const qsizetype title = page.indexOf(QStringLiteral("T4130"));
        QVERIFY(title >= 0);
        QCOMPARE(page.mid(title + 1, 5), kHeadings);
        const QStringList expected{VisitText(2),
                                   QStringLiteral("Post"),
                                   QStringLiteral("FEV1"),
                                   QStringLiteral("13.50"),
                                   QStringLiteral("1-3s"),
                                   VisitText(2),
                                   QStringLiteral("Pre"),
                                   QStringLiteral("SVC"),
                                   QStringLiteral("13.25"),
                                   QStringLiteral("1-3s, 2-2s"),
                                   VisitText(3),
                                   QStringLiteral("Pre"),
                                   QStringLiteral("FVC"),
                                   QStringLiteral("12.50"),
                                   QStringLiteral("2-2s"),
                                   VisitText(3),
                                   QStringLiteral("Pre"),
                                   QStringLiteral("SVC"),
                                   QStringLiteral("12.13"),
                                   QStringLiteral("2-2s"),
                                   VisitText(4),
                                   QStringLiteral("Pre"),
                                   QStringLiteral("FVC"),
                                   QStringLiteral("12.75"),
                                   QStringLiteral("2-2s")};
        QCOMPARE(page.mid(title + 6), expected);
        QVERIFY(page.contains(Footer(5)));

        // The lines stand one under the other in columns: the value column
        // right-aligned, every other left-aligned.
        std::vector<RecordedOp> lines;
        for (const RecordedOp& op : sheets[4])
        {
            if (op.kind == Kind::Print && !op.fontBold && op.fontSize == 10 && op.y1 > 2070)
                lines.push_back(op);
        }
        QCOMPARE(int(lines.size()), 25);
        for (int row = 1; row < 5; ++row)
        {
            QCOMPARE(lines[size_t(row * 5)].x1, lines[0].x1);
            QCOMPARE(lines[size_t(row * 5)].y1, lines[0].y1 + row * 312.5);
            const RecordedOp& value = lines[size_t(row * 5 + 3)];
            const RecordedOp& first = lines[3];
            QCOMPARE(value.x1 + value.text.size() * 120, first.x1 + first.text.size() * 120);
        }
        // The first line under the title, a blank line and the headings.
        QCOMPARE(lines[0].x1, 720.0);
        QCOMPARE(lines[0].y1, 2070 + 3.25 * 250);
    }

    void aPeriodWithoutViolationsSaysSoOnOnePage()
    {
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        answer(info, {{10, 10.5, 9.5, 11.9, 8.1}});
        RecordingTarget target;
        QVERIFY(PrintReport(target, info, false, QCRuleSet{QCRule::Rule12s, QCRule::Rule13s}));
        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2), Footer(3)}));
        const auto sheets = Sheets(target.ops());
        const QStringList page = FlaggedRecording::texts(sheets[2]);
        const qsizetype title = page.indexOf(QStringLiteral("T4130"));
        QVERIFY(title >= 0);
        QCOMPARE(page.at(title + 1), QStringLiteral("T4131"));
        QVERIFY(!page.contains(QStringLiteral("T4132")));
        QCOMPARE(target.countOf(Kind::Disc), 0);
    }

    void manyViolationsTakeSeveralPages()
    {
        // 100 readings beyond 2 SD, alternately above and below: on the
        // recording page 37 lines fit below the title and the headings.
        QList<double> values;
        for (int n = 0; n < 100; ++n)
            values.append(n % 2 == 0 ? 12.5 : 7.5);
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        answer(info, {values}, 10);
        PreparedReport report;
        QVERIFY(PrepareReport(info, false, report, QCRuleSet{QCRule::Rule12s}));
        QCOMPARE(report.Violations.Rows.size(), 100);
        RecordingTarget target;
        PrintPreparedReport(target, report);
        QCOMPARE(report.Violations.Pages.size(), 3);
        QCOMPARE(report.Violations.Pages.at(0).FirstRow, 1);
        QCOMPARE(report.Violations.Pages.at(0).LastRow, 37);
        QCOMPARE(report.Violations.Pages.at(1).FirstRow, 38);
        QCOMPARE(report.Violations.Pages.at(2).LastRow, 100);
        QCOMPARE(ReportPageCount(report), 5);
        QCOMPARE(Footers(target), QStringList({Footer(1), Footer(2), Footer(3), Footer(4), Footer(5)}));
        QCOMPARE(target.countOf(Kind::Disc), 100);

        // Every line stays above the footer's room, and the pages continue
        // the list where the one before stopped.
        const auto sheets = Sheets(target.ops());
        const double footerTop = 15120 - 600;
        for (int sheet = 2; sheet < 5; ++sheet)
        {
            for (const RecordedOp& op : sheets[size_t(sheet)])
            {
                if (op.kind == Kind::Print && op.fontSize == 10 && !op.fontBold)
                    QVERIFY2(op.y1 + 250 <= footerTop, qPrintable(op.text));
            }
        }
        QVERIFY(FlaggedRecording::texts(sheets[3]).contains(VisitText(38)));
        QVERIFY(!FlaggedRecording::texts(sheets[3]).contains(VisitText(37)));
        QVERIFY(FlaggedRecording::texts(sheets[4]).contains(VisitText(100)));
    }

    void dlcoTwelveAppliesToTheCatalogueVariableDlco()
    {
        m_printing->store->listVariables = [](bool, qint16) {
            auto catalogue =
                std::make_shared<Recordset>(QStringList{QStringLiteral("VarID"), QStringLiteral("VarUserName"),
                                                        QStringLiteral("VarUnit"), QStringLiteral("DecimalPlaces")});
            catalogue->AppendRow({5, QStringLiteral("FVC"), QStringLiteral("L"), 2});
            catalogue->AppendRow({18, QStringLiteral("DLCO"), QStringLiteral("mmol/min/kPa"), 1});
            catalogue->AppendRow({19, QStringLiteral("KCO"), QStringLiteral("mmol/min/kPa/L"), 2});
            return catalogue;
        };
        // DLCO of Pre and of Post (its name made unique), and KCO: each has a
        // reading 1.1 from its mean of 10, beyond the SI limit of 1.
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("DLCO"), 18),
                                                 Variable(QStringLiteral("Post"), QStringLiteral("DLCO (1)"), 18),
                                                 Variable(QStringLiteral("Pre"), QStringLiteral("KCO"), 19)});
        // Fresh data sets for every preparation: each lets go of the last one's.
        const auto fresh = [this, &info] {
            for (int i = 1; i <= 3; ++i)
                m_printing->store->graph.insert(i, {kMean, 5, 0.5, Visits({10, 11.1, 10.9})});
            m_printing->store->table = TableVisits(info, 3);
        };
        fresh();
        PreparedReport report;
        QVERIFY(PrepareReport(info, true, report, QCRuleSet{QCRule::RuleDlco12}));
        QCOMPARE(m_printing->store->calls.count(QStringLiteral("ListVariables si=1 0")), 1);
        QCOMPARE(report.Graphs.at(0).Violations.size(), 1);
        QCOMPARE(report.Graphs.at(1).Violations.size(), 1);
        QCOMPARE(report.Graphs.at(2).Violations.size(), 0);
        QCOMPARE(report.Graphs.at(0).Violations.front().Date, VisitDate(2));

        // In conventional units the limit is 3 (and 12 % of 10 is 1.2): nothing.
        fresh();
        QVERIFY(PrepareReport(info, false, report, QCRuleSet{QCRule::RuleDlco12}));
        QVERIFY(report.Violations.Rows.isEmpty());

        // Without DLCO-12 the catalogue is not asked.
        m_printing->store->calls.clear();
        fresh();
        QVERIFY(PrepareReport(info, true, report, QCRuleSet{QCRule::Rule13s}));
        QVERIFY(!m_printing->store->calls.join(QLatin1Char('|')).contains(QStringLiteral("ListVariables")));
    }

    void thePreviewShowsAndPrintsTheViolationPages()
    {
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        answer(info, {{10, 13.5, 10}}, 45);
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report, QCRuleSet{QCRule::Rule13s}));
        QCOMPARE(ReportGraphPageCount(report), 1);
        QCOMPARE(report.TablePages.size(), 2);
        QCOMPARE(report.Violations.Pages.size(), 1);
        QCOMPARE(ReportPageCount(report), 4);

        picture.clearOps();
        QVERIFY(DrawReportPage(picture, report, 4));
        QCOMPARE(picture.ops().front().kind, Kind::Cls);
        QCOMPARE(picture.countOf(Kind::NewPage), 0);
        QCOMPARE(Footers(picture), QStringList({Footer(4)}));
        QVERIFY(picture.texts().contains(QStringLiteral("T4130")));
        QVERIFY(picture.texts().contains(QStringLiteral("13.50")));
        QVERIFY(!DrawReportPage(picture, report, 5));
        QVERIFY(!DrawReportPage(picture, report, 0));

        RecordingTarget printer;
        PrintPreviewedReport(printer, report);
        QCOMPARE(Footers(printer), QStringList({Footer(1), Footer(2), Footer(3), Footer(4)}));
        QCOMPARE(printer.countOf(Kind::NewPage), 3);
        QCOMPARE(printer.countOf(Kind::Disc), 1);
    }

    void aPreviewWhoseTableFailsStillListsTheViolations()
    {
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        answer(info, {{10, 13.5, 10}});
        m_printing->store->table = nullptr;
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report, QCRuleSet{QCRule::Rule13s}));
        QCOMPARE(ReportPageCount(report), 2);
        picture.clearOps();
        QVERIFY(DrawReportPage(picture, report, 2));
        QCOMPARE(Footers(picture), QStringList({Footer(2)}));
        QVERIFY(picture.texts().contains(QStringLiteral("T4130")));
    }

    void releasingTheGraphsLetsGoOfTheViolations()
    {
        const ReportInfo info = HalfYearRequest({Variable(QStringLiteral("Pre"), QStringLiteral("FVC"), 1)});
        answer(info, {{10, 13.5, 10}});
        RecordingTarget picture;
        PreparedReport report;
        QVERIFY(PrepareReportPreview(picture, info, false, report, QCRuleSet{QCRule::Rule13s}));
        QCOMPARE(ReportPageCount(report), 3);
        ReleaseReportGraphs(report);
        ReleaseReportTable(report);
        QCOMPARE(ReportPageCount(report), 0);
        QVERIFY(report.Violations.Rows.isEmpty());
    }

    void theReadingsOfAChart()
    {
        auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
        data->AppendRow({QVariant(QDate(2024, 1, 8)), QVariant(4.5)});
        data->AppendRow({QVariant(QDate(2024, 1, 1)), QVariant()});
        data->AppendRow({QVariant(), QVariant(3.0)});
        data->AppendRow({QVariant(QDate(2024, 1, 15)), QVariant(QStringLiteral("n/a"))});
        const QList<QCReading> readings = SeriesReadings(*data);
        QCOMPARE(readings.size(), 4);
        QCOMPARE(readings.at(0).Date, QDate(2024, 1, 8));
        QCOMPARE(readings.at(0).Value, std::optional<double>(4.5));
        QVERIFY(!readings.at(1).Value.has_value());
        QVERIFY(!readings.at(2).Date.isValid());
        QVERIFY(!readings.at(3).Value.has_value());
        // Left on its first record.
        QVERIFY(!data->IsBOF() && !data->IsEOF());
        QCOMPARE(data->AbsolutePosition(), 1);
        QVERIFY(SeriesReadings(
                    *std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")}))
                    .isEmpty());
    }
};

CALVEX_TEST(TestPrintViolations)
#include "TestPrintViolations.moc"
