#include "RenderFixture.h"
#include "common/ScopedTmpfs.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "platform/ComponentFactory.h"
#include "platform/VbConversions.h"
#include "suite/CsvReader.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTest>

#include <memory>

namespace
{
const QByteArray kBom("\xEF\xBB\xBF");
const QString kQuotedName = QStringLiteral("Best \"FVC\", pre");

QByteArray Contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString Line(const QString& message)
{
    return QStringLiteral("calvex-qc-render: ") + message + QLatin1Char('\n');
}

// Every record of a CSV file, read back with the suite's RFC 4180 reader;
// a test failure for a record it finds broken.
QList<QStringList> Records(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(fileName));
    CsvReader reader(file);
    QList<QStringList> records;
    while (reader.readRecord())
    {
        if (!reader.error().isEmpty())
            qFatal("%s, record %lld: %s", qPrintable(fileName), reader.recordLine(), qPrintable(reader.error()));
        records.append(reader.fields());
    }
    return records;
}

// The rows of the table pages as pdftotext reads them: lines that begin with
// a visit date, split into words (a blank cell leaves no word).
QList<QStringList> PrintedRows(const QStringList& pages)
{
    static const QRegularExpression rowStart(QStringLiteral("^\\s*\\d\\d/\\d\\d/\\d{4}\\s"));
    QList<QStringList> rows;
    for (const QString& page : pages)
    {
        for (const QString& line : page.split(QLatin1Char('\n')))
        {
            if (rowStart.match(line).hasMatch())
                rows.append(line.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        }
    }
    return rows;
}

// The table variables of a request, in their order.
QList<ReportVariable> TableVariables(const ReportInfo& info)
{
    QList<ReportVariable> variables;
    for (const ReportVariable& variable : info.Variables)
    {
        if (variable.ShowInTable)
            variables.append(variable);
    }
    return variables;
}
} // namespace

// calvex-qc-render --csv: the report's table as CSV, the same rows and
// columns as the printed table, readable by other programs in any locale,
// written whole or not at all.
class TestRenderCsv : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    static QStringList Request(const QString& tab, const QString& report,
                               const QString& from = QStringLiteral("01/01/2024"),
                               const QString& to = QStringLiteral("06/30/2024"))
    {
        return {QStringLiteral("--tab"),     tab,
                QStringLiteral("--report"),  report,
                QStringLiteral("--subject"), QStringLiteral("QC001"),
                QStringLiteral("--from"),    from,
                QStringLiteral("--to"),      to};
    }

    // Renders the report as a PDF and as CSV in one run, and compares the CSV
    // with the printed table (pdftotext) and with the table's data set,
    // heading for heading and cell for cell. Returns the CSV's records.
    QList<QStringList> checkAgainstThePrintedTable(qint16 tab, const QString& report)
    {
        const QString pdf = m_fixture->path(report + QStringLiteral(".pdf"));
        const QString csv = m_fixture->path(report + QStringLiteral(".csv"));
        const RenderFixture::Result result =
            m_fixture->render(Request(tab == 0 ? QStringLiteral("PF") : QStringLiteral("GX"), report)
                              << QStringLiteral("--out") << pdf << QStringLiteral("--csv") << csv);
        if (result.exitCode != 0)
            qFatal("render failed: %s", qPrintable(result.err));

        ReportInfo info =
            RenderFixture::storedRequest(tab, report, QStringLiteral("QC001"), QString(), QStringLiteral("01/01/2024"),
                                         QStringLiteral("06/30/2024"), false);
        const QList<ReportVariable> columns = TableVariables(info);
        const RecordsetPtr data =
            ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->GetTableData(info, false);
        const QStringList pages = RenderFixture::pdfPages(pdf);
        [&] {
            QCOMPARE(result.err, QString());
            QCOMPARE(result.out, QStringLiteral("QC report written to %1 (%2 pages)\nQC table data written to %3 (%4 "
                                                "visits)\n")
                                     .arg(pdf)
                                     .arg(pages.size())
                                     .arg(csv)
                                     .arg(data->RecordCount()));
        }();

        // UTF-8 with a byte-order mark; every line ends with CRLF.
        const QByteArray bytes = Contents(csv);
        [&] {
            QVERIFY(bytes.startsWith(kBom));
            QVERIFY(bytes.endsWith("\r\n"));
            QCOMPARE(bytes.count('\n'), bytes.count("\r\n"));
            QCOMPARE(bytes.count('\r'), bytes.count("\r\n"));
        }();

        const QList<QStringList> records = Records(csv);
        // The headings: "Visit Date", then "table variable (unit)" of every table variable.
        QStringList headings{QStringLiteral("Visit Date")};
        for (const ReportVariable& variable : columns)
        {
            // A variable without a unit (RER) has no parentheses.
            QString heading = variable.TableName + QLatin1Char(' ') + variable.VarName;
            if (!variable.Unit.isEmpty())
                heading += QStringLiteral(" (") + variable.Unit + QLatin1Char(')');
            headings.append(heading);
        }
        [&] {
            QCOMPARE(records.size(), data->RecordCount() + 1);
            QCOMPARE(records.first(), headings);
        }();

        // Cell for cell against the data set the table is drawn from: the
        // printed cell's text without its digit grouping, a date as yyyy-mm-dd.
        for (int r = 1; r < records.size(); ++r, data->MoveNext())
        {
            const QStringList& record = records.at(r);
            [&] {
                QCOMPARE(record.size(), columns.size() + 1);
                QCOMPARE(record.at(0), data->Value(0).toDate().toString(Qt::ISODate));
            }();
            for (int c = 0; c < columns.size(); ++c)
            {
                const QVariant value = data->Value(c + 1);
                const bool blank = value.isNull() || value.toDouble() == 0;
                const QString printed = blank ? QString() : FormatNumber(value.toDouble(), columns.at(c).DecimalPlaces);
                [&] { QCOMPARE(record.at(c + 1), QString(printed).remove(QLatin1Char(','))); }();
            }
        }

        // Row for row against the printed table pages (pdftotext): a
        // record's non-empty cells, in the table's own texts.
        QList<QStringList> expectedRows;
        for (int r = 1; r < records.size(); ++r)
        {
            const QStringList& record = records.at(r);
            QStringList row{FormatMonthDayYear(QDate::fromString(record.at(0), Qt::ISODate))};
            for (int c = 1; c < record.size(); ++c)
            {
                if (!record.at(c).isEmpty())
                    row.append(FormatNumber(record.at(c).toDouble(), columns.at(c - 1).DecimalPlaces));
            }
            expectedRows.append(row);
        }
        [&] { QCOMPARE(PrintedRows(pages), expectedRows); }();
        return records;
    }

