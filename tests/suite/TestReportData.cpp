#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"
#include "suite/DemoRandom.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"

#include <QTest>

#include <cmath>
#include <optional>

// The graph and table data sets of a report run.
class TestReportData : public QObject
{
    Q_OBJECT

private:
    static constexpr double kTransfer = 0.3348;

    // What the test wrote for one PF visit of subject QCT01.
    struct Written
    {
        QDate date;
        std::optional<double> dlco; // Pre; nullopt = no reading (no row, or a null value)
        double preFev1;
        std::optional<double> postFev1; // every second visit
        double fvc;
    };

    std::unique_ptr<SuiteTestDatabase> m_test;
    std::vector<Written> m_visits;
    std::vector<std::pair<QDate, double>> m_temperatures; // GX Rest, °F
    qint32 m_pre = 0, m_post = 0, m_rest = 0, m_dlco = 0, m_fev1 = 0, m_fvc = 0, m_temperature = 0;

    ReportVariable variable(qint32 table, qint32 var, const QString& name, bool graph, bool inTable) const
    {
        ReportVariable v;
        v.TableID = table;
        v.ParamsDefID = var;
        v.VarName = name;
        v.ShowInGraph = graph;
        v.ShowInTable = inTable;
        v.DecimalPlaces = 2;
        return v;
    }

    ReportInfo info(const QString& from, const QString& to, qint16 tab = 0, const QString& patient = QString()) const
    {
        ReportInfo i;
        i.TestTab = tab;
        i.PatientID = patient.isEmpty() ? QStringLiteral("QCT01") : patient;
        i.FromDate = from;
        i.ToDate = to;
        i.Variables = {variable(m_pre, m_dlco, QStringLiteral("DLCO"), true, true),
                       variable(m_pre, m_fev1, QStringLiteral("FEV1"), true, false),
                       variable(m_post, m_fev1, QStringLiteral("FEV1 (1)"), true, true),
                       variable(m_pre, m_fvc, QStringLiteral("FVC"), false, true),
                       variable(m_rest, m_temperature, QStringLiteral("Room Temperature"), true, true)};
        return i;
    }

    static QString text(const QDate& date) { return date.toString(QStringLiteral("MM/dd/yyyy")); }

    // Mean and sample SD the long way round: from the sums of values and of
    // their squares, in long double, over the values that are not zero.
    static void expectedStatistics(const std::vector<double>& values, double& mean, double& sd, double& cv)
    {
        long double n = 0, sum = 0, squares = 0;
        for (const double v : values)
        {
            if (v == 0)
                continue;
            n += 1;
            sum += v;
            squares += (long double)v * v;
        }
        mean = n > 0 ? double(sum / n) : 0.0;
        sd = n > 1 ? double(std::sqrt((n * squares - sum * sum) / (n * (n - 1)))) : 0.0;
        cv = mean != 0 ? sd / mean : 0.0;
    }

    static void compareClose(double actual, double expected)
    {
        QVERIFY2(std::fabs(actual - expected) <= 1e-9 * std::max(1.0, std::fabs(expected)),
                 qPrintable(QStringLiteral("%1 != %2").arg(actual, 0, 'g', 17).arg(expected, 0, 'g', 17)));
    }

    static void compareRows(const RecordsetPtr& rs, const std::vector<std::pair<QDate, double>>& expected)
    {
        QCOMPARE(rs->FieldCount(), 2);
        QCOMPARE(rs->FieldName(0), QStringLiteral("VisitDate"));
        QCOMPARE(rs->RecordCount(), qint32(expected.size()));
        if (expected.empty())
        {
            QVERIFY(rs->IsBOF() && rs->IsEOF());
            return;
        }
        rs->MoveFirst();
        for (const auto& [date, value] : expected)
        {
            QCOMPARE(rs->Value(0).typeId(), int(QMetaType::QDate));
            QCOMPARE(rs->Value(0).toDate(), date);
            compareClose(rs->Value(1).toDouble(), value);
            rs->MoveNext();
        }
        QVERIFY(rs->IsEOF());
    }

    // The DLCO readings of the visits from first to last (indexes), as written.
    std::vector<std::pair<QDate, double>> dlcoRows(size_t first, size_t last, double factor = 1.0) const
    {
        std::vector<std::pair<QDate, double>> rows;
        for (size_t i = first; i <= last && i < m_visits.size(); ++i)
        {
            if (m_visits[i].dlco)
                rows.emplace_back(m_visits[i].date, *m_visits[i].dlco * factor);
        }
        return rows;
    }

    static std::vector<double> values(const std::vector<std::pair<QDate, double>>& rows)
    {
        std::vector<double> result;
        for (const auto& row : rows)
            result.push_back(row.second);
        return result;
    }

