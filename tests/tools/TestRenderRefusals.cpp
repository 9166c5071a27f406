#include "RenderFixture.h"
#include "common/TestMain.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QSqlQuery>
#include <QTest>

#include <memory>

namespace
{
// Spirometry of QC001 in the first half of 2024.
QStringList Request(const QString& pdfFile)
{
    return {QStringLiteral("--tab"),      QStringLiteral("PF"),         QStringLiteral("--report"),
            QStringLiteral("Spirometry"), QStringLiteral("--subject"),  QStringLiteral("QC001"),
            QStringLiteral("--from"),     QStringLiteral("01/01/2024"), QStringLiteral("--to"),
            QStringLiteral("06/30/2024"), QStringLiteral("--out"),      pdfFile};
}

QString Line(const QString& message)
{
    return QStringLiteral("calvex-qc-render: ") + message + QLatin1Char('\n');
}
} // namespace

// The renderer asks the suite's engine as the program's start does: the
// session, right 500 and the start check. A user the program would refuse
// gets no report: one line naming the reason and exit status 1. The session
// is in the audit log as the program's is.
class TestRenderRefusals : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    QString out() const { return m_fixture->path(QStringLiteral("report.pdf")); }

    // The renderer run as the operating-system user name.
    RenderFixture::Result renderAs(const QString& user) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("USER"), user);
        environment.remove(QStringLiteral("USERNAME"));
        return m_fixture->render(Request(out()), environment);
    }

    // The audit log's entries of a user: "<application> <event kind>".
    static QStringList auditOf(const QString& user)
    {
        SuiteDatabase db(SuiteSettings::fromRegistry());
        QSqlQuery query = db.exec(QStringLiteral("SELECT application, event_kind FROM audit_log WHERE user_name = ? "
                                                 "ORDER BY entry_id"),
                                  {user});
        QStringList entries;
        while (query.next())
            entries.append(query.value(0).toString() + QLatin1Char(' ') + query.value(1).toString());
        SuiteDatabase::closeAllConnections();
        return entries;
    }

private slots:
    void initTestCase()
    {
        m_fixture = std::make_unique<RenderFixture>();
        // A user who may edit definitions but not run reports.
        SuiteDatabase db(SuiteSettings::fromRegistry());
        SuiteDataLoader(db).addUser(QStringLiteral("visitor"), QStringLiteral("Visitor"),
                                    {CalcEngine::RightEditReports}, 0, false);
        SuiteDatabase::closeAllConnections();
    }

    void cleanupTestCase() { m_fixture.reset(); }

    void init() { QFile::remove(out()); }

    void aDisabledUserIsRefused()
    {
        const RenderFixture::Result result = renderAs(QStringLiteral("formerstaff"));
        QCOMPARE(result.err, Line(QStringLiteral("The user \"formerstaff\" is disabled in the QC database.")));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.out, QString());
        QVERIFY(!QFileInfo::exists(out()));
        // The session was opened and closed, as the program's refused start does.
        QCOMPARE(auditOf(QStringLiteral("formerstaff")),
                 QStringList({QStringLiteral("6 ") + NorrixCalcEngine::AuditSessionOpened,
                              QStringLiteral("6 ") + NorrixCalcEngine::AuditSessionClosed}));
    }

    void aUserWithoutRight500IsRefused()
    {
        const RenderFixture::Result result = renderAs(QStringLiteral("visitor"));
        QCOMPARE(result.err, Line(QStringLiteral("The user \"visitor\" does not have right 500 (run QC reports) in "
                                                 "the QC database.")));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.out, QString());
        QVERIFY(!QFileInfo::exists(out()));
    }

    void anUnlistedUserHasTheSitesDefaultRights()
    {
        m_fixture->registry().setValue(QStringLiteral("Default Rights"), QStringLiteral("501"));
        const RenderFixture::Result refused = renderAs(QStringLiteral("temp.worker"));
        m_fixture->registry().setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        QCOMPARE(refused.err, Line(QStringLiteral("The user \"temp.worker\" is not listed in the QC database, and "
                                                  "the site's \"Default Rights\" (\"501\") do not include right 500 "
                                                  "(run QC reports).")));
        QCOMPARE(refused.exitCode, 1);
        QVERIFY(!QFileInfo::exists(out()));

        const RenderFixture::Result written = renderAs(QStringLiteral("temp.worker"));
        QCOMPARE(written.err, QString());
        QCOMPARE(written.exitCode, 0);
        QVERIFY(QFileInfo(out()).size() > 0);
    }

    void aUserWithRight500GetsTheReportAndTheSessionIsLogged()
    {
        const RenderFixture::Result result = renderAs(QStringLiteral("labtech"));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(QFileInfo(out()).size() > 0);
        QCOMPARE(auditOf(QStringLiteral("labtech")),
                 QStringList({QStringLiteral("6 ") + NorrixCalcEngine::AuditSessionOpened,
                              QStringLiteral("6 ") + NorrixCalcEngine::AuditSessionClosed}));
    }
};

CALVEX_TEST(TestRenderRefusals)
#include "TestRenderRefusals.moc"
