#include "common/TestMain.h"

#include "ScopedUserName.h"
#include "SuiteTestDatabase.h"
#include "suite/DemoData.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteCatalogue.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteSchema.h"

#include <QSqlQuery>
#include <QTest>

class TestDemoData : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SuiteTestDatabase> m_test;

    // Every result of the QC subjects, one text per row in a fixed order.
    static QStringList results(SuiteDatabase& db)
    {
        QStringList rows;
        QSqlQuery query = db.exec(
            QStringLiteral("SELECT p.id_num, v.visit_date, v.tab, t.name, va.name, r.result_value FROM results r "
                           "JOIN visits v ON v.visit_id = r.visit_id JOIN patients p ON p.patient_id = v.patient_id "
                           "JOIN test_tables t ON t.table_id = r.table_id JOIN variables va ON va.var_id = r.var_id "
                           "ORDER BY p.id_num, v.visit_date, v.tab, t.sort_order, va.sort_order"));
        while (query.next())
        {
            rows.append(query.value(0).toString() + u'|' + QueryDate(query.value(1)) + u'|' +
                        query.value(2).toString() + u'|' + query.value(3).toString() + u'|' +
                        query.value(4).toString() + u'|' + QString::number(query.value(5).toDouble(), 'g', 17));
        }
        return rows;
    }

    static QString QueryDate(const QVariant& value)
    {
        return value.typeId() == QMetaType::QDate ? value.toDate().toString(Qt::ISODate) : value.toString().left(10);
    }

    static QStringList patients(SuiteDatabase& db)
    {
        QStringList rows;
        QSqlQuery query = db.exec(QStringLiteral("SELECT id_num, last_name, first_name, mid_name, birthday "
                                                 "FROM patients ORDER BY id_num"));
        while (query.next())
        {
            rows.append(query.value(0).toString() + u'|' + query.value(1).toString() + u'|' +
                        query.value(2).toString() + u'|' + query.value(3).toString() + u'|' +
                        QueryDate(query.value(4)));
        }
        return rows;
    }

    static QList<QDate> visitDates(SuiteDatabase& db, const QString& idNum, int tab)
    {
        QList<QDate> dates;
        QSqlQuery query = db.exec(QStringLiteral("SELECT v.visit_date FROM visits v JOIN patients p "
                                                 "ON p.patient_id = v.patient_id WHERE p.id_num = ? AND v.tab = ? "
                                                 "ORDER BY v.visit_date"),
                                  {idNum, tab});
        while (query.next())
            dates.append(QDate::fromString(QueryDate(query.value(0)), Qt::ISODate));
        return dates;
    }

    static ReportInfo request(SuiteDatabase& db, const QString& idNum, qint16 tab, const QString& table,
                              const QString& variable, const QString& from, const QString& to)
    {
        SuiteDataLoader loader(db);
        ReportInfo info;
        info.TestTab = tab;
        info.PatientID = idNum;
        info.FromDate = from;
        info.ToDate = to;
        ReportVariable v;
        v.TableID = loader.tableId(tab, table);
        v.ParamsDefID = loader.variableId(tab, variable);
        v.VarName = variable;
        v.ShowInGraph = true;
        v.ShowInTable = true;
        info.Variables.append(v);
        return info;
    }

    static void checkWeekly(const QList<QDate>& dates, const QDate& first, int step)
    {
        QVERIFY(!dates.isEmpty());
        QCOMPARE(dates.first(), first);
        for (qsizetype i = 1; i < dates.size(); ++i)
            QCOMPARE(dates.at(i - 1).daysTo(dates.at(i)), qint64(step));
        QVERIFY(dates.last() <= DemoData::LastDay);
        QVERIFY(dates.last().addDays(step) > DemoData::LastDay);
    }

