#include "RenderFixture.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "platform/ComponentFactory.h"
#include "platform/modResource.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

namespace
{
const QString kUsage =
    QStringLiteral("Usage: calvex-qc-render --tab PF|GX --report NAME --subject ID [--from MM/DD/YYYY] --to MM/DD/YYYY "
                   "[--si] [--rules LIST] [--out FILE.pdf | --png-dir DIR] [--csv FILE.csv] [--check [--json]]\n"
                   "   or: calvex-qc-render --all (--subjects ID,ID,... | --subjects-file FILE) [--from MM/DD/YYYY] "
                   "--to MM/DD/YYYY [--si] [--rules LIST] [--out-dir DIR] [--check [--json]]");

// A request that renders: Spirometry of QC001 in the first half of 2024.
QStringList Valid()
{
    return {QStringLiteral("--tab"),      QStringLiteral("PF"),         QStringLiteral("--report"),
            QStringLiteral("Spirometry"), QStringLiteral("--subject"),  QStringLiteral("QC001"),
            QStringLiteral("--from"),     QStringLiteral("01/01/2024"), QStringLiteral("--to"),
            QStringLiteral("06/30/2024")};
}

// Valid() with the value of option replaced, or without the option when value is null.
QStringList With(const QString& option, const QString& value, QStringList arguments = Valid())
{
    const qsizetype at = arguments.indexOf(option);
    if (at < 0)
        arguments << option << value;
    else if (value.isNull())
        arguments.remove(at, 2);
    else
        arguments[at + 1] = value;
    return arguments;
}

QString Line(const QString& message)
{
    return QStringLiteral("calvex-qc-render: ") + message + QLatin1Char('\n');
}
} // namespace

class TestRenderCommandLine : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    QString out() const { return m_fixture->path(QStringLiteral("report.pdf")); }

    // Runs the renderer; a "%OUT%" argument stands for the test's PDF path.
    RenderFixture::Result render(QStringList arguments) const
    {
        arguments.replaceInStrings(QStringLiteral("%OUT%"), out());
        arguments.replaceInStrings(QStringLiteral("%DIR%"), m_fixture->path(QString()));
        return m_fixture->render(arguments);
    }

    // A saved definition of n copies of Spirometry's FVC with the flags given.
    static void saveCopies(const QString& name, int n, bool inGraph, bool inTable)
    {
        const ReportInfo spirometry = RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QString(),
                                                                   QString(), QString(), QString(), false);
        ReportVariable fvc = spirometry.Variable(1);
        fvc.ShowInGraph = inGraph;
        fvc.ShowInTable = inTable;
        RenderFixture::saveDefinition(name, 0, QList<ReportVariable>(n, fvc));
    }