private slots:
    void initTestCase()
    {
        m_fixture = std::make_unique<RenderFixture>();

        // A catalogue variable whose name holds a comma and quotes, with
        // readings for QC001's PF visits: some in the thousands, some
        // missing and some zero.
        SuiteDatabase db(SuiteSettings::fromRegistry());
        SuiteDataLoader loader(db);
        const qint32 pre = loader.tableId(0, QStringLiteral("Pre"));
        const qint32 varId =
            db.scalar(QStringLiteral("INSERT INTO variables (tab, name, unit, si_unit, si_factor, si_offset, "
                                     "decimal_places, sort_order) VALUES (0, ?, 'L', 'L', 1, 0, 2, 999) "
                                     "RETURNING var_id"),
                      {kQuotedName})
                .toInt();
        db.exec(QStringLiteral("INSERT INTO results (visit_id, table_id, var_id, result_value) "
                               "SELECT v.visit_id, ?, ?, CASE WHEN v.visit_id % 13 = 0 THEN 0 "
                               "ELSE 0.5 + (v.visit_id % 7) * 300.25 END "
                               "FROM visits v JOIN patients p ON p.patient_id = v.patient_id "
                               "WHERE p.id_num = 'QC001' AND v.tab = 0 AND v.visit_id % 5 <> 0"),
                {pre, varId});

        const ReportInfo spirometry = RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QString(),
                                                                   QString(), QString(), QString(), false);
        ReportVariable quoted = spirometry.Variable(1);
        quoted.ParamsDefID = varId;
        quoted.VarName = kQuotedName;
        quoted.Unit = QStringLiteral("L");
        quoted.DecimalPlaces = 2;
        RenderFixture::saveDefinition(QStringLiteral("Quoted"), 0, {quoted, spirometry.Variable(2)});
    }

    void cleanupTestCase() { m_fixture.reset(); }

    void everyDemoTableIsItsCsv_data()
    {
        QTest::addColumn<qint16>("tab");
        QTest::addColumn<QString>("report");
        QTest::newRow("Spirometry") << qint16(0) << QStringLiteral("Spirometry");
        QTest::newRow("Volume QC") << qint16(0) << QStringLiteral("Volume QC");
        // Hb is in the table only.
        QTest::newRow("DLCO") << qint16(0) << QStringLiteral("DLCO");
        QTest::newRow("Resting") << qint16(1) << QStringLiteral("Resting");
        QTest::newRow("Exercise Peak") << qint16(1) << QStringLiteral("Exercise Peak");
    }

    void everyDemoTableIsItsCsv()
    {
        QFETCH(qint16, tab);
        QFETCH(QString, report);
        const QList<QStringList> records = checkAgainstThePrintedTable(tab, report);
        QVERIFY(records.size() > 10);
    }

    void aNameWithACommaAndQuotesIsQuoted()
    {
        const QList<QStringList> records = checkAgainstThePrintedTable(0, QStringLiteral("Quoted"));
        QCOMPARE(records.first().at(1), QStringLiteral("Pre Best \"FVC\", pre (L)"));

        const QByteArray bytes = Contents(m_fixture->path(QStringLiteral("Quoted.csv")));
        QVERIFY(bytes.startsWith(QByteArray(kBom + "Visit Date,\"Pre Best \"\"FVC\"\", pre (L)\",Pre FEV1 (L)\r\n")));
        // Values of a thousand and more have no group separator, missing and zero readings are empty.
        int thousands = 0;
        int empty = 0;
        for (int r = 1; r < records.size(); ++r)
        {
            const QString& cell = records.at(r).at(1);
            QVERIFY2(!cell.contains(QLatin1Char(',')), qPrintable(cell));
            thousands += cell.toDouble() >= 1000 ? 1 : 0;
            empty += cell.isEmpty() ? 1 : 0;
        }
        QVERIFY(thousands > 0);
        QVERIFY(empty > 0);
        QVERIFY(RenderFixture::pdfPages(m_fixture->path(QStringLiteral("Quoted.pdf"))).first().contains(kQuotedName));
    }

    void theLocaleChangesNothing()
    {
        const QString english = m_fixture->path(QStringLiteral("english.csv"));
        const QString german = m_fixture->path(QStringLiteral("german.csv"));
        const QString germanPdf = m_fixture->path(QStringLiteral("german.pdf"));
        QCOMPARE(
            m_fixture
                ->render(Request(QStringLiteral("PF"), QStringLiteral("Quoted")) << QStringLiteral("--csv") << english)
                .exitCode,
            0);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
        const RenderFixture::Result result =
            m_fixture->render(Request(QStringLiteral("PF"), QStringLiteral("Quoted"))
                                  << QStringLiteral("--csv") << german << QStringLiteral("--out") << germanPdf,
                              environment);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(Contents(german), Contents(english));
        // The printed table does follow the locale: a comma for the point.
        QVERIFY(
            RenderFixture::pdfPages(germanPdf).last().contains(QRegularExpression(QStringLiteral("\\d,\\d\\d\\b"))));
    }

    void csvAloneWritesNoPdf()
    {
        const QString csv = m_fixture->path(QStringLiteral("alone.csv"));
        const RenderFixture::Result result = m_fixture->render(Request(QStringLiteral("GX"), QStringLiteral("Resting"))
                                                               << QStringLiteral("--csv") << csv);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.startsWith(QStringLiteral("QC table data written to %1 (").arg(csv)));
        QCOMPARE(result.out.count(QLatin1Char('\n')), 1);
        QCOMPARE(QDir(m_fixture->path(QString())).entryList({QStringLiteral("alone*")}),
                 QStringList{QStringLiteral("alone.csv")});
    }

    void aPeriodWithoutVisitsWritesNoCsv()
    {
        const QString csv = m_fixture->path(QStringLiteral("none.csv"));
        const RenderFixture::Result result =
            m_fixture->render(Request(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("01/01/2020"),
                                      QStringLiteral("06/30/2020"))
                              << QStringLiteral("--csv") << csv);
        QCOMPARE(result.err, Line(QStringLiteral("QC001 has no PF visits from 01/01/2020 to 06/30/2020")));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!QFileInfo::exists(csv));
    }

    void aCsvIsWrittenWholeOrNotAtAll()
    {
        const QString missing = m_fixture->path(QStringLiteral("missing/table.csv"));
        const RenderFixture::Result noFolder = m_fixture->render(
            Request(QStringLiteral("PF"), QStringLiteral("Spirometry")) << QStringLiteral("--csv") << missing);
        QCOMPARE(noFolder.err, Line(QStringLiteral("cannot write %1: No such file or directory").arg(missing)));
        QCOMPARE(noFolder.exitCode, 1);

        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no full file system to test on: ") + disk.whyNot()));
        const QString csv = disk.filePath(QStringLiteral("table.csv"));
        QCOMPARE(m_fixture
                     ->render(Request(QStringLiteral("PF"), QStringLiteral("Spirometry"), QStringLiteral("01/01/2024"),
                                      QStringLiteral("01/31/2024"))
                              << QStringLiteral("--csv") << csv)
                     .exitCode,
                 0);
        const QByteArray earlier = Contents(csv);
        QVERIFY(earlier.startsWith(kBom));
        QVERIFY(disk.fill());
        const QStringList before = disk.entries();

        const RenderFixture::Result full = m_fixture->render(Request(QStringLiteral("PF"), QStringLiteral("Spirometry"))
                                                             << QStringLiteral("--csv") << csv);
        QCOMPARE(full.err, Line(QStringLiteral("cannot write %1: No space left on device").arg(csv)));
        QCOMPARE(full.exitCode, 1);
        QCOMPARE(full.out, QString());
        QCOMPARE(Contents(csv), earlier);
        QCOMPARE(disk.entries(), before);
    }
};

CALVEX_TEST(TestRenderCsv)
#include "TestRenderCsv.moc"