private slots:
    void initTestCase()
    {
        m_test = std::make_unique<SuiteTestDatabase>();
        m_test->fillDemo();
    }

    void cleanupTestCase() { m_test.reset(); }

    void bothTabsHaveSavedDefinitions()
    {
        NorrixReportStore store;
        RecordsetPtr rs = store.ListReports();
        QStringList pf;
        QStringList gx;
        for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
        {
            const QString name = rs->Value(QStringLiteral("QCReportName")).toString();
            (rs->Value(QStringLiteral("QCReportType")).toInt() == 0 ? pf : gx).append(name);
            qint32 tab = -1;
            RecordsetPtr rows = store.OpenReport(rs->Value(QStringLiteral("QCReportID")).toInt(), false, tab);
            QCOMPARE(tab, rs->Value(QStringLiteral("QCReportType")).toInt());
            QVERIFY2(rows->RecordCount() >= 1 && rows->RecordCount() <= 9, qPrintable(name));
        }
        pf.sort();
        gx.sort();
        QCOMPARE(pf,
                 (QStringList{QStringLiteral("DLCO"), QStringLiteral("Lung Volumes"), QStringLiteral("Plethysmography"),
                              QStringLiteral("Spirometry"), QStringLiteral("Volume QC")}));
        QVERIFY(gx.size() >= 2);
        QCOMPARE(gx, (QStringList{QStringLiteral("Anaerobic Threshold"), QStringLiteral("Exercise Peak"),
                                  QStringLiteral("Resting")}));
    }

    void qcSubjectsVisitOnFixedDays()
    {
        RecordsetPtr subjects = NorrixPatientQuery().FindByName(QStringLiteral("control"), QString(), QString());
        QCOMPARE(subjects->RecordCount(), 3);
        QStringList ids;
        for (subjects->MoveFirst(); !subjects->IsEOF(); subjects->MoveNext())
            ids.append(subjects->Value(QStringLiteral("PatientIDNum")).toString());
        QCOMPARE(ids, (QStringList{QStringLiteral("QC001"), QStringLiteral("QC002"), QStringLiteral("QC003")}));

        SuiteDatabase& db = m_test->db();
        checkWeekly(visitDates(db, QStringLiteral("QC001"), 0), QDate(2023, 1, 2), 7);
        checkWeekly(visitDates(db, QStringLiteral("QC002"), 0), QDate(2023, 1, 3), 7);
        checkWeekly(visitDates(db, QStringLiteral("QC003"), 0), QDate(2023, 1, 4), 7);
        checkWeekly(visitDates(db, QStringLiteral("QC001"), 1), QDate(2023, 1, 5), 14);
        checkWeekly(visitDates(db, QStringLiteral("QC002"), 1), QDate(2023, 1, 6), 14);
        checkWeekly(visitDates(db, QStringLiteral("QC003"), 1), QDate(2023, 1, 12), 14);
        QCOMPARE(visitDates(db, QStringLiteral("QC001"), 0).last(), QDate(2026, 6, 29));
        QCOMPARE(visitDates(db, QStringLiteral("QC001"), 0).first().dayOfWeek(), 1);
    }

    void lastNameSearchReturnsSeveralPatients()
    {
        SuiteDatabase& db = m_test->db();
        QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM patients")).toInt() >= 303);
        QVERIFY(NorrixPatientQuery().FindByName(QStringLiteral("Smith"), QString(), QString())->RecordCount() > 2);
        QVERIFY(NorrixPatientQuery().FindByName(QStringLiteral("o'b"), QString(), QString())->RecordCount() > 1);
        QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM patients WHERE mid_name IS NULL")).toInt() > 50);
        QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM patients WHERE mid_name IS NOT NULL")).toInt() > 50);
        RecordsetPtr lastOnly = NorrixPatientQuery().FindByName(QStringLiteral("Nakamura"), QString(), QString());
        QCOMPARE(lastOnly->RecordCount(), 1);
        QVERIFY(lastOnly->Value(QStringLiteral("PatientFirstName")).isNull());
        QVERIFY(lastOnly->Value(QStringLiteral("PatientMidName")).isNull());
    }

    void valuesArePlausible()
    {
        // Bounds no healthy adult's reading crosses, in conventional units.
        const QHash<QString, QPair<double, double>> bounds{
            {QStringLiteral("0:FVC"), {2, 7}},          {QStringLiteral("0:FEV1"), {1.5, 6}},
            {QStringLiteral("0:FEV1/FVC"), {55, 100}},  {QStringLiteral("0:PEF"), {4, 14}},
            {QStringLiteral("0:FEF25-75"), {1, 7}},     {QStringLiteral("0:FET"), {4, 15}},
            {QStringLiteral("0:SVC"), {2, 7}},          {QStringLiteral("0:IC"), {1.5, 5}},
            {QStringLiteral("0:ERV"), {0.5, 3}},        {QStringLiteral("0:TLC"), {4, 10}},
            {QStringLiteral("0:RV"), {0.8, 3.5}},       {QStringLiteral("0:FRC"), {1.5, 5.5}},
            {QStringLiteral("0:RV/TLC"), {15, 45}},     {QStringLiteral("0:TGV"), {1.5, 5.5}},
            {QStringLiteral("0:Raw"), {0.5, 3.5}},      {QStringLiteral("0:sGaw"), {0.08, 0.4}},
            {QStringLiteral("0:MIP"), {40, 180}},       {QStringLiteral("0:DLCO"), {12, 50}},
            {QStringLiteral("0:VA"), {3.5, 9}},         {QStringLiteral("0:KCO"), {2.5, 7}},
            {QStringLiteral("0:Hb"), {11, 18}},         {QStringLiteral("1:VO2"), {150, 4000}},
            {QStringLiteral("1:VO2/kg"), {2, 60}},      {QStringLiteral("1:VCO2"), {100, 4500}},
            {QStringLiteral("1:RER"), {0.6, 1.9}},      {QStringLiteral("1:VE"), {5, 150}},
            {QStringLiteral("1:VT"), {0.3, 4}},         {QStringLiteral("1:RR"), {8, 50}},
            {QStringLiteral("1:HR"), {45, 210}},        {QStringLiteral("1:O2 Pulse"), {2, 25}},
            {QStringLiteral("1:Work Rate"), {40, 350}}, {QStringLiteral("1:PetCO2"), {25, 55}},
            {QStringLiteral("1:PetO2"), {80, 130}},     {QStringLiteral("1:VE/VCO2"), {18, 60}},
            {QStringLiteral("1:SpO2"), {88, 100}},      {QStringLiteral("1:SBP"), {90, 240}},
            {QStringLiteral("1:DBP"), {50, 110}},       {QStringLiteral("1:Room Temperature"), {60, 85}},
        };
        QSqlQuery query = m_test->db().exec(QStringLiteral(
            "SELECT va.tab, va.name, MIN(r.result_value), MAX(r.result_value), COUNT(*) FROM results r "
            "JOIN variables va ON va.var_id = r.var_id WHERE r.result_value <> 0 GROUP BY va.tab, va.name"));
        int variables = 0;
        while (query.next())
        {
            const QString key = query.value(0).toString() + u':' + query.value(1).toString();
            QVERIFY2(bounds.contains(key), qPrintable(key + QStringLiteral(" has no plausible range")));
            const double low = query.value(2).toDouble();
            const double high = query.value(3).toDouble();
            QVERIFY2(low >= bounds[key].first && high <= bounds[key].second,
                     qPrintable(QStringLiteral("%1: %2 .. %3").arg(key).arg(low).arg(high)));
            ++variables;
        }
        QCOMPARE(variables, int(SuiteCatalogue::variables().size())); // every variable has readings
    }

    void withinSubjectVariationOfHealthyAdults()
    {
        SuiteDatabase& db = m_test->db();
        const QList<QPair<QString, QString>> series{{QStringLiteral("Pre"), QStringLiteral("FVC")},
                                                    {QStringLiteral("Pre"), QStringLiteral("FEV1")},
                                                    {QStringLiteral("Pre"), QStringLiteral("TLC")},
                                                    {QStringLiteral("Pre"), QStringLiteral("DLCO")}};
        for (const QString& subject : {QStringLiteral("QC001"), QStringLiteral("QC002"), QStringLiteral("QC003")})
        {
            for (const auto& [table, variable] : series)
            {
                double mean = 0, sd = 0, cv = 0;
                NorrixReportStore().GetGraphData(request(db, subject, 0, table, variable, QStringLiteral("01/01/2023"),
                                                         QStringLiteral("12/31/2023")),
                                                 1, false, mean, sd, cv);
                QVERIFY2(cv >= 0.015 && cv <= 0.065,
                         qPrintable(QStringLiteral("%1 %2: CV %3").arg(subject, variable).arg(cv)));
            }
            double mean = 0, sd = 0, cv = 0;
            NorrixReportStore().GetGraphData(request(db, subject, 1, QStringLiteral("Peak"), QStringLiteral("HR"),
                                                     QStringLiteral("01/01/2023"), QStringLiteral("12/31/2023")),
                                             1, false, mean, sd, cv);
            QVERIFY(cv >= 0.01 && cv <= 0.06);
        }
    }

    void driftZerosAndMissingReadingsAreThere()
    {
        SuiteDatabase& db = m_test->db();
        double normal = 0, drifted = 0, sd = 0, cv = 0;
        NorrixReportStore().GetGraphData(request(db, QStringLiteral("QC001"), 0, QStringLiteral("Pre"),
                                                 QStringLiteral("DLCO"), QString(), QStringLiteral("08/31/2024")),
                                         1, false, normal, sd, cv);
        NorrixReportStore().GetGraphData(request(db, QStringLiteral("QC001"), 0, QStringLiteral("Pre"),
                                                 QStringLiteral("DLCO"), QStringLiteral("09/23/2024"),
                                                 QStringLiteral("10/14/2024")),
                                         1, false, drifted, sd, cv);
        QVERIFY2(drifted > normal * 1.05, qPrintable(QStringLiteral("%1 vs %2").arg(drifted).arg(normal)));

        QVERIFY(db.scalar(QStringLiteral("SELECT COUNT(*) FROM results WHERE result_value = 0")).toInt() >= 3);
        const int visits = int(visitDates(db, QStringLiteral("QC001"), 0).size());
        double mean = 0;
        RecordsetPtr dlco =
            NorrixReportStore().GetGraphData(request(db, QStringLiteral("QC001"), 0, QStringLiteral("Pre"),
                                                     QStringLiteral("DLCO"), QString(), QStringLiteral("12/31/2026")),
                                             1, false, mean, sd, cv);
        QVERIFY(dlco->RecordCount() < visits); // some visits have no DLCO
        QVERIFY(dlco->RecordCount() > visits - 5);
    }

    void usersWithAndWithoutTheEditRight()
    {
        {
            ScopedUserName user(*m_test, "labmanager");
            NorrixCalcEngine engine;
            QVERIFY(engine.HasRight(500) && engine.HasRight(501));
            QCOMPARE(engine.StartCheck(), 0);
        }
        {
            ScopedUserName user(*m_test, "labtech", {500});
            NorrixCalcEngine engine;
            QVERIFY(engine.HasRight(500));
            QVERIFY(!engine.HasRight(501));
        }
        {
            ScopedUserName user(*m_test, "formerstaff");
            QCOMPARE(NorrixCalcEngine().StartCheck(), NorrixCalcEngine::StartUserDisabled);
        }
    }

    void sameDataOnEveryDatabase()
    {
        // A second demo database in a SQLite file of its own: the same rows,
        // whatever database the first one is.
        SuiteSettings settings;
        settings.databaseName = m_test->tempPath(QStringLiteral("second-demo.sqlite"));
        SuiteDatabase second(settings, SuiteDatabase::OpenMode::CreateIfMissing);
        SuiteSchema::migrate(second);
        DemoData::fill(second);
        QCOMPARE(patients(second), patients(m_test->db()));
        const QStringList expected = results(m_test->db());
        QVERIFY(expected.size() > 40000);
        QCOMPARE(results(second), expected);
    }

    void refusesADatabaseWithPatients() { QVERIFY_THROWS_EXCEPTION(RuntimeError, DemoData::fill(m_test->db())); }

    void longSeriesForBenchmarks()
    {
        SuiteSettings settings;
        settings.databaseName = m_test->tempPath(QStringLiteral("long.sqlite"));
        SuiteDatabase db(settings, SuiteDatabase::OpenMode::CreateIfMissing);
        SuiteSchema::migrate(db);
        DemoData::addLongSeries(db, QStringLiteral("QC900"), 400);
        const QList<QDate> dates = visitDates(db, QStringLiteral("QC900"), 0);
        QCOMPARE(dates.size(), 400);
        QCOMPARE(dates.last(), DemoData::LastDay);
        QCOMPARE(dates.first(), DemoData::LastDay.addDays(-399));
        QCOMPARE(db.scalar(QStringLiteral("SELECT COUNT(*) FROM results")).toInt(),
                 400 * int(std::count_if(SuiteCatalogue::variables().cbegin(), SuiteCatalogue::variables().cend(),
                                         [](const SuiteCatalogue::Variable& v) { return v.tab == 0; })));
    }
};

CALVEX_TEST(TestDemoData)
#include "TestDemoData.moc"