    void checkGraph(const ReportInfo& request, qint32 index, bool si, const std::vector<std::pair<QDate, double>>& rows)
    {
        double mean = -1, sd = -1, cv = -1;
        RecordsetPtr rs = NorrixReportStore().GetGraphData(request, index, si, mean, sd, cv);
        compareRows(rs, rows);
        double expectedMean = 0, expectedSd = 0, expectedCv = 0;
        expectedStatistics(values(rows), expectedMean, expectedSd, expectedCv);
        compareClose(mean, expectedMean);
        compareClose(sd, expectedSd);
        compareClose(cv, expectedCv);
    }

private slots:
    void initTestCase()
    {
        m_test = std::make_unique<SuiteTestDatabase>();
        m_test->createSchema();
        SuiteDatabase& db = m_test->db();
        SuiteDataLoader loader(db);
        m_pre = loader.tableId(0, QStringLiteral("Pre"));
        m_post = loader.tableId(0, QStringLiteral("Post"));
        m_rest = loader.tableId(1, QStringLiteral("Rest"));
        m_dlco = loader.variableId(0, QStringLiteral("DLCO"));
        m_fev1 = loader.variableId(0, QStringLiteral("FEV1"));
        m_fvc = loader.variableId(0, QStringLiteral("FVC"));
        m_temperature = loader.variableId(1, QStringLiteral("Room Temperature"));

        DemoRandom random(77);
        std::vector<SuiteDataLoader::Visit> subject;
        std::vector<SuiteDataLoader::Visit> other;
        for (int i = 0; i < 40; ++i)
        {
            Written w;
            w.date = QDate(2024, 1, 1).addDays(7 * i);
            w.dlco = std::round((30.0 + 2.0 * random.normal()) * 10) / 10;
            w.preFev1 = 3.9 + 0.1 * random.normal();
            w.fvc = 4.8 + 0.1 * random.normal();
            if (i % 2 == 0)
                w.postFev1 = w.preFev1 * 1.05;
            SuiteDataLoader::Visit visit{w.date, 0, {}};
            if (i == 5)
                w.dlco = 0.0; // stored as zero
            if (i == 9)
                w.dlco.reset(); // no row at all
            if (i == 12)
            {
                w.dlco.reset(); // a row with a null value
                visit.results.append({m_pre, m_dlco, QVariant()});
            }
            if (w.dlco)
                visit.results.append({m_pre, m_dlco, *w.dlco});
            visit.results.append({m_pre, m_fev1, w.preFev1});
            visit.results.append({m_pre, m_fvc, w.fvc});
            if (w.postFev1)
                visit.results.append({m_post, m_fev1, *w.postFev1});
            subject.push_back(visit);
            m_visits.push_back(w);

            // Same days, other tab: the gas exchange visits of the same subject.
            if (i % 3 == 0)
            {
                const double fahrenheit = 68.0 + i * 0.25;
                m_temperatures.emplace_back(w.date, fahrenheit);
                subject.push_back({w.date, 1, {{m_rest, m_temperature, fahrenheit}, {m_pre, m_dlco, 55.0}}});
            }
            // Same days, another subject.
            other.push_back({w.date, 0, {{m_pre, m_dlco, 99.0}, {m_pre, m_fev1, 9.9}}});
        }
        const qint32 key = loader.addPatient(
            {QStringLiteral("QCT01"), QStringLiteral("Control"), QStringLiteral("Test"), QString(), QDate(1980, 1, 1)});
        loader.addVisits(key, subject);
        const qint32 otherKey = loader.addPatient({QStringLiteral("QCT010"), QStringLiteral("Other"),
                                                   QStringLiteral("Subject"), QString(), QDate(1980, 1, 1)});
        loader.addVisits(otherKey, other);
    }

    void cleanupTestCase() { m_test.reset(); }

    void statisticsMatchAnIndependentComputation()
    {
        checkGraph(info(QStringLiteral("01/01/2024"), QStringLiteral("12/31/2024")), 1, false,
                   dlcoRows(0, m_visits.size() - 1));
    }

    void periodIncludesBothEndsInEitherDateForm()
    {
        const QDate from = m_visits[3].date;
        const QDate to = m_visits[10].date;
        checkGraph(info(text(from), QStringLiteral("%1/%2/%3").arg(to.month()).arg(to.day()).arg(to.year())), 1, false,
                   dlcoRows(3, 10));
        // One day inside at each end leaves both end visits out.
        checkGraph(info(text(from.addDays(1)), text(to.addDays(-1))), 1, false, dlcoRows(4, 9));
    }

    void emptyFromDateIsAnOpenStart()
    {
        checkGraph(info(QString(), text(m_visits[10].date)), 1, false, dlcoRows(0, 10));
        checkGraph(info(QStringLiteral("  "), text(m_visits[2].date)), 1, false, dlcoRows(0, 2));
    }

