#include "common/TestMain.h"

#include "ExactStatisticsReference.h"
#include "SuiteTestDatabase.h"
#include "output/PdfTools.h"
#include "platform/VbConversions.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"

#include <QDir>
#include <QProcess>
#include <QTest>

// The statistics of the report store's graph data sets, through the real
// store on the test database (SQLite, or PostgreSQL under run-postgres.sh),
// against the exact figures of the values the store returns.
class TestReportStatistics : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SuiteTestDatabase> m_test;

    // The request of a saved definition for a subject over all its visits.
    static ReportInfo storedRequest(NorrixReportStore& store, qint32 reportId, bool siUnits, const QString& subject)
    {
        ReportInfo info;
        qint32 tab = 0;
        RecordsetPtr rows = store.OpenReport(reportId, siUnits, tab);
        info.TestTab = qint16(tab);
        info.PatientID = subject;
        for (rows->MoveFirst(); !rows->IsEOF(); rows->MoveNext())
        {
            ReportVariable variable;
            variable.TableID = rows->Value(QStringLiteral("QCTableID")).toInt();
            variable.ParamsDefID = rows->Value(QStringLiteral("ParamsDefID")).toInt();
            variable.VarName = rows->Value(QStringLiteral("ParamsUserName")).toString();
            variable.ShowInGraph = true;
            info.Variables.append(variable);
        }
        return info;
    }

    // The values the chart counts: those of the data set that are not zero.
    static std::vector<double> countedValues(const RecordsetPtr& data)
    {
        std::vector<double> values;
        if (data->IsBOF() && data->IsEOF())
            return values;
        for (data->MoveFirst(); !data->IsEOF(); data->MoveNext())
        {
            const double value = data->Value(1).toDouble();
            if (value != 0)
                values.push_back(value);
        }
        return values;
    }

    static QString renderer()
    {
        return QDir(qEnvironmentVariable("CALVEX_BIN_DIR")).filePath(QStringLiteral("calvex-qc-render"));
    }

private slots:
    void init() { m_test = std::make_unique<SuiteTestDatabase>(); }
    void cleanup() { m_test.reset(); }

    void theDemoReportsPrintTheExactFigures()
    {
        m_test->fillDemo();
        NorrixReportStore store;
        int charts = 0;
        RecordsetPtr reports = store.ListReports();
        QVERIFY(!reports->IsEOF());
        for (reports->MoveFirst(); !reports->IsEOF(); reports->MoveNext())
        {
            const qint32 reportId = reports->Value(QStringLiteral("QCReportID")).toInt();
            for (const QString& subject : {QStringLiteral("QC001"), QStringLiteral("QC002"), QStringLiteral("QC003")})
            {
                for (const bool si : {false, true})
                {
                    const ReportInfo info = storedRequest(store, reportId, si, subject);
                    for (qint32 index = 1; index <= info.VariableCount(); ++index)
                    {
                        double mean = -1, sd = -1, cv = -1;
                        const RecordsetPtr data = store.GetGraphData(info, index, si, mean, sd, cv);
                        const std::vector<double> values = countedValues(data);
                        if (values.empty())
                            continue;
                        const ExactStatisticsReference exact(values);
                        const QString where = QStringLiteral("%1 %2 %3 SI %4")
                                                  .arg(subject, info.Variable(index).VarName)
                                                  .arg(reportId)
                                                  .arg(si);
                        QVERIFY2(GeneralNumberText(mean) == exact.meanText(),
                                 qPrintable(where + QStringLiteral(": mean ") + GeneralNumberText(mean)));
                        QVERIFY2(GeneralNumberText(sd) == exact.sdText(),
                                 qPrintable(where + QStringLiteral(": SD ") + GeneralNumberText(sd)));
                        QVERIFY2(GeneralNumberText(cv * 100) == exact.cvPercentText(),
                                 qPrintable(where + QStringLiteral(": CV ") + GeneralNumberText(cv * 100)));
                        ++charts;
                    }
                }
            }
        }
        QVERIFY2(charts > 50, qPrintable(QString::number(charts)));
    }

    // Three equal decimal readings: no spread at all, so the chart has one
    // " ± 2SD" label on its mean line, read back from the renderer's PDF.
    void equalDecimalReadingsPrintNoSpread()
    {
        m_test->createSchema();
        SuiteDataLoader loader(m_test->db());
        const qint32 pre = loader.tableId(0, QStringLiteral("Pre"));
        const qint32 fef = loader.variableId(0, QStringLiteral("FEF25-75"));
        const qint32 patient = loader.addPatient({QStringLiteral("EQ01"), QStringLiteral("Equal"),
                                                  QStringLiteral("Readings"), QString(), QDate(1980, 1, 1)});
        std::vector<SuiteDataLoader::Visit> visits;
        for (int day : {3, 10, 17})
            visits.push_back({QDate(2025, 3, day), 0, {{pre, fef, 3.7}}});
        loader.addVisits(patient, visits);

        ReportVariable variable;
        variable.TableID = pre;
        variable.ParamsDefID = fef;
        variable.VarName = QStringLiteral("FEF25-75");
        variable.TableName = QStringLiteral("Pre");
        variable.ShowInGraph = true;
        variable.ShowInTable = true;
        variable.DecimalPlaces = 2;
        ReportInfo info;
        info.TestTab = 0;
        info.PatientID = QStringLiteral("EQ01");
        info.Variables = {variable};

        double mean = -1, sd = -1, cv = -1;
        NorrixReportStore().GetGraphData(info, 1, false, mean, sd, cv);
        QCOMPARE(mean, 3.7);
        QCOMPARE(sd, 0.0);
        QCOMPARE(cv, 0.0);

        NorrixReportStore().SaveReport(QStringLiteral("Flows"), info);
        // The renderer asks the engine for right 500, as the program's start does.
        m_test->setValue(QStringLiteral("Default Rights"), QStringLiteral("500"));
        const QString pdf = m_test->tempPath(QStringLiteral("equal.pdf"));
        QProcess render;
        render.start(renderer(), {QStringLiteral("--tab"), QStringLiteral("PF"), QStringLiteral("--report"),
                                  QStringLiteral("Flows"), QStringLiteral("--subject"), QStringLiteral("EQ01"),
                                  QStringLiteral("--to"), QStringLiteral("12/31/2025"), QStringLiteral("--out"), pdf});
        QVERIFY(render.waitForFinished(60000));
        QVERIFY2(render.exitCode() == 0, render.readAllStandardError().constData());
        const QString text = RunPdfTool(QStringLiteral("pdftotext"), {pdf, QStringLiteral("-")});
        QVERIFY2(text.contains(QStringLiteral("\u00B1 2SD")), qPrintable(text));
        QVERIFY2(!text.contains(QStringLiteral("+ 2SD")) && !text.contains(QStringLiteral("- 2SD")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("Mean: 3.7")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("SD: 0\n")) || text.contains(QStringLiteral("SD: 0 ")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("CV: 0%")), qPrintable(text));
        // The axis has its tick labels: 3.7 +- 10 %, in two decimals.
        QVERIFY2(text.contains(QStringLiteral("3.70")), qPrintable(text));
    }
};

CALVEX_TEST(TestReportStatistics)
#include "TestReportStatistics.moc"
