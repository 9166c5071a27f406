#include "RenderFixture.h"
#include "common/FlaggedRecording.h"
#include "common/TestMain.h"
#include "components/QCReportStore.h"
#include "output/RecordingTarget.h"
#include "output/modPrintReport.h"
#include "platform/Clock.h"
#include "platform/ComponentFactory.h"
#include "platform/RecordingMessageService.h"

#include <QTest>

#include <memory>

using Kind = RecordedOp::Kind;

namespace
{
struct Definition
{
    qint16 tab;
    const char* name;
};

// Every saved definition of the demo database.
const QList<Definition> kDefinitions{{0, "Spirometry"},          {0, "Lung Volumes"}, {0, "DLCO"},
                                     {0, "Plethysmography"},     {0, "Volume QC"},    {1, "Exercise Peak"},
                                     {1, "Anaerobic Threshold"}, {1, "Resting"}};

struct Subject
{
    const char* id;
    const char* name;
};

const QList<Subject> kSubjects{{"QC001", "Adam Q Control"}, {"QC002", "Beth Control"}, {"QC003", "Carl R Control"}};

QCRuleSet AllRules()
{
    QCRuleSet rules;
    for (const QCRule rule : QCRuleSet::allRules())
        rules.add(rule);
    return rules;
}
} // namespace

// Every demo report printed on the recording target without QC rules and
// with all of them: the recordings are the same operation for operation but
// for the markers of the visits that broke a rule, each a disc in place of
// its circled cross, and the violation pages after the table.
class TestDemoReportsWithRules : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

private slots:
    void initTestCase()
    {
        m_fixture = std::make_unique<RenderFixture>();
        Clock::pin(QDateTime(QDate(2025, 1, 2), QTime(9, 0)));
    }

    void cleanupTestCase()
    {
        Clock::pin(QDateTime());
        m_fixture.reset();
    }

    void onlyTheFlaggedMarkersAndTheViolationPagesDiffer_data()
    {
        QTest::addColumn<qint16>("tab");
        QTest::addColumn<QString>("definition");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("si");
        for (const Definition& definition : kDefinitions)
        {
            for (const Subject& subject : kSubjects)
            {
                for (const bool si : {false, true})
                    QTest::addRow("%s %s%s", definition.name, subject.id, si ? " SI" : "")
                        << definition.tab << QString::fromUtf8(definition.name) << QString::fromUtf8(subject.id)
                        << QString::fromUtf8(subject.name) << si;
            }
        }
    }

    void onlyTheFlaggedMarkersAndTheViolationPagesDiffer()
    {
        QFETCH(qint16, tab);
        QFETCH(QString, definition);
        QFETCH(QString, subject);
        QFETCH(QString, name);
        QFETCH(bool, si);
        RecordingMessageService boxes;
        const ReportInfo info = RenderFixture::storedRequest(
            tab, definition, subject, name, QStringLiteral("01/01/2024"), QStringLiteral("12/31/2024"), si);

        RecordingTarget without;
        QVERIFY(PrintReport(without, info, si));
        QCOMPARE(without.countOf(Kind::Disc), 0);
        QVERIFY(!without.texts().contains(QStringLiteral("QC Rule Violations")));

        PreparedReport report;
        QVERIFY(PrepareReport(info, si, report, AllRules()));
        RecordingTarget with;
        PrintPreparedReport(with, report);

        const FlaggedRecording compared = FlaggedRecording::compare(without.ops(), with.ops());
        QVERIFY2(compared.difference.isEmpty(), qPrintable(compared.difference));
        // One disc for every reading that broke a rule, and nothing else drawn differently.
        QCOMPARE(compared.discs, int(report.Violations.Rows.size()));
        QCOMPARE(with.countOf(Kind::Disc), compared.discs);

        // The violation pages list every one of them, numbered on.
        const QStringList appended = FlaggedRecording::texts(compared.appended);
        QCOMPARE(appended.count(QStringLiteral("QC Rule Violations")), int(report.Violations.Pages.size()));
        const qint32 pagesBefore = ReportGraphPageCount(report) + qint32(report.TablePages.size());
        for (int p = 1; p <= report.Violations.Pages.size(); ++p)
            QVERIFY(appended.contains(QStringLiteral("Page %1").arg(pagesBefore + p)));
        if (report.Violations.Rows.isEmpty())
            QVERIFY(appended.contains(QStringLiteral("No QC rule violations in this period.")));
        for (const ReportViolation& violation : report.Violations.Rows)
            QVERIFY(appended.contains(violation.Rules.text()));
        QCOMPARE(boxes.count(), 0);
    }

    void theDemoReportsDoBreakRules()
    {
        // Not a check that cannot fail: the demo year has violations to flag.
        int flagged = 0;
        for (const Definition& definition : kDefinitions)
        {
            const ReportInfo info = RenderFixture::storedRequest(
                definition.tab, QString::fromUtf8(definition.name), QStringLiteral("QC002"),
                QStringLiteral("Beth Control"), QStringLiteral("01/01/2024"), QStringLiteral("12/31/2024"), false);
            PreparedReport report;
            QVERIFY(PrepareReport(info, false, report, AllRules()));
            flagged += int(report.Violations.Rows.size());
        }
        QVERIFY2(flagged > 20, qPrintable(QString::number(flagged)));
    }
};

CALVEX_TEST(TestDemoReportsWithRules)
#include "TestDemoReportsWithRules.moc"
