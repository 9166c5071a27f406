#include "RenderFixture.h"
#include "common/ScopedTmpfs.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "platform/ComponentFactory.h"
#include "platform/modResource.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
const QString kToday = QStringLiteral("07/01/2024");
const QStringList kPfDefinitions{QStringLiteral("DLCO"), QStringLiteral("Lung Volumes"),
                                 QStringLiteral("Plethysmography"), QStringLiteral("Spirometry"),
                                 QStringLiteral("Volume QC")};
const QStringList kGxDefinitions{QStringLiteral("Anaerobic Threshold"), QStringLiteral("Exercise Peak"),
                                 QStringLiteral("Resting")};

QString Line(const QString& message)
{
    return QStringLiteral("calvex-qc-render: ") + message + QLatin1Char('\n');
}

// The file names of a subject's reports, as Print to PDF proposes them, for
// the first half of 2024.
QStringList FileNames(const QString& subject, const QStringList& definitions)
{
    QStringList names;
    for (const QString& definition : definitions)
        names.append(QStringLiteral("%1, 01-01-2024 to 06-30-2024, %2.pdf").arg(subject, definition));
    return names;
}

QStringList Sorted(QStringList list)
{
    list.sort();
    return list;
}
} // namespace

// calvex-qc-render --all: every saved definition of both tabs for each
// subject listed, one PDF each in --out-dir, in one process; subjects and
// tabs without visits in the period are skipped with a line, and the run
// ends with the worst status it met.
class TestRenderAll : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    QString folder(const QString& name) const { return m_fixture->path(name); }

    RenderFixture::Result renderAll(const QStringList& subjectArguments, const QString& outFolder,
                                    const QString& from = QStringLiteral("01/01/2024"),
                                    const QString& to = QStringLiteral("06/30/2024")) const
    {
        QStringList arguments{QStringLiteral("--all")};
        arguments += subjectArguments;
        if (!from.isEmpty())
            arguments << QStringLiteral("--from") << from;
        arguments << QStringLiteral("--to") << to << QStringLiteral("--today") << kToday << QStringLiteral("--out-dir")
                  << outFolder;
        return m_fixture->render(arguments);
    }

    static QStringList Files(const QString& folder)
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    // The lines of stdout for written reports, in the order of the run.
    static QStringList WrittenLines(const QString& folder, const QStringList& names)
    {
        QStringList lines;
        for (const QString& name : names)
        {
            const QString path = QDir(folder).filePath(name);
            lines.append(QStringLiteral("QC report written to %1 (%2 pages)")
                             .arg(path)
                             .arg(RenderFixture::pdfPages(path).size()));
        }
        return lines;
    }