    void valuesInSiUnits()
    {
        const ReportInfo request = info(QString(), QStringLiteral("12/31/2025"));
        checkGraph(request, 1, true, dlcoRows(0, m_visits.size() - 1, kTransfer));

        // The CV does not depend on the unit; mean and SD scale with the factor.
        double mean = 0, sd = 0, cv = 0, siMean = 0, siSd = 0, siCv = 0;
        NorrixReportStore().GetGraphData(request, 1, false, mean, sd, cv);
        NorrixReportStore().GetGraphData(request, 1, true, siMean, siSd, siCv);
        compareClose(siMean, mean * kTransfer);
        compareClose(siSd, sd * kTransfer);
        compareClose(siCv, cv);
    }

    void siConversionWithAnOffset()
    {
        const ReportInfo request = info(QString(), QStringLiteral("12/31/2025"), 1);
        std::vector<std::pair<QDate, double>> celsius;
        for (const auto& [date, fahrenheit] : m_temperatures)
            celsius.emplace_back(date, (fahrenheit - 32.0) * 5.0 / 9.0);
        checkGraph(request, 5, true, celsius);
        checkGraph(request, 5, false, m_temperatures);
    }

    void zeroStaysInTheDataButNotInTheStatistics()
    {
        const ReportInfo request = info(text(m_visits[4].date), text(m_visits[6].date));
        double mean = 0, sd = 0, cv = 0;
        RecordsetPtr rs = NorrixReportStore().GetGraphData(request, 1, false, mean, sd, cv);
        QCOMPARE(rs->RecordCount(), 3);
        rs->MoveFirst();
        rs->MoveNext();
        QCOMPARE(rs->Value(0).toDate(), m_visits[5].date);
        QCOMPARE(rs->Value(1).toDouble(), 0.0);
        compareClose(mean, (*m_visits[4].dlco + *m_visits[6].dlco) / 2);

        // Zero in SI units is still zero, not zero times the factor.
        rs = NorrixReportStore().GetGraphData(request, 1, true, mean, sd, cv);
        rs->MoveFirst();
        rs->MoveNext();
        QCOMPARE(rs->Value(1).toDouble(), 0.0);
    }

    void onlyZeroGivesZeroStatistics()
    {
        const ReportInfo request = info(text(m_visits[5].date), text(m_visits[5].date));
        double mean = -1, sd = -1, cv = -1;
        RecordsetPtr rs = NorrixReportStore().GetGraphData(request, 1, false, mean, sd, cv);
        QCOMPARE(rs->RecordCount(), 1);
        QCOMPARE(mean, 0.0);
        QCOMPARE(sd, 0.0);
        QCOMPARE(cv, 0.0);
    }

    void oneValueHasNoSpread()
    {
        const ReportInfo request = info(text(m_visits[7].date), text(m_visits[7].date));
        double mean = -1, sd = -1, cv = -1;
        RecordsetPtr rs = NorrixReportStore().GetGraphData(request, 1, false, mean, sd, cv);
        QCOMPARE(rs->RecordCount(), 1);
        QCOMPARE(mean, *m_visits[7].dlco);
        QCOMPARE(sd, 0.0);
        QCOMPARE(cv, 0.0);
    }

    void periodWithoutVisitsGivesAnEmptySet()
    {
        checkGraph(info(QStringLiteral("01/01/2020"), QStringLiteral("12/31/2020")), 1, false, {});
        checkGraph(info(QString(), QStringLiteral("12/31/2025"), 0, QStringLiteral("NOBODY")), 1, false, {});
    }

    void onlyTheSubjectTabAndTableOfTheVariable()
    {
        const ReportInfo request = info(QString(), QStringLiteral("12/31/2025"));
        // Pre FEV1 and Post FEV1 are different series of the same variable.
        std::vector<std::pair<QDate, double>> pre;
        std::vector<std::pair<QDate, double>> post;
        for (const Written& w : m_visits)
        {
            pre.emplace_back(w.date, w.preFev1);
            if (w.postFev1)
                post.emplace_back(w.date, *w.postFev1);
        }
        checkGraph(request, 2, false, pre);
        checkGraph(request, 3, false, post);
        // The other subject's readings (99) and the GX visits' DLCO (55) never show.
        double mean = 0, sd = 0, cv = 0;
        RecordsetPtr rs = NorrixReportStore().GetGraphData(request, 1, false, mean, sd, cv);
        for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
            QVERIFY(rs->Value(1).toDouble() < 50);
        // The identification number is matched exactly, not as a prefix.
        QCOMPARE(NorrixReportStore()
                     .GetGraphData(info(QString(), QStringLiteral("12/31/2025"), 0, QStringLiteral("QCT0")), 1, false,
                                   mean, sd, cv)
                     ->RecordCount(),
                 0);
    }

