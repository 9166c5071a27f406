#include "RenderFixture.h"
#include "StoredChart.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "platform/ComponentFactory.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "rules/QCRuleEvaluator.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
const QString kToday = QStringLiteral("07/01/2024");
const QString kAllRules = QStringLiteral("1-2s,1-3s,2-2s,R-4s,4-1s,10x,DLCO-12");

// A violation as the tests work it out for themselves: from the store's
// graph data of each charted variable, checked by the rule evaluator.
struct Expected
{
    QDate date;
    QString table;
    QString variable;
    double value = 0;
    qint32 decimals = 0;
    QCRuleSet rules;
};

QCRuleSet Rules(const QString& text)
{
    QCRuleSet rules;
    QString unknown;
    if (!QCRuleSet::parse(text, rules, unknown))
        qFatal("unknown rule %s", qPrintable(unknown));
    return rules;
}

// The violations of a request: every charted variable's visits from the
// store, checked against its mean and SD; DLCO-12 for the variable DLCO (the
// demo definitions name each variable once). In date order, charts in the
// report's order within a day.
QList<Expected> ExpectedViolations(const ReportInfo& info, bool siUnits, const QCRuleSet& rules)
{
    QList<Expected> all;
    const QCRuleEvaluator evaluator(rules);
    for (qint32 i = 1; i <= info.VariableCount(); ++i)
    {
        const ReportVariable& variable = info.Variable(i);
        if (!variable.ShowInGraph)
            continue;
        const StoredChart chart = StoredChart::read(info, i, siUnits);
        QList<QCReading> readings;
        for (; !chart.data->IsEOF(); chart.data->MoveNext())
            readings.append({chart.data->Value(0).toDate(), chart.data->Value(1).toDouble()});
        const QCRuleEvaluator::DlcoChart dlco =
            variable.VarName != QLatin1String("DLCO")
                ? QCRuleEvaluator::DlcoChart::No
                : (siUnits ? QCRuleEvaluator::DlcoChart::SI : QCRuleEvaluator::DlcoChart::Conventional);
        for (const QCViolation& violation : evaluator.evaluate(readings, chart.mean, chart.sd, dlco))
            all.append({violation.Date, variable.TableName, variable.VarName, violation.Value, variable.DecimalPlaces,
                        violation.Rules});
    }
    std::stable_sort(all.begin(), all.end(), [](const Expected& a, const Expected& b) { return a.date < b.date; });
    return all;
}

QStringList Arguments(const QString& tab, const QString& report, const QString& subject, const QString& from,
                      const QString& to)
{
    QStringList arguments{QStringLiteral("--tab"),     tab,     QStringLiteral("--report"), report,
                          QStringLiteral("--subject"), subject, QStringLiteral("--to"),     to,
                          QStringLiteral("--today"),   kToday};
    if (!from.isEmpty())
        arguments << QStringLiteral("--from") << from;
    return arguments;
}

// QC002's DLCO definition over 2024: it breaks 1-2s, 1-3s and DLCO-12.
QStringList Dlco2024()
{
    return Arguments(QStringLiteral("PF"), QStringLiteral("DLCO"), QStringLiteral("QC002"),
                     QStringLiteral("01/01/2024"), QStringLiteral("12/31/2024"));
}

ReportInfo Dlco2024Request()
{
    return RenderFixture::storedRequest(0, QStringLiteral("DLCO"), QStringLiteral("QC002"),
                                        QStringLiteral("Beth Control"), QStringLiteral("01/01/2024"),
                                        QStringLiteral("12/31/2024"), false);
}

QString Line(const QString& message)
{
    return QStringLiteral("calvex-qc-render: ") + message + QLatin1Char('\n');
}

// The words of a text, blanks of any length between them.
QStringList Words(const QString& text)
{
    return text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}
} // namespace

// QC rules in the batch renderer: the violation pages of its PDF, and
// --check with its lines, its JSON document and its exit statuses.
class TestRenderRules : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    QString path(const QString& name) const { return m_fixture->path(name); }

