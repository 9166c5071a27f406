#include "RenderFixture.h"
#include "StoredChart.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "platform/ComponentFactory.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <memory>

namespace
{
const QString kToday = QStringLiteral("07/01/2024");

// The three statistics texts of a chart as the chart writes them.
QStringList StatisticsTexts(double mean, double sd, double cv)
{
    return {GetResourceText(4108) + QStringLiteral(": ") + GeneralNumberText(mean),
            GetResourceText(4110) + QStringLiteral(": ") + GeneralNumberText(sd),
            GetResourceText(4109) + QStringLiteral(": ") + GeneralNumberText(cv * 100) + QStringLiteral("%")};
}

// The table's rows as the table writes them: the visit date, then every
// value with its variable's decimals; zero and missing values stay blank and
// leave no word in the text.
QList<QStringList> ExpectedRows(const ReportInfo& info, bool siUnits)
{
    const RecordsetPtr data =
        ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->GetTableData(info, siUnits);
    QList<qint32> decimals;
    for (const ReportVariable& variable : info.Variables)
    {
        if (variable.ShowInTable)
            decimals.append(variable.DecimalPlaces);
    }
    QList<QStringList> rows;
    for (; !data->IsEOF(); data->MoveNext())
    {
        QStringList row{FormatMonthDayYear(data->Value(0).toDate())};
        for (int f = 1; f < data->FieldCount(); ++f)
        {
            const QVariant value = data->Value(f);
            if (!value.isNull() && value.toDouble() != 0)
                row.append(FormatNumber(value.toDouble(), decimals.at(f - 1)));
        }
        rows.append(row);
    }
    return rows;
}

// The rows of the table pages as pdftotext reads them: lines that begin with a visit date.
QList<QStringList> PrintedRows(const QStringList& tablePages)
{
    static const QRegularExpression rowStart(QStringLiteral("^\\s*\\d\\d/\\d\\d/\\d{4}\\s"));
    QList<QStringList> rows;
    for (const QString& page : tablePages)
    {
        for (const QString& line : page.split(QLatin1Char('\n')))
        {
            if (rowStart.match(line).hasMatch())
                rows.append(line.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        }
    }
    return rows;
}

QString LastLine(const QString& page)
{
    const QStringList lines = page.trimmed().split(QLatin1Char('\n'));
    return lines.last().trimmed();
}

qint32 ChartCount(const ReportInfo& info)
{
    return qint32(std::count_if(info.Variables.cbegin(), info.Variables.cend(),
                                [](const ReportVariable& variable) { return variable.ShowInGraph; }));
}
} // namespace

class TestRenderedPdf : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    // Renders the request to a PDF and checks every page against the store's
    // own figures: header, footer, legend, statistics and table rows. The
    // pages' text goes to pagesOut.
    void checkReport(const ReportInfo& info, const QString& report, const QStringList& extraArguments, bool siUnits,
                     QStringList& pagesOut)
    {
        const QString pdf = m_fixture->path(report + QStringLiteral(".pdf"));
        QStringList arguments{
            QStringLiteral("--tab"),     info.TestTab == 0 ? QStringLiteral("PF") : QStringLiteral("GX"),
            QStringLiteral("--report"),  report,
            QStringLiteral("--subject"), info.PatientID,
            QStringLiteral("--to"),      info.ToDate,
            QStringLiteral("--today"),   kToday,
            QStringLiteral("--out"),     pdf};
        if (!info.FromDate.isEmpty())
            arguments << QStringLiteral("--from") << info.FromDate;
        arguments += extraArguments;
        const RenderFixture::Result result = m_fixture->render(arguments);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);

        const QStringList pages = RenderFixture::pdfPages(pdf);
        pagesOut = pages;
        QCOMPARE(result.out, QStringLiteral("QC report written to %1 (%2 pages)\n")
                                 .arg(QFileInfo(pdf).absoluteFilePath())
                                 .arg(pages.size()));
        const qint32 graphPages = (ChartCount(info) + 2) / 3;
        QVERIFY(pages.size() > graphPages);