    void badRequestsRaiseErrors()
    {
        double mean = 0, sd = 0, cv = 0;
        NorrixReportStore store;
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError, store.GetGraphData(info(QString(), QStringLiteral("12/31/2024")), 0, false, mean, sd, cv));
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError, store.GetGraphData(info(QString(), QStringLiteral("12/31/2024")), 6, false, mean, sd, cv));
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError, store.GetGraphData(info(QString(), QStringLiteral("13/01/2024")), 1, false, mean, sd, cv));
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError, store.GetTableData(info(QStringLiteral("02/30/2024"), QStringLiteral("12/31/2024")), false));
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError,
            store.GetTableData(info(QStringLiteral("'; DROP TABLE visits; --"), QStringLiteral("12/31/2024")), false));
    }

    void tableHasOneFieldPerTableVariableAndOneRowPerVisit()
    {
        const ReportInfo request = info(text(m_visits[2].date), text(m_visits[13].date));
        RecordsetPtr rs = NorrixReportStore().GetTableData(request, false);
        QCOMPARE(rs->FieldCount(), 5);
        QCOMPARE(rs->FieldName(0), QStringLiteral("VisitDate"));
        QCOMPARE(rs->FieldName(1), QStringLiteral("DLCO"));
        QCOMPARE(rs->FieldName(2), QStringLiteral("FEV1 (1)"));
        QCOMPARE(rs->FieldName(3), QStringLiteral("FVC"));
        QCOMPARE(rs->FieldName(4), QStringLiteral("Room Temperature"));
        QCOMPARE(rs->RecordCount(), 12); // every PF visit of the period, with or without readings
        rs->MoveFirst();
        for (size_t i = 2; i <= 13; ++i, rs->MoveNext())
        {
            const Written& w = m_visits[i];
            QCOMPARE(rs->Value(0).toDate(), w.date);
            if (w.dlco)
                QCOMPARE(rs->Value(1).toDouble(), *w.dlco);
            else
                QVERIFY2(rs->Value(1).isNull(), qPrintable(QString::number(i)));
            if (w.postFev1)
                compareClose(rs->Value(2).toDouble(), *w.postFev1);
            else
                QVERIFY(rs->Value(2).isNull());
            compareClose(rs->Value(3).toDouble(), w.fvc);
            QVERIFY(rs->Value(4).isNull()); // a GX variable on a PF visit
        }
        QVERIFY(rs->IsEOF());
    }

    void tableValuesInSiUnits()
    {
        const ReportInfo request = info(QString(), text(m_visits[12].date));
        RecordsetPtr conventional = NorrixReportStore().GetTableData(request, false);
        RecordsetPtr si = NorrixReportStore().GetTableData(request, true);
        QCOMPARE(si->RecordCount(), 13);
        conventional->MoveFirst();
        for (si->MoveFirst(); !si->IsEOF(); si->MoveNext(), conventional->MoveNext())
        {
            const QVariant dlco = conventional->Value(1);
            if (dlco.isNull())
                QVERIFY(si->Value(1).isNull());
            else
                compareClose(si->Value(1).toDouble(), dlco.toDouble() * kTransfer);
            QCOMPARE(si->Value(3), conventional->Value(3)); // litres in both systems
        }
    }

    void tableOfTheOtherTabAndEdgeCases()
    {
        RecordsetPtr gx = NorrixReportStore().GetTableData(info(QString(), QStringLiteral("12/31/2025"), 1), true);
        QCOMPARE(gx->RecordCount(), qint32(m_temperatures.size()));
        gx->MoveFirst();
        QCOMPARE(gx->Value(0).toDate(), m_temperatures.front().first);
        QCOMPARE(gx->FieldIndex(QStringLiteral("Room Temperature")), 4);
        compareClose(gx->Value(4).toDouble(), (m_temperatures.front().second - 32) * 5 / 9);
        compareClose(gx->Value(1).toDouble(), 55.0 * kTransfer); // what the GX visit itself holds
        QVERIFY(gx->Value(3).isNull());

        RecordsetPtr none =
            NorrixReportStore().GetTableData(info(QStringLiteral("01/01/2020"), QStringLiteral("01/31/2020")), false);
        QCOMPARE(none->FieldCount(), 5);
        QVERIFY(none->IsBOF() && none->IsEOF());

        ReportInfo graphOnly = info(QString(), text(m_visits[3].date));
        for (ReportVariable& v : graphOnly.Variables)
            v.ShowInTable = false;
        RecordsetPtr dates = NorrixReportStore().GetTableData(graphOnly, false);
        QCOMPARE(dates->FieldCount(), 1);
        QCOMPARE(dates->RecordCount(), 4);
    }
};

CALVEX_TEST(TestReportData)
#include "TestReportData.moc"