private slots:
    void initTestCase() { m_fixture = std::make_unique<RenderFixture>(); }

    void cleanupTestCase() { m_fixture.reset(); }

    void init()
    {
        // No site rules unless a test sets them.
        m_fixture->registry().setValue(QStringLiteral("QC Rules"), QVariant());
        QFile::remove(path(QStringLiteral("rules.pdf")));
    }

    void theViolationPagesFollowTheTableNumberedOn()
    {
        const QString file = path(QStringLiteral("rules.pdf"));
        const RenderFixture::Result plain =
            m_fixture->render(Dlco2024() << QStringLiteral("--out") << path(QStringLiteral("plain.pdf")));
        QCOMPARE(plain.exitCode, 0);
        const RenderFixture::Result result =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << kAllRules << QStringLiteral("--out") << file);
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err, QString());

        // The report's own pages first, as they are without rules, then the
        // violation pages.
        const QStringList without = RenderFixture::pdfPages(path(QStringLiteral("plain.pdf")));
        const QStringList pages = RenderFixture::pdfPages(file);
        QVERIFY(pages.size() > without.size());
        for (int p = 0; p < without.size(); ++p)
            QCOMPARE(Words(pages.at(p)), Words(without.at(p)));
        QVERIFY(without.last().contains(QStringLiteral("Visit Date")));

        const QList<Expected> expected = ExpectedViolations(Dlco2024Request(), false, Rules(kAllRules));
        QVERIFY(expected.size() >= 4);
        const QStringList violationPages = pages.mid(without.size());
        QStringList printed;
        const QRegularExpression footer(GetResourceText(4084) + QStringLiteral(" (\\d+)\\s*$"),
                                        QRegularExpression::MultilineOption);
        for (int p = 0; p < violationPages.size(); ++p)
        {
            const QString& page = violationPages.at(p);
            QVERIFY(page.contains(QStringLiteral("QC Rule Violations")));
            QVERIFY(page.contains(QStringLiteral("Beth Control")));
            QCOMPARE(footer.match(page).captured(1), QString::number(without.size() + p + 1));
            QVERIFY(Words(page).join(QLatin1Char(' ')).contains(QStringLiteral("Date Table Variable Value Rules")));
            for (const QString& line : page.split(QLatin1Char('\n')))
            {
                if (QRegularExpression(QStringLiteral("^\\s*\\d\\d/\\d\\d/\\d{4}\\s")).match(line).hasMatch())
                    printed.append(Words(line).join(QLatin1Char(' ')));
            }
        }
        QStringList wanted;
        for (const Expected& violation : expected)
            wanted.append(QStringList{FormatMonthDayYear(violation.date), violation.table, violation.variable,
                                      FormatNumber(violation.value, violation.decimals), violation.rules.text()}
                              .join(QLatin1Char(' ')));
        QCOMPARE(printed, wanted);
        // A reading the demo data make: QC002's DLCO of December 10, 2024.
        QVERIFY(printed.contains(QStringLiteral("12/10/2024 Pre DLCO 18.2 1-2s, 1-3s, DLCO-12")));
    }

    void aPeriodWithoutViolationsSaysSo()
    {
        const QString file = path(QStringLiteral("rules.pdf"));
        const RenderFixture::Result result = m_fixture->render(
            Dlco2024() << QStringLiteral("--rules") << QStringLiteral("10x") << QStringLiteral("--out") << file);
        QCOMPARE(result.exitCode, 0);
        const QStringList pages = RenderFixture::pdfPages(file);
        QVERIFY(pages.last().contains(QStringLiteral("QC Rule Violations")));
        QVERIFY(pages.last().contains(QStringLiteral("No QC rule violations in this period.")));
        QVERIFY(!pages.at(pages.size() - 2).contains(QStringLiteral("QC Rule Violations")));
    }

    void checkPrintsOneLinePerViolationAndExitsThree()
    {
        const QList<Expected> expected = ExpectedViolations(Dlco2024Request(), false, Rules(kAllRules));
        const QStringList filesBefore = QDir(path(QString())).entryList(QDir::Files);
        const RenderFixture::Result result =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << kAllRules << QStringLiteral("--check"));
        QCOMPARE(result.exitCode, 3);
        QCOMPARE(result.err, QString());
        QStringList wanted;
        for (const Expected& violation : expected)
            wanted.append(QStringList{QStringLiteral("QC002"), QStringLiteral("DLCO"), violation.table,
                                      violation.variable, FormatMonthDayYear(violation.date),
                                      FormatPlainNumber(violation.value, violation.decimals), violation.rules.text()}
                              .join(QLatin1Char('\t')));
        QCOMPARE(result.out, wanted.join(QLatin1Char('\n')) + QLatin1Char('\n'));
        QVERIFY(result.out.contains(QStringLiteral("QC002\tDLCO\tPre\tDLCO\t12/10/2024\t18.2\t1-2s, 1-3s, DLCO-12\n")));
        // No file unless one is asked for.
        QCOMPARE(QDir(path(QString())).entryList(QDir::Files), filesBefore);
    }

    void checkWithoutViolationsExitsZero()
    {
        // QC001's DLCO over the second half of 2024 breaks none of these.
        const RenderFixture::Result result =
            m_fixture->render(Arguments(QStringLiteral("PF"), QStringLiteral("DLCO"), QStringLiteral("QC001"),
                                        QStringLiteral("07/01/2024"), QStringLiteral("12/31/2024"))
                              << QStringLiteral("--rules") << QStringLiteral("1-3s,2-2s,R-4s,4-1s,10x,DLCO-12")
                              << QStringLiteral("--check"));
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QString());
        QCOMPARE(result.err, QString());
    }

    void checkWritesTheReportOnlyWhenAsked()
    {
        const QString file = path(QStringLiteral("rules.pdf"));
        const RenderFixture::Result checked =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << kAllRules << QStringLiteral("--check"));
        QCOMPARE(checked.exitCode, 3);
        QVERIFY(!QFileInfo::exists(file));

        const RenderFixture::Result written =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << kAllRules << QStringLiteral("--check")
                                         << QStringLiteral("--out") << file);
        QCOMPARE(written.exitCode, 3);
        // Stdout holds the check alone.
        QCOMPARE(written.out, checked.out);
        QVERIFY(RenderFixture::pdfPages(file).last().contains(QStringLiteral("QC Rule Violations")));

        // A file that cannot be written is still a failure.
        const RenderFixture::Result failed =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << kAllRules << QStringLiteral("--check")
                                         << QStringLiteral("--out") << path(QStringLiteral("missing/folder/r.pdf")));
        QCOMPARE(failed.exitCode, 1);
        QVERIFY(failed.err.startsWith(QStringLiteral("calvex-qc-render: cannot write ")));
    }

    // --all --check: every saved definition for each subject listed, checked
    // in one run, gives the lines the reports checked one by one give; files
    // only with --out-dir, and stdout still holds the check alone.
    void checkOfAllReportsIsTheChecksOfEachReport()
    {
        const QStringList subjects{QStringLiteral("QC001"), QStringLiteral("QC002")};
        const QString from = QStringLiteral("01/01/2024");
        const QString to = QStringLiteral("12/31/2024");
        QStringList oneByOne;
        int worst = 0;
        const RecordsetPtr saved = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->ListReports();
        for (const QString& subject : subjects)
        {
            for (saved->MoveFirst(); !saved->IsEOF(); saved->MoveNext())
            {
                const QString tab = saved->Value(QStringLiteral("QCReportType")).toInt() == 0 ? QStringLiteral("PF")
                                                                                              : QStringLiteral("GX");
                const RenderFixture::Result one = m_fixture->render(
                    Arguments(tab, saved->Value(QStringLiteral("QCReportName")).toString(), subject, from, to)
                    << QStringLiteral("--rules") << kAllRules << QStringLiteral("--check"));
                // A report without visits is a failure alone, a line in a batch.
                if (one.exitCode == 1 && one.err.contains(QStringLiteral(" visits ")))
                    continue;
                QVERIFY2(one.exitCode == 0 || one.exitCode == 3, qPrintable(one.err));
                worst = qMax(worst, one.exitCode);
                oneByOne.append(one.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts));
            }
        }
        QVERIFY(!oneByOne.isEmpty());
        QCOMPARE(worst, 3);

        const QStringList all{QStringLiteral("--all"),
                              QStringLiteral("--subjects"),
                              subjects.join(u','),
                              QStringLiteral("--from"),
                              from,
                              QStringLiteral("--to"),
                              to,
                              QStringLiteral("--today"),
                              kToday,
                              QStringLiteral("--rules"),
                              kAllRules,
                              QStringLiteral("--check")};
        const QStringList filesBefore =
            QDir(path(QString())).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
        const RenderFixture::Result batch = m_fixture->render(all);
        QCOMPARE(batch.exitCode, 3);
        QStringList lines = batch.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        // The subjects in the list's order.
        QVERIFY(!lines.isEmpty() && lines.first().startsWith(QStringLiteral("QC001\t")));
        QVERIFY(lines.last().startsWith(QStringLiteral("QC002\t")));
        std::sort(lines.begin(), lines.end());
        std::sort(oneByOne.begin(), oneByOne.end());
        QCOMPARE(lines, oneByOne);
        // Reports skipped for want of visits are said on stderr, nothing else.
        for (const QString& line : batch.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            QVERIFY2(line.contains(QStringLiteral(" visits from 01/01/2024 to 12/31/2024: skipped ")),
                     qPrintable(line));
        QCOMPARE(QDir(path(QString())).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot), filesBefore);

        // With --out-dir the reports are written too; stdout is the same.
        const QString folder = path(QStringLiteral("checked-night"));
        const RenderFixture::Result written =
            m_fixture->render(QStringList(all) << QStringLiteral("--out-dir") << folder);
        QCOMPARE(written.exitCode, 3);
        QCOMPARE(written.out, batch.out);
        QVERIFY(!QDir(folder).entryList({QStringLiteral("QC002 *, DLCO.pdf")}, QDir::Files).isEmpty());

        // --json: one document, one entry per report checked.
        const RenderFixture::Result json = m_fixture->render(QStringList(all) << QStringLiteral("--json"));
        QCOMPARE(json.exitCode, 3);
        QJsonParseError error;
        const QJsonArray reports =
            QJsonDocument::fromJson(json.out.toUtf8(), &error).object().value(QStringLiteral("reports")).toArray();
        QCOMPARE(error.error, QJsonParseError::NoError);
        qsizetype violations = 0;
        for (const QJsonValue& report : reports)
        {
            for (const QJsonValue& variable : report.toObject().value(QStringLiteral("variables")).toArray())
                violations += variable.toObject().value(QStringLiteral("violations")).toArray().size();
        }
        QCOMPARE(violations, oneByOne.size());
    }

    void jsonIsOneDocumentWithTheFiguresAndTheViolations()
    {
        const RenderFixture::Result result =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << kAllRules << QStringLiteral("--check")
                                         << QStringLiteral("--json"));
        QCOMPARE(result.exitCode, 3);
        QCOMPARE(result.err, QString());
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(result.out.toUtf8(), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        const QJsonObject root = document.object();
        QCOMPARE(
            root.value(QStringLiteral("rules")).toArray(),
            QJsonArray({QStringLiteral("1-2s"), QStringLiteral("1-3s"), QStringLiteral("2-2s"), QStringLiteral("R-4s"),
                        QStringLiteral("4-1s"), QStringLiteral("10x"), QStringLiteral("DLCO-12")}));
        QCOMPARE(root.value(QStringLiteral("units")).toString(), QStringLiteral("conventional"));
        const QJsonArray reports = root.value(QStringLiteral("reports")).toArray();
        QCOMPARE(reports.size(), 1);
        const QJsonObject report = reports.first().toObject();
        QCOMPARE(report.value(QStringLiteral("subject")).toString(), QStringLiteral("QC002"));
        QCOMPARE(report.value(QStringLiteral("subjectName")).toString(), QStringLiteral("Beth Control"));
        QCOMPARE(report.value(QStringLiteral("tab")).toString(), QStringLiteral("PF"));
        QCOMPARE(report.value(QStringLiteral("definition")).toString(), QStringLiteral("DLCO"));
        QCOMPARE(report.value(QStringLiteral("period")).toObject(),
                 QJsonObject({{QStringLiteral("from"), QStringLiteral("2024-01-01")},
                              {QStringLiteral("to"), QStringLiteral("2024-12-31")}}));

        // One entry per charted variable, with the store's own figures to the
        // last bit, n counting the readings that are neither missing nor 0.
        const ReportInfo info = Dlco2024Request();
        const QList<Expected> expected = ExpectedViolations(info, false, Rules(kAllRules));
        const QJsonArray variables = report.value(QStringLiteral("variables")).toArray();
        QStringList charted;
        for (const ReportVariable& variable : info.Variables)
        {
            if (variable.ShowInGraph)
                charted.append(variable.VarName);
        }
        QCOMPARE(variables.size(), charted.size());
        qsizetype violationsSeen = 0;
        for (qsizetype v = 0; v < variables.size(); ++v)
        {
            const QJsonObject variable = variables.at(v).toObject();
            QCOMPARE(variable.value(QStringLiteral("variable")).toString(), charted.at(v));
            QCOMPARE(variable.value(QStringLiteral("table")).toString(), QStringLiteral("Pre"));
            const qint32 index =
                qint32(std::find_if(info.Variables.cbegin(), info.Variables.cend(),
                                    [&](const ReportVariable& one) { return one.VarName == charted.at(v); }) -
                       info.Variables.cbegin()) +
                1;
            const StoredChart chart = StoredChart::read(info, index, false);
            int n = 0;
            for (; !chart.data->IsEOF(); chart.data->MoveNext())
                n += chart.data->Value(1).toDouble() != 0 ? 1 : 0;
            QCOMPARE(variable.value(QStringLiteral("n")).toInt(), n);
            QCOMPARE(variable.value(QStringLiteral("mean")).toDouble(), chart.mean);
            QCOMPARE(variable.value(QStringLiteral("sd")).toDouble(), chart.sd);
            QCOMPARE(variable.value(QStringLiteral("cv")).toDouble(), chart.cv);
            QCOMPARE(variable.value(QStringLiteral("unit")).toString(), info.Variable(index).Unit);
            QCOMPARE(variable.value(QStringLiteral("decimalPlaces")).toInt(), info.Variable(index).DecimalPlaces);

            QJsonArray wanted;
            for (const Expected& violation : expected)
            {
                if (violation.variable != charted.at(v))
                    continue;
                QJsonArray names;
                for (const QString& name : violation.rules.names())
                    names.append(name);
                wanted.append(QJsonObject{{QStringLiteral("date"), violation.date.toString(Qt::ISODate)},
                                          {QStringLiteral("value"), violation.value},
                                          {QStringLiteral("rules"), names}});
            }
            QCOMPARE(variable.value(QStringLiteral("violations")).toArray(), wanted);
            violationsSeen += wanted.size();
        }
        QCOMPARE(violationsSeen, expected.size());
    }

    void jsonOfAnOpenStartAndNoViolations()
    {
        const RenderFixture::Result result =
            m_fixture->render(Arguments(QStringLiteral("GX"), QStringLiteral("Resting"), QStringLiteral("QC001"),
                                        QString(), QStringLiteral("03/31/2023"))
                              << QStringLiteral("--rules") << QStringLiteral("1-3s") << QStringLiteral("--check")
                              << QStringLiteral("--json") << QStringLiteral("--si"));
        QCOMPARE(result.err, QString());
        const QJsonObject root = QJsonDocument::fromJson(result.out.toUtf8()).object();
        QCOMPARE(root.value(QStringLiteral("units")).toString(), QStringLiteral("SI"));
        const QJsonObject report = root.value(QStringLiteral("reports")).toArray().first().toObject();
        QVERIFY(report.value(QStringLiteral("period")).toObject().value(QStringLiteral("from")).isNull());
        QCOMPARE(report.value(QStringLiteral("period")).toObject().value(QStringLiteral("to")).toString(),
                 QStringLiteral("2023-03-31"));
        bool any = false;
        for (const QJsonValue& variable : report.value(QStringLiteral("variables")).toArray())
            any = any || !variable.toObject().value(QStringLiteral("violations")).toArray().isEmpty();
        QCOMPARE(result.exitCode, any ? 3 : 0);
    }

    void theSitesRulesAreCheckedUnlessRulesAreGiven()
    {
        m_fixture->registry().setValue(QStringLiteral("QC Rules"), QStringLiteral("1-3s"));
        const RenderFixture::Result site = m_fixture->render(Dlco2024() << QStringLiteral("--check"));
        QCOMPARE(site.exitCode, 3);
        QStringList wanted;
        for (const Expected& violation : ExpectedViolations(Dlco2024Request(), false, Rules(QStringLiteral("1-3s"))))
            wanted.append(violation.variable);
        QCOMPARE(site.out.count(QLatin1Char('\n')), wanted.size());
        for (const QString& line : site.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            QVERIFY2(line.endsWith(QStringLiteral("\t1-3s")), qPrintable(line));

        // --rules replaces the site's list; an empty one checks nothing, so
        // the PDF has no violation pages...
        const QString file = path(QStringLiteral("rules.pdf"));
        const RenderFixture::Result none =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << QString() << QStringLiteral("--out") << file);
        QCOMPARE(none.exitCode, 0);
        QVERIFY(!RenderFixture::pdfPages(file).join(QString()).contains(QStringLiteral("QC Rule Violations")));
        // ...while the site's rules give the PDF its violation pages.
        QVERIFY(m_fixture->render(Dlco2024() << QStringLiteral("--out") << file).exitCode == 0);
        QVERIFY(RenderFixture::pdfPages(file).last().contains(QStringLiteral("QC Rule Violations")));

        // ... and --check of no rules is refused.
        const RenderFixture::Result nothing =
            m_fixture->render(Dlco2024() << QStringLiteral("--rules") << QString() << QStringLiteral("--check"));
        QCOMPARE(nothing.exitCode, 2);
        QCOMPARE(nothing.err, Line(QStringLiteral("--check has no QC rules to check: --rules is empty")));
        QCOMPARE(nothing.out, QString());
    }

    void checkWithoutAnyRulesIsRefused()
    {
        const RenderFixture::Result result = m_fixture->render(Dlco2024() << QStringLiteral("--check"));
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.err, Line(QStringLiteral("--check has no QC rules to check: the setting \"QC Rules\" is "
                                                 "empty or missing; give --rules")));
    }

    void anUnknownRuleIsOneLineAndExitTwo()
    {
        const QString file = path(QStringLiteral("rules.pdf"));
        const RenderFixture::Result given = m_fixture->render(
            Dlco2024() << QStringLiteral("--rules") << QStringLiteral("1-3s, 2of3-2s") << QStringLiteral("--check"));
        QCOMPARE(given.exitCode, 2);
        QCOMPARE(given.err, Line(QStringLiteral("unknown QC rule \"2of3-2s\" in --rules; the QC rules are 1-2s, 1-3s, "
                                                "2-2s, R-4s, 4-1s, 10x, DLCO-12")));
        QCOMPARE(given.out, QString());

        m_fixture->registry().setValue(QStringLiteral("QC Rules"), QStringLiteral("1-3s, 13s"));
        const RenderFixture::Result site = m_fixture->render(Dlco2024() << QStringLiteral("--out") << file);
        QCOMPARE(site.exitCode, 2);
        QCOMPARE(site.err, Line(QStringLiteral("unknown QC rule \"13s\" in the setting \"QC Rules\"; the QC rules are "
                                               "1-2s, 1-3s, 2-2s, R-4s, 4-1s, 10x, DLCO-12")));
        QVERIFY(!QFileInfo::exists(file));
        // --rules replaces the site's list, the unknown rule with it.
        QCOMPARE(m_fixture
                     ->render(Dlco2024() << QStringLiteral("--rules") << QStringLiteral("1-3s")
                                         << QStringLiteral("--out") << file)
                     .exitCode,
                 0);
    }

    void jsonGoesWithCheck()
    {
        const RenderFixture::Result result = m_fixture->render(
            Dlco2024() << QStringLiteral("--json") << QStringLiteral("--out") << path(QStringLiteral("rules.pdf")));
        QCOMPARE(result.exitCode, 2);
        QVERIFY(result.err.startsWith(Line(QStringLiteral("--json goes with --check"))));
        QVERIFY(result.err.contains(QStringLiteral("Usage: calvex-qc-render")));
    }
};

CALVEX_TEST(TestRenderRules)
#include "TestRenderRules.moc"