        // The page frame: title with the printed date, period, subject and the page number.
        QString periodPattern = QRegularExpression::escape(info.FromDate + QStringLiteral(" - ") + info.ToDate);
        periodPattern.replace(QLatin1String("\\ "), QLatin1String("\\s*"));
        const QRegularExpression period(QRegularExpression::escape(GetResourceText(4040)) + QStringLiteral(":\\s+") +
                                        periodPattern + QStringLiteral("\\s*\\n"));
        const QRegularExpression subject(QRegularExpression::escape(GetResourceText(4022)) + QStringLiteral(":\\s+") +
                                         QRegularExpression::escape(info.PatientName) + QStringLiteral("\\s*\\n"));
        for (int p = 0; p < pages.size(); ++p)
        {
            const QString& page = pages.at(p);
            const QStringList titleLine = page.trimmed()
                                              .split(QLatin1Char('\n'))
                                              .first()
                                              .split(QRegularExpression(QStringLiteral("\\s{2,}")), Qt::SkipEmptyParts);
            QCOMPARE(titleLine, QStringList({GetResourceText(4104), kToday}));
            QVERIFY2(period.match(page).hasMatch(), qPrintable(page));
            QVERIFY2(subject.match(page).hasMatch(), qPrintable(page));
            // Graph and table pages are numbered on through the report, without a total.
            QCOMPARE(LastLine(page), GetResourceText(4084) + QLatin1Char(' ') + QString::number(p + 1));
        }

        // Each chart's legend and statistics on its page, three charts a page.
        qint32 chart = 0;
        for (qint32 i = 1; i <= info.VariableCount(); ++i)
        {
            const ReportVariable& variable = info.Variable(i);
            if (!variable.ShowInGraph)
                continue;
            const StoredChart stored = StoredChart::read(info, i, siUnits);
            const QString& page = pages.at(chart / 3);
            for (const QString& text : StatisticsTexts(stored.mean, stored.sd, stored.cv))
                QVERIFY2(page.contains(text), qPrintable(text + QStringLiteral(" is not on the page:\n") + page));
            QVERIFY(page.contains(variable.VarName));
            QVERIFY(page.contains(QLatin1Char('(') + variable.Unit + QLatin1Char(')')));
            ++chart;
        }

        // The table pages hold every visit in date order, cell by cell.
        const QStringList tablePages = pages.mid(graphPages);
        for (const QString& page : tablePages)
            QVERIFY(page.contains(QStringLiteral("Visit Date")));
        QCOMPARE(PrintedRows(tablePages), ExpectedRows(info, siUnits));
    }