private slots:
    void initTestCase()
    {
        m_fixture = std::make_unique<RenderFixture>();
        saveCopies(QStringLiteral("Ten Charts"), 10, true, false);
        saveCopies(QStringLiteral("Nine Charts"), 9, true, true);
        saveCopies(QStringLiteral("Table Only"), 2, false, true);
        saveCopies(QStringLiteral("No Flags"), 2, false, false);
        // Ten in the table, one of them in the graph too.
        const ReportInfo spirometry = RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QString(),
                                                                   QString(), QString(), QString(), false);
        QList<ReportVariable> tenInTable(10, spirometry.Variable(1));
        for (ReportVariable& variable : tenInTable)
            variable.ShowInGraph = false;
        tenInTable[0].ShowInGraph = true;
        RenderFixture::saveDefinition(QStringLiteral("Ten Columns"), 0, tenInTable);
    }

    void cleanupTestCase() { m_fixture.reset(); }

    void init() { QFile::remove(out()); }

    void badCommandLines_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");

        const QStringList valid = Valid() << QStringLiteral("--out") << QStringLiteral("%OUT%");
        QTest::newRow("nothing") << QStringList() << QStringLiteral("--tab is missing");
        QTest::newRow("unknown option") << (QStringList(valid) << QStringLiteral("--bogus"))
                                        << QStringLiteral("Unknown option 'bogus'.");
        QTest::newRow("no to") << With(QStringLiteral("--to"), QString(), valid) << QStringLiteral("--to is missing");
        QTest::newRow("no report") << With(QStringLiteral("--report"), QString(), valid)
                                   << QStringLiteral("--report is missing");
        QTest::newRow("no subject") << With(QStringLiteral("--subject"), QString(), valid)
                                    << QStringLiteral("--subject is missing");
        QTest::newRow("no tab value") << (QStringList(valid) << QStringLiteral("--tab"))
                                      << QStringLiteral("Missing value after '--tab'.");
        QTest::newRow("other tab") << With(QStringLiteral("--tab"), QStringLiteral("XX"), valid)
                                   << QStringLiteral("--tab must be PF or GX, not \"XX\"");
        QTest::newRow("no output") << Valid() << QStringLiteral("give --out FILE.pdf, --png-dir DIR or --csv FILE.csv");
        QTest::newRow("two outputs") << With(QStringLiteral("--png-dir"), QStringLiteral("%DIR%/pages"), valid)
                                     << QStringLiteral("give either --out FILE.pdf or --png-dir DIR, not both");
        QTest::newRow("empty csv") << With(QStringLiteral("--csv"), QStringLiteral(""))
                                   << QStringLiteral("--csv needs a path");
        QTest::newRow("out-dir without all") << With(QStringLiteral("--out-dir"), QStringLiteral("%DIR%/all"), valid)
                                             << QStringLiteral("--out-dir needs --all");
        QTest::newRow("subjects without all") << With(QStringLiteral("--subjects"), QStringLiteral("QC001"), valid)
                                              << QStringLiteral("--subjects needs --all");
        QTest::newRow("empty out") << With(QStringLiteral("--out"), QStringLiteral(""), valid)
                                   << QStringLiteral("--out needs a path");
        QTest::newRow("empty png-dir") << With(QStringLiteral("--png-dir"), QStringLiteral(""))
                                       << QStringLiteral("--png-dir needs a path");
        QTest::newRow("extra argument") << (QStringList(valid) << QStringLiteral("extra"))
                                        << QStringLiteral("unexpected argument \"extra\"");
        QTest::newRow("repeated option") << (QStringList(valid) << QStringLiteral("--tab") << QStringLiteral("GX"))
                                         << QStringLiteral("--tab is given more than once");
        QTest::newRow("blank report") << With(QStringLiteral("--report"), QStringLiteral("  "), valid)
                                      << QStringLiteral("--report needs the name of a saved QC report");
        QTest::newRow("empty subject") << With(QStringLiteral("--subject"), QStringLiteral(""), valid)
                                       << QStringLiteral("--subject needs the ID of a QC subject");
        QTest::newRow("bad today") << With(QStringLiteral("--today"), QStringLiteral("tomorrow"), valid)
                                   << QStringLiteral("--today is not a date (MM/DD/YYYY): \"tomorrow\"");
    }

    void badCommandLines()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const RenderFixture::Result result = render(arguments);
        QCOMPARE(result.err, Line(message) + kUsage + QLatin1Char('\n'));
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.out, QString());
        QVERIFY(!QFileInfo::exists(out()));
    }

    void refusedRequests_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");

        const auto request = [](const QString& option, const QString& value) {
            return With(option, value) << QStringLiteral("--out") << QStringLiteral("%OUT%");
        };
        // The period as the program checks it.
        QTest::newRow("from equal to to")
            << request(QStringLiteral("--from"), QStringLiteral("06/30/2024"))
            << QStringLiteral("--from must be a day before --to: 06/30/2024 - 06/30/2024");
        QTest::newRow("from after to") << request(QStringLiteral("--from"), QStringLiteral("07/01/2024"))
                                       << QStringLiteral("--from must be a day before --to: 07/01/2024 - 06/30/2024");
        QTest::newRow("to no day") << request(QStringLiteral("--to"), QStringLiteral("06/31/2024"))
                                   << QStringLiteral("--to is not a date (MM/DD/YYYY): \"06/31/2024\"");
        QTest::newRow("to day first") << request(QStringLiteral("--to"), QStringLiteral("30/06/2024"))
                                      << QStringLiteral("--to is not a date (MM/DD/YYYY): \"30/06/2024\"");
        QTest::newRow("to empty") << request(QStringLiteral("--to"), QStringLiteral(""))
                                  << QStringLiteral("--to is not a date (MM/DD/YYYY): \"\"");
        QTest::newRow("from two-digit year") << request(QStringLiteral("--from"), QStringLiteral("1/1/24"))
                                             << QStringLiteral("--from is not a date (MM/DD/YYYY): \"1/1/24\"");
        // Definitions and subjects.
        QTest::newRow("unknown report") << request(QStringLiteral("--report"), QStringLiteral("Spirometrie"))
                                        << QStringLiteral("there is no QC report \"Spirometrie\" on the PF tab");
        QTest::newRow("report of the other tab")
            << request(QStringLiteral("--tab"), QStringLiteral("GX"))
            << QStringLiteral("there is no QC report \"Spirometry\" on the GX tab");
        QTest::newRow("unknown subject") << request(QStringLiteral("--subject"), QStringLiteral("QC999"))
                                         << QStringLiteral("there is no QC subject with the ID \"QC999\"");
        QTest::newRow("part of an ID") << request(QStringLiteral("--subject"), QStringLiteral("QC00"))
                                       << QStringLiteral("there is no QC subject with the ID \"QC00\"");
        QTest::newRow("no visits") << With(QStringLiteral("--to"), QStringLiteral("06/30/2020"),
                                           request(QStringLiteral("--from"), QStringLiteral("01/01/2020")))
                                   << QStringLiteral("QC001 has no PF visits from 01/01/2020 to 06/30/2020");
        QTest::newRow("no visits, open start")
            << With(QStringLiteral("--from"), QString(), request(QStringLiteral("--to"), QStringLiteral("12/31/2022")))
            << QStringLiteral("QC001 has no PF visits up to 12/31/2022");
        // What the program refuses of a definition's variables, in its words.
        QTest::newRow("ten charts") << request(QStringLiteral("--report"), QStringLiteral("Ten Charts"))
                                    << GetResourceText(4078) + QStringLiteral(": 9");
        QTest::newRow("ten columns") << request(QStringLiteral("--report"), QStringLiteral("Ten Columns"))
                                     << GetResourceText(4079) + QStringLiteral(": 9");
        QTest::newRow("nothing shown") << request(QStringLiteral("--report"), QStringLiteral("No Flags"))
                                       << GetResourceText(4077);
        QTest::newRow("no chart") << request(QStringLiteral("--report"), QStringLiteral("Table Only"))
                                  << QStringLiteral(
                                         "the QC report \"Table Only\" has no variable shown in the graph, and a "
                                         "report without charts is not printed");
        // Output that cannot be written.
        QTest::newRow("no such folder") << With(QStringLiteral("--out"), QStringLiteral("%DIR%/missing/report.pdf"))
                                        << QStringLiteral("cannot write %DIR%/missing/report.pdf: No such file or "
                                                          "directory");
        QTest::newRow("a folder as the file") << With(QStringLiteral("--out"), QStringLiteral("%DIR%"))
                                              << QStringLiteral("cannot write %DIR%: Is a directory");
        QTest::newRow("pages under a file")
            << With(QStringLiteral("--png-dir"), QStringLiteral("%DIR%/norrix-demo.sqlite/pages"))
            << QStringLiteral("cannot make the folder %DIR%/norrix-demo.sqlite/pages");
    }

    void refusedRequests()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        message.replace(QStringLiteral("%DIR%"), m_fixture->path(QString()));
        const RenderFixture::Result result = render(arguments);
        QCOMPARE(result.err, Line(message));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.out, QString());
        // Nothing is written before the report is known to be there.
        QVERIFY(!QFileInfo::exists(out()));
    }

    void nineOfEachKindAreAccepted()
    {
        const RenderFixture::Result result = render(With(QStringLiteral("--report"), QStringLiteral("Nine Charts"))
                                                    << QStringLiteral("--out") << QStringLiteral("%OUT%"));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        // Nine charts on three pages, then the table.
        QCOMPARE(RenderFixture::pdfPages(out()).size(), 4);
    }

    void namesAndIdsCompareWithoutCase()
    {
        QStringList arguments = With(QStringLiteral("--report"), QStringLiteral("SPIROMETRY"));
        arguments = With(QStringLiteral("--subject"), QStringLiteral("qc001"), arguments);
        arguments = With(QStringLiteral("--tab"), QStringLiteral("pf"), arguments);
        const RenderFixture::Result result = render(arguments << QStringLiteral("--out") << QStringLiteral("%OUT%"));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QStringLiteral("QC report written to %1 (3 pages)\n").arg(out()));
        QVERIFY(RenderFixture::pdfPages(out()).first().contains(QStringLiteral("Adam Q Control")));
    }

    void helpShowsTheUsageAndTheExitStatuses()
    {
        // The statuses the other tests see: 0 written, 1 refused or not
        // written, 2 a bad command line, 3 a broken QC rule.
        const QString statuses = QStringLiteral("\n"
                                                "Exit status:\n"
                                                "  0  the report was written; with --check: no QC rule was broken\n"
                                                "  1  the report could not be rendered or written, or the "
                                                "user may not run QC\n"
                                                "     reports (no right 500, a disabled user): the reason is on "
                                                "stderr\n"
                                                "  2  the command line is wrong (usage error), or a QC rule is "
                                                "unknown\n"
                                                "  3  with --check: a QC rule was broken\n");
        for (const QString& option : {QStringLiteral("--help"), QStringLiteral("-h")})
        {
            const RenderFixture::Result result = render({option});
            QCOMPARE(result.exitCode, 0);
            QVERIFY2(result.out.startsWith(kUsage + QStringLiteral("\n\nOptions:\n")), qPrintable(result.out));
            QVERIFY2(result.out.endsWith(statuses), qPrintable(result.out));
            for (const char* name :
                 {"--tab PF|GX ", "--report NAME ", "--subject ID ", "--from MM/DD/YYYY ", "--to MM/DD/YYYY ", "--si ",
                  "--out FILE.pdf ", "--png-dir DIR ", "--csv FILE.csv ", "--rules LIST ", "--check ", "--json ",
                  "--all ", "--subjects ID,ID,... ", "--subjects-file FILE ", "--out-dir DIR ", "-h, --help ",
                  "--version "})
                QVERIFY2(result.out.contains(QStringLiteral("\n  ") + QLatin1String(name)), name);
            QCOMPARE(result.err, QString());
        }
    }

    void versionIsTheProjectsVersion()
    {
        const RenderFixture::Result result = render({QStringLiteral("--version")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QStringLiteral("calvex-qc-render %1.%2.%3\n")
                                 .arg(CALVEX_VERSION_MAJOR)
                                 .arg(CALVEX_VERSION_MINOR)
                                 .arg(CALVEX_VERSION_PATCH));
        QCOMPARE(result.err, QString());
        QVERIFY(!QFile::exists(out()));
    }

    void pngPagesAreWrittenIntoANewFolder()
    {
        const QString folder = m_fixture->path(QStringLiteral("pages/of/spirometry"));
        const RenderFixture::Result result = render(With(QStringLiteral("--png-dir"), folder));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QStringLiteral("QC report written to %1 (page-001.png to page-003.png)\n").arg(folder));
        QCOMPARE(QDir(folder).entryList(QDir::Files),
                 QStringList(
                     {QStringLiteral("page-001.png"), QStringLiteral("page-002.png"), QStringLiteral("page-003.png")}));
        // A letter page at 100 pixels an inch.
        QCOMPARE(QImage(QDir(folder).filePath(QStringLiteral("page-001.png"))).size(), QSize(850, 1100));
    }

    void aMissingSiteDatabaseIsAnError()
    {
        const QString missing = m_fixture->path(QStringLiteral("site/qc.sqlite"));
        m_fixture->registry().setValue(QStringLiteral("Database Name"), missing);
        m_fixture->registry().setValue(QStringLiteral("Demo Database"), 0);
        const RenderFixture::Result result = render(Valid() << QStringLiteral("--out") << QStringLiteral("%OUT%"));
        m_fixture->registry().setValue(QStringLiteral("Demo Database"), 1);
        m_fixture->registry().setValue(QStringLiteral("Database Name"),
                                       m_fixture->path(QStringLiteral("norrix-demo.sqlite")));

        QCOMPARE(result.err, Line(QStringLiteral("The QC database cannot be opened: the file \"%1\" does not exist "
                                                 "(QSQLITE:%1).")
                                      .arg(missing)));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!QFileInfo::exists(missing));
        QVERIFY(!QFileInfo::exists(out()));
    }

    void aMissingDemoDatabaseIsBroughtUpAsAtTheProgramsStart()
    {
        const QString fresh = m_fixture->path(QStringLiteral("fresh/norrix-demo.sqlite"));
        m_fixture->registry().setValue(QStringLiteral("Database Name"), fresh);
        const RenderFixture::Result result = render(Valid() << QStringLiteral("--out") << QStringLiteral("%OUT%"));
        m_fixture->registry().setValue(QStringLiteral("Database Name"),
                                       m_fixture->path(QStringLiteral("norrix-demo.sqlite")));

        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(QFileInfo::exists(fresh));
        QCOMPARE(RenderFixture::pdfPages(out()).size(), 3);
    }
};

CALVEX_TEST(TestRenderCommandLine)
#include "TestRenderCommandLine.moc"
