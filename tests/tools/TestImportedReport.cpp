#include "RenderFixture.h"
#include "common/TestMain.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <tuple>

// A laboratory's own results, brought in with "NorrixDBQuery import", are
// what the batch renderer then reports for the subject.
class TestImportedReport : public QObject
{
    Q_OBJECT

private slots:
    void aReportOfAnImportedSubjectShowsTheImportedReadings()
    {
        RenderFixture fixture;

        // Six weekly GX visits of a new subject; the third has an empty VE: a missing reading.
        QByteArray csv = "PatientID,LastName,FirstName,Birthday,VisitDate,Tab,Table,Variable,Value\r\n";
        QList<QStringList> expectedRows;
        for (int week = 0; week < 6; ++week)
        {
            const QDate day = QDate(2024, 2, 5).addDays(7 * week);
            const QByteArray hr = QByteArray::number(161 + week);
            const QByteArray ve = week == 2 ? QByteArray() : "88." + QByteArray::number(week + 1);
            const QByteArray start = "LAB-GX1,Importer,Ann,1981-04-12," + day.toString(Qt::ISODate).toLatin1();
            csv += start + ",GX,Peak,HR," + hr + "\r\n" + start + ",GX,Peak,VE," + ve + "\r\n";
            QStringList row{day.toString(QStringLiteral("MM/dd/yyyy")), QString::fromLatin1(hr)};
            if (!ve.isEmpty())
                row.append(QString::fromLatin1(ve));
            expectedRows.append(row);
        }
        const QString csvPath = fixture.path(QStringLiteral("lab.csv"));
        QFile file(csvPath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(csv);
        file.close();

        const RenderFixture::Result imported = RenderFixture::run(
            RenderFixture::buildProgram(QStringLiteral("NorrixDBQuery")), {QStringLiteral("import"), csvPath});
        QCOMPARE(imported.err, QString());
        QCOMPARE(imported.out, QStringLiteral("1 patients, 6 visits and 12 readings added, 0 readings replaced\n"));
        QCOMPARE(imported.exitCode, 0);

        // A saved GX definition of the two variables, in the graph and in the table.
        QList<ReportVariable> variables;
        {
            SuiteDatabase db(SuiteSettings::fromRegistry());
            SuiteDataLoader catalogue(db);
            for (const auto& [name, unit, decimals] : {std::tuple{QStringLiteral("HR"), QStringLiteral("bpm"), 0},
                                                       std::tuple{QStringLiteral("VE"), QStringLiteral("L/min"), 1}})
            {
                ReportVariable variable;
                variable.TableID = catalogue.tableId(1, QStringLiteral("Peak"));
                variable.ParamsDefID = catalogue.variableId(1, name);
                variable.TableName = QStringLiteral("Peak");
                variable.VarName = name;
                variable.Unit = unit;
                variable.ShowInGraph = true;
                variable.ShowInTable = true;
                variable.DecimalPlaces = decimals;
                variables.append(variable);
            }
        }
        RenderFixture::saveDefinition(QStringLiteral("Imported Peak"), 1, variables);

        const QString pdf = fixture.path(QStringLiteral("imported.pdf"));
        const RenderFixture::Result rendered =
            fixture.render({QStringLiteral("--tab"), QStringLiteral("GX"), QStringLiteral("--report"),
                            QStringLiteral("Imported Peak"), QStringLiteral("--subject"), QStringLiteral("LAB-GX1"),
                            QStringLiteral("--from"), QStringLiteral("02/01/2024"), QStringLiteral("--to"),
                            QStringLiteral("03/31/2024"), QStringLiteral("--out"), pdf});
        QCOMPARE(rendered.err, QString());
        QCOMPARE(rendered.exitCode, 0);

        const QStringList pages = RenderFixture::pdfPages(pdf);
        QCOMPARE(pages.size(), 2); // one page of two charts, one table page
        QVERIFY2(pages.first().contains(QStringLiteral("Ann Importer")), qPrintable(pages.first()));
        // The charts' means: of the six HR readings, and of the five VE readings there are.
        const QString mean = GetResourceText(4108) + QStringLiteral(": ");
        QVERIFY2(pages.first().contains(mean + GeneralNumberText(163.5)), qPrintable(pages.first()));
        QVERIFY2(pages.first().contains(mean + GeneralNumberText((88.1 + 88.2 + 88.4 + 88.5 + 88.6) / 5)),
                 qPrintable(pages.first()));

        static const QRegularExpression rowStart(QStringLiteral("^\\s*\\d\\d/\\d\\d/\\d{4}\\s"));
        QList<QStringList> printedRows;
        for (const QString& line : pages.at(1).split(u'\n'))
        {
            if (rowStart.match(line).hasMatch())
                printedRows.append(line.split(u' ', Qt::SkipEmptyParts));
        }
        QCOMPARE(printedRows, expectedRows);
    }
};

CALVEX_TEST(TestImportedReport)
#include "TestImportedReport.moc"