private slots:
    void initTestCase() { m_fixture = std::make_unique<RenderFixture>(); }
    void cleanupTestCase() { m_fixture.reset(); }

    void spirometryOfAHalfYear()
    {
        const ReportInfo info = RenderFixture::storedRequest(
            0, QStringLiteral("Spirometry"), QStringLiteral("QC001"), QStringLiteral("Adam Q Control"),
            QStringLiteral("01/01/2024"), QStringLiteral("06/30/2024"), false);
        QCOMPARE(ChartCount(info), 5);
        QStringList pages;
        checkReport(info, QStringLiteral("Spirometry"), {}, false, pages);
        // Five charts on two graph pages; the weekly visits of half a year fit one table page.
        QCOMPARE(pages.size(), 3);
        QCOMPARE(ExpectedRows(info, false).size(), 26);
    }

    void repeatedNamesAreNumbered()
    {
        // FVC and FEV1 come from the Pre and the Post table: the second of each is "(1)".
        const ReportInfo info = RenderFixture::storedRequest(
            0, QStringLiteral("Volume QC"), QStringLiteral("QC002"), QStringLiteral("Beth Control"),
            QStringLiteral("01/01/2024"), QStringLiteral("03/31/2024"), false);
        QCOMPARE(info.Variable(2).VarName, QStringLiteral("FVC (1)"));
        QCOMPARE(info.Variable(4).VarName, QStringLiteral("FEV1 (1)"));
        QStringList pages;
        checkReport(info, QStringLiteral("Volume QC"), {}, false, pages);
        QVERIFY(pages.first().contains(QStringLiteral("FVC (1)")));
        QVERIFY(pages.last().contains(QStringLiteral("FEV1 (1)")));
    }

    void gasExchangeWithItsDrift()
    {
        const ReportInfo info = RenderFixture::storedRequest(
            1, QStringLiteral("Exercise Peak"), QStringLiteral("QC002"), QStringLiteral("Beth Control"),
            QStringLiteral("01/01/2025"), QStringLiteral("06/30/2025"), false);
        QStringList pages;
        checkReport(info, QStringLiteral("Exercise Peak"), {}, false, pages);
    }

    void anOpenStartRunsFromTheFirstVisit()
    {
        const ReportInfo info = RenderFixture::storedRequest(0, QStringLiteral("Lung Volumes"), QStringLiteral("QC003"),
                                                             QStringLiteral("Carl R Control"), QString(),
                                                             QStringLiteral("03/01/2023"), false);
        QStringList pages;
        checkReport(info, QStringLiteral("Lung Volumes"), {}, false, pages);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(
            pages.first().contains(QRegularExpression(GetResourceText(4040) + QStringLiteral(":\\s+- 03/01/2023"))));
        // QC003's first PF visit is the first Wednesday of 2023.
        QCOMPARE(PrintedRows(pages.mid(2)).first().first(), QStringLiteral("01/04/2023"));
    }

    void siUnitsByOptionOrBySetting()
    {
        const ReportInfo si = RenderFixture::storedRequest(
            0, QStringLiteral("DLCO"), QStringLiteral("QC001"), QStringLiteral("Adam Q Control"),
            QStringLiteral("08/01/2024"), QStringLiteral("10/31/2024"), true);
        const ReportInfo conventional = RenderFixture::storedRequest(
            0, QStringLiteral("DLCO"), QStringLiteral("QC001"), QStringLiteral("Adam Q Control"),
            QStringLiteral("08/01/2024"), QStringLiteral("10/31/2024"), false);
        // The two systems differ in DLCO's unit and figures, so the check below can tell them apart.
        QVERIFY(si.Variable(1).Unit != conventional.Variable(1).Unit);

        QStringList byOption;
        checkReport(si, QStringLiteral("DLCO"), {QStringLiteral("--si")}, true, byOption);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(!byOption.first().contains(QStringLiteral("(") + conventional.Variable(1).Unit + QStringLiteral(")")));

        m_fixture->registry().setValue(QStringLiteral("SI Unit"), QStringLiteral("1"));
        QStringList bySetting;
        checkReport(si, QStringLiteral("DLCO"), {}, true, bySetting);
        QCOMPARE(bySetting, byOption);

        // Only "1" means SI.
        m_fixture->registry().setValue(QStringLiteral("SI Unit"), QStringLiteral("2"));
        QStringList conventionalPages;
        checkReport(conventional, QStringLiteral("DLCO"), {}, false, conventionalPages);
        m_fixture->registry().setValue(QStringLiteral("SI Unit"), QStringLiteral("0"));
    }

    void aChartWithoutResultsIsLeftOutWithTheProgramsMessage()
    {
        // FVC of the challenge table has readings every fourth week only, none
        // between the visits of January 8 and 15.
        ReportInfo info = RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QStringLiteral("QC001"),
                                                       QStringLiteral("Adam Q Control"), QStringLiteral("01/01/2024"),
                                                       QStringLiteral("01/10/2024"), false);
        ReportVariable challenge = info.Variable(1);
        const RecordsetPtr tables = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->ListTables(0);
        for (; !tables->IsEOF(); tables->MoveNext())
        {
            if (tables->Value(QStringLiteral("QCUserName")).toString() == QLatin1String("Challenge"))
                challenge.TableID = tables->Value(QStringLiteral("QCTableID")).toInt();
        }
        QVERIFY(challenge.TableID != info.Variable(1).TableID);
        RenderFixture::saveDefinition(QStringLiteral("Challenge check"), 0, {info.Variable(1), challenge});

        const QString pdf = m_fixture->path(QStringLiteral("challenge.pdf"));
        const RenderFixture::Result result =
            m_fixture->render({QStringLiteral("--tab"), QStringLiteral("PF"), QStringLiteral("--report"),
                               QStringLiteral("Challenge check"), QStringLiteral("--subject"), QStringLiteral("QC001"),
                               QStringLiteral("--from"), QStringLiteral("01/02/2024"), QStringLiteral("--to"),
                               QStringLiteral("01/20/2024"), QStringLiteral("--out"), pdf});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err, GetResourceText(4087) + QStringLiteral(": ") + GetResourceText(4111) + QLatin1Char('\n'));
        const QStringList pages = RenderFixture::pdfPages(pdf);
        QCOMPARE(pages.size(), 2);
        QCOMPARE(pages.first().count(GetResourceText(4108) + QStringLiteral(": ")), 1);
    }
};

CALVEX_TEST(TestRenderedPdf)
#include "TestRenderedPdf.moc"