private slots:
    void initTestCase()
    {
        m_fixture = std::make_unique<RenderFixture>();
        // A subject with six PF visits in February and March 2024, with a
        // reading of every variable of the PF definitions, and no GX visit;
        // and one without any visit.
        QList<SuiteDataLoader::Result> readings;
        for (const QString& definition : kPfDefinitions)
        {
            const ReportInfo stored =
                RenderFixture::storedRequest(0, definition, QString(), QString(), QString(), QString(), false);
            for (const ReportVariable& variable : stored.Variables)
                readings.append({variable.TableID, variable.ParamsDefID, 1.0 + readings.size() / 10.0});
        }
        SuiteDatabase db(SuiteSettings::fromRegistry());
        SuiteDataLoader loader(db);
        const qint32 pfOnly =
            loader.addPatient({QStringLiteral("QC-PF1"), QStringLiteral("Pfonly"), QStringLiteral("Pia"), {}, {}});
        std::vector<SuiteDataLoader::Visit> visits;
        for (int week = 0; week < 6; ++week)
        {
            QList<SuiteDataLoader::Result> visitReadings;
            for (const SuiteDataLoader::Result& reading : readings)
            {
                // The same variable in two definitions has one reading a visit.
                const bool known = std::any_of(visitReadings.cbegin(), visitReadings.cend(), [&](const auto& r) {
                    return r.tableId == reading.tableId && r.varId == reading.varId;
                });
                if (!known)
                    visitReadings.append({reading.tableId, reading.varId, reading.value.toDouble() + week / 100.0});
            }
            visits.push_back({QDate(2024, 2, 5).addDays(7 * week), 0, visitReadings});
        }
        loader.addVisits(pfOnly, visits);
        loader.addPatient({QStringLiteral("QC-NONE"), QStringLiteral("Novisit"), QStringLiteral("Nora"), {}, {}});
    }

    void cleanupTestCase() { m_fixture.reset(); }

    void everyDefinitionOfEverySubjectIsOnePdf()
    {
        const QString out = folder(QStringLiteral("night"));
        const RenderFixture::Result result =
            renderAll({QStringLiteral("--subjects"), QStringLiteral("QC001, QC-PF1,QC-NONE ,QC002")}, out);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);

        // The reports in the order of the run: subjects as listed, PF then GX, each tab by name.
        const QStringList qc001 = FileNames(QStringLiteral("QC001 Adam Q Control"), kPfDefinitions + kGxDefinitions);
        const QStringList pfOnly = FileNames(QStringLiteral("QC-PF1 Pia Pfonly"), kPfDefinitions);
        const QStringList qc002 = FileNames(QStringLiteral("QC002 Beth Control"), kPfDefinitions + kGxDefinitions);
        QCOMPARE(Files(out), Sorted(qc001 + pfOnly + qc002));

        QStringList expected = WrittenLines(out, qc001) + WrittenLines(out, pfOnly);
        expected.append(QStringLiteral("QC-PF1 has no GX visits from 01/01/2024 to 06/30/2024: skipped "
                                       "\"Anaerobic Threshold\", \"Exercise Peak\", \"Resting\""));
        expected.append(QStringLiteral("QC-NONE has no PF visits from 01/01/2024 to 06/30/2024: skipped \"DLCO\", "
                                       "\"Lung Volumes\", \"Plethysmography\", \"Spirometry\", \"Volume QC\""));
        expected.append(QStringLiteral("QC-NONE has no GX visits from 01/01/2024 to 06/30/2024: skipped "
                                       "\"Anaerobic Threshold\", \"Exercise Peak\", \"Resting\""));
        expected += WrittenLines(out, qc002);
        QCOMPARE(result.out, expected.join(QLatin1Char('\n')) + QLatin1Char('\n'));
    }

    void eachPdfIsTheReportOfItsOwnRequest()
    {
        const QString out = folder(QStringLiteral("pairs"));
        const RenderFixture::Result all =
            renderAll({QStringLiteral("--subjects"), QStringLiteral("QC003")}, out, QString());
        QCOMPARE(all.err, QString());
        QCOMPARE(all.exitCode, 0);
        QCOMPARE(Files(out).size(), 8);

        // The same pages, page for page, as the single report of the same request.
        for (const auto& [tab, definition] : {std::pair{QStringLiteral("PF"), QStringLiteral("DLCO")},
                                              std::pair{QStringLiteral("PF"), QStringLiteral("Spirometry")},
                                              std::pair{QStringLiteral("GX"), QStringLiteral("Resting")}})
        {
            const QString single = m_fixture->path(definition + QStringLiteral("-single.pdf"));
            const RenderFixture::Result one = m_fixture->render(
                {QStringLiteral("--tab"), tab, QStringLiteral("--report"), definition, QStringLiteral("--subject"),
                 QStringLiteral("QC003"), QStringLiteral("--to"), QStringLiteral("06/30/2024"),
                 QStringLiteral("--today"), kToday, QStringLiteral("--out"), single});
            QCOMPARE(one.exitCode, 0);
            const QString batchFile =
                QDir(out).filePath(QStringLiteral("QC003 Carl R Control, up to 06-30-2024, %1.pdf").arg(definition));
            const QStringList pages = RenderFixture::pdfPages(batchFile);
            QVERIFY(pages.size() >= 2);
            QCOMPARE(pages, RenderFixture::pdfPages(single));
            QVERIFY(pages.first().contains(QStringLiteral("Carl R Control")));
            // Drawn after other reports on its writer's PDF target, each
            // page is the single report's page, pixel for pixel.
            for (int page = 1; page <= pages.size(); ++page)
                QCOMPARE(RenderFixture::rasterPage(batchFile, page, 50), RenderFixture::rasterPage(single, page, 50));
            // The fonts set up once for a writer's documents are embedded
            // whole in each of them: the fonts of the report alone.
            const QStringList fonts = RenderFixture::pdfFonts(batchFile);
            QCOMPARE(fonts, RenderFixture::pdfFonts(single));
            QVERIFY2(fonts.size() == 2, qPrintable(fonts.join(QLatin1Char('\n'))));
            for (const QString& font : fonts)
                QVERIFY2(font.endsWith(QStringLiteral(" yes no yes")), qPrintable(font));
        }
    }

    void aSubjectsFileListsOneIdALine()
    {
        const QString list = m_fixture->path(QStringLiteral("subjects.txt"));
        QFile file(list);
        QVERIFY(file.open(QIODevice::WriteOnly));
        // A byte-order mark, CRLF, a comment, blank lines, blanks around an
        // ID, and one subject twice (once in other case).
        file.write("\xEF\xBB\xBF# the night's QC subjects\r\n\r\n  QC-PF1  \r\n   # not QC001\r\nqc-pf1\r\n\r\n");
        file.close();

        const QString out = folder(QStringLiteral("from-file"));
        const RenderFixture::Result result = renderAll({QStringLiteral("--subjects-file"), list}, out);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(Files(out), Sorted(FileNames(QStringLiteral("QC-PF1 Pia Pfonly"), kPfDefinitions)));
        QCOMPARE(result.out.count(QStringLiteral("QC report written to")), 5);
        QCOMPARE(result.out.count(QStringLiteral("has no GX visits")), 1);
    }

    void theWorstStatusIsTheRunsStatus()
    {
        // An unknown subject is one line; the others' reports are written all the same.
        const QString out = folder(QStringLiteral("unknown"));
        const RenderFixture::Result result =
            renderAll({QStringLiteral("--subjects"), QStringLiteral("QC999,QC-PF1")}, out);
        QCOMPARE(result.err, Line(QStringLiteral("there is no QC subject with the ID \"QC999\"")));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(Files(out).size(), 5);
        QCOMPARE(result.out.count(QStringLiteral("QC report written to")), 5);
    }

    void aRunWithoutAnyVisitFails()
    {
        const QString out = folder(QStringLiteral("empty"));
        const RenderFixture::Result result = renderAll({QStringLiteral("--subjects"), QStringLiteral("QC-NONE,QC001")},
                                                       out, QStringLiteral("01/01/2020"), QStringLiteral("06/30/2020"));
        QCOMPARE(result.err, Line(QStringLiteral("no report: none of the QC subjects listed has visits from "
                                                 "01/01/2020 to 06/30/2020")));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.out.count(QStringLiteral(" skipped ")), 4);
        QCOMPARE(Files(out), QStringList());
    }

    void reportsOfTheSameNameAreToldApart()
    {
        // Two GX definitions whose names become the same file name: the
        // characters a file name cannot hold are dashes in both.
        const ReportInfo resting = RenderFixture::storedRequest(1, QStringLiteral("Resting"), QString(), QString(),
                                                                QString(), QString(), false);
        const qint32 slash = RenderFixture::saveDefinition(QStringLiteral("Rest/ing"), 1, resting.Variables);
        const qint32 colon = RenderFixture::saveDefinition(QStringLiteral("Rest:ing"), 1, resting.Variables);
        const QString out = folder(QStringLiteral("same-name"));
        const RenderFixture::Result result = renderAll({QStringLiteral("--subjects"), QStringLiteral("QC001")}, out);
        for (const qint32 id : {slash, colon})
            ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->DeleteReport(id, QString());

        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        const QString first = QStringLiteral("QC001 Adam Q Control, 01-01-2024 to 06-30-2024, Rest-ing.pdf");
        const QString second = QStringLiteral("QC001 Adam Q Control, 01-01-2024 to 06-30-2024, Rest-ing (2).pdf");
        QCOMPARE(Files(out).size(), 10);
        QVERIFY(Files(out).contains(first));
        QVERIFY(Files(out).contains(second));
        for (const QString& file : {first, second})
            QVERIFY(RenderFixture::pdfPages(QDir(out).filePath(file)).first().contains(QStringLiteral("SBP")));
        // Announced in the order of the definitions' names: "/" before ":".
        QVERIFY2(result.out.indexOf(first) < result.out.indexOf(second), qPrintable(result.out));
    }

    void aChartLeftOutIsSaidWithItsReport()
    {
        // QC-PF1 has no Post PEF: its chart is left out, with the layout's
        // message as a line that names the report; the report is written.
        ReportVariable pef;
        {
            SuiteDatabase db(SuiteSettings::fromRegistry());
            SuiteDataLoader catalogue(db);
            pef.TableID = catalogue.tableId(0, QStringLiteral("Post"));
            pef.ParamsDefID = catalogue.variableId(0, QStringLiteral("PEF"));
        }
        pef.TableName = QStringLiteral("Post");
        pef.VarName = QStringLiteral("PEF");
        pef.Unit = QStringLiteral("L/s");
        pef.ShowInGraph = true;
        pef.ShowInTable = true;
        pef.DecimalPlaces = 2;
        ReportVariable fvc = RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QString(), QString(),
                                                          QString(), QString(), false)
                                 .Variable(1);
        const qint32 id = RenderFixture::saveDefinition(QStringLiteral("Post PEF"), 0, {fvc, pef});
        const QString out = folder(QStringLiteral("left-out"));
        const RenderFixture::Result result = renderAll({QStringLiteral("--subjects"), QStringLiteral("QC-PF1")}, out);
        ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->DeleteReport(id, QString());

        QCOMPARE(result.err, Line(QStringLiteral("QC-PF1, PF \"Post PEF\": ") + GetResourceText(4111)));
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(Files(out).size(), 6);
    }

    void aDefinitionTheProgramRefusesIsSaidOnce()
    {
        const ReportInfo spirometry = RenderFixture::storedRequest(0, QStringLiteral("Spirometry"), QString(),
                                                                   QString(), QString(), QString(), false);
        ReportVariable fvc = spirometry.Variable(1);
        const qint32 id =
            RenderFixture::saveDefinition(QStringLiteral("Ten Charts"), 0, QList<ReportVariable>(10, fvc));
        const QString out = folder(QStringLiteral("refused"));
        const RenderFixture::Result result =
            renderAll({QStringLiteral("--subjects"), QStringLiteral("QC001,QC002")}, out);
        ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->DeleteReport(id, QString());

        QCOMPARE(result.err,
                 Line(QStringLiteral("PF \"Ten Charts\": ") + GetResourceText(4078) + QStringLiteral(": 9")));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(Files(out).size(), 16);
    }

    void anOutFolderThatCannotBeWrittenIsSaidOnce()
    {
        // A file where the folder should be.
        const QString file = m_fixture->path(QStringLiteral("a-file"));
        QFile put(file);
        QVERIFY(put.open(QIODevice::WriteOnly));
        put.close();
        const QString under = QDir(file).filePath(QStringLiteral("night"));
        const RenderFixture::Result blocked = renderAll({QStringLiteral("--subjects"), QStringLiteral("QC001")}, under);
        QCOMPARE(blocked.err, Line(QStringLiteral("cannot make the folder %1").arg(under)));
        QCOMPARE(blocked.exitCode, 1);
        QCOMPARE(blocked.out, QString());

        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no read-only file system to test on: ") + disk.whyNot()));
        const QString night = disk.filePath(QStringLiteral("night"));
        QVERIFY(QDir().mkpath(night));
        QVERIFY(disk.remountReadOnly());
        const RenderFixture::Result readOnly =
            renderAll({QStringLiteral("--subjects"), QStringLiteral("QC001")}, night);
        QCOMPARE(readOnly.err, Line(QStringLiteral("cannot write in the folder %1").arg(night)));
        QCOMPARE(readOnly.exitCode, 1);
        QCOMPARE(readOnly.out, QString());
    }

    void aReportThatCannotBeWrittenDoesNotStopTheRun()
    {
        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no full file system to test on: ") + disk.whyNot()));
        const QString night = disk.filePath(QStringLiteral("night"));
        QVERIFY(QDir().mkpath(night));
        QVERIFY(disk.fill());

        const RenderFixture::Result result = renderAll({QStringLiteral("--subjects"), QStringLiteral("QC-PF1")}, night);
        // Every report was tried, and each says why it is not there.
        QStringList lines;
        for (const QString& name : FileNames(QStringLiteral("QC-PF1 Pia Pfonly"), kPfDefinitions))
        {
            const QString definition = name.section(QStringLiteral(", "), 2).chopped(4);
            lines.append(QStringLiteral("QC-PF1, PF \"%1\": cannot write %2: No space left on device")
                             .arg(definition, QDir(night).filePath(name)));
        }
        QCOMPARE(result.err, Line(lines.join(QStringLiteral("\ncalvex-qc-render: "))));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(Files(night), QStringList());
        QVERIFY(result.out.contains(QStringLiteral("QC-PF1 has no GX visits")));
    }

    void badCommandLines_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const QStringList rest{QStringLiteral("--to"), QStringLiteral("06/30/2024"), QStringLiteral("--out-dir"),
                               QStringLiteral("%DIR%/bad")};
        const QString all = QStringLiteral("--all");
        const QString subjects = QStringLiteral("--subjects");
        QTest::newRow("no subjects") << (QStringList{all} + rest)
                                     << QStringLiteral("--all needs --subjects ID,ID,... or --subjects-file FILE");
        QTest::newRow("both lists") << (QStringList{all, subjects, QStringLiteral("QC001"),
                                                    QStringLiteral("--subjects-file"), QStringLiteral("%DIR%/s.txt")} +
                                        rest)
                                    << QStringLiteral("give either --subjects or --subjects-file, not both");
        QTest::newRow("no out-dir") << QStringList{all, subjects, QStringLiteral("QC001"), QStringLiteral("--to"),
                                                   QStringLiteral("06/30/2024")}
                                    << QStringLiteral("--all needs --out-dir DIR, or --check");
        QTest::newRow("empty out-dir") << QStringList{all,
                                                      subjects,
                                                      QStringLiteral("QC001"),
                                                      QStringLiteral("--to"),
                                                      QStringLiteral("06/30/2024"),
                                                      QStringLiteral("--out-dir"),
                                                      QString()}
                                       << QStringLiteral("--out-dir needs a path");
        QTest::newRow("no to") << QStringList{all, subjects, QStringLiteral("QC001"), QStringLiteral("--out-dir"),
                                              QStringLiteral("%DIR%/bad")}
                               << QStringLiteral("--to is missing");
        QTest::newRow("a report of its own") << (QStringList{all, subjects, QStringLiteral("QC001"),
                                                             QStringLiteral("--report"), QStringLiteral("Spirometry")} +
                                                 rest)
                                             << QStringLiteral("--report cannot be used with --all");
        QTest::newRow("tab") << (QStringList{all, subjects, QStringLiteral("QC001"), QStringLiteral("--tab"),
                                             QStringLiteral("PF")} +
                                 rest)
                             << QStringLiteral("--tab cannot be used with --all");
        QTest::newRow("one csv for many reports")
            << (QStringList{all, subjects, QStringLiteral("QC001"), QStringLiteral("--csv"),
                            QStringLiteral("%DIR%/x.csv")} +
                rest)
            << QStringLiteral("--csv cannot be used with --all");
        QTest::newRow("out") << (QStringList{all, subjects, QStringLiteral("QC001"), QStringLiteral("--out"),
                                             QStringLiteral("%DIR%/x.pdf")} +
                                 rest)
                             << QStringLiteral("--out cannot be used with --all");
        QTest::newRow("empty ID") << (QStringList{all, subjects, QStringLiteral("QC001,,QC002")} + rest)
                                  << QStringLiteral("--subjects needs QC subject IDs separated by commas, not "
                                                    "\"QC001,,QC002\"");
        QTest::newRow("no such subjects file")
            << (QStringList{all, QStringLiteral("--subjects-file"), QStringLiteral("%DIR%/missing.txt")} + rest)
            << QStringLiteral("cannot read the subjects file %DIR%/missing.txt: No such file or directory");
        QTest::newRow("a subjects file of comments")
            << (QStringList{all, QStringLiteral("--subjects-file"), QStringLiteral("%DIR%/comments.txt")} + rest)
            << QStringLiteral("the subjects file %DIR%/comments.txt names no QC subject");
    }

    void badCommandLines()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        QFile comments(m_fixture->path(QStringLiteral("comments.txt")));
        QVERIFY(comments.open(QIODevice::WriteOnly));
        comments.write("# nobody tonight\n\n   \n");
        comments.close();

        const QString dir = m_fixture->path(QString());
        arguments.replaceInStrings(QStringLiteral("%DIR%"), dir);
        message.replace(QStringLiteral("%DIR%"), dir);
        const RenderFixture::Result result = m_fixture->render(arguments);
        QVERIFY2(result.err.startsWith(Line(message) + QStringLiteral("Usage: calvex-qc-render ")),
                 qPrintable(result.err));
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.out, QString());
        QVERIFY(!QFileInfo::exists(m_fixture->path(QStringLiteral("bad"))));
    }
};

CALVEX_TEST(TestRenderAll)
#include "TestRenderAll.moc"
