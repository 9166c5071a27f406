#include "common/TestMain.h"

#include "NorrixDBQueryRun.h"
#include "SuiteTestDatabase.h"
#include "platform/RuntimeError.h"

#include <QFile>
#include <QTest>

// A laboratory's server asks for a password that the key file does not hold:
// libpq finds it in the user's ~/.pgpass. Runs under
// "run-postgres.sh --password-file" (the test suite.PostgreSQLPasswordFile).
class TestPasswordFile : public QObject
{
    Q_OBJECT

private:
    static QString passwordFile() { return qEnvironmentVariable("CALVEX_TEST_PGPASS"); }

private slots:
    // Skipped test by test: a skip in initTestCase would end every class
    // that runs after this one in the same process (the PostgreSQL run).
    void init()
    {
        if (passwordFile().isEmpty() || !SuiteTestDatabase::onPostgres())
            QSKIP("Needs a PostgreSQL server that asks for a password: run-postgres.sh --password-file.");
    }

    void anEmptyPasswordConnectsThroughThePasswordFile()
    {
        SuiteTestDatabase test;
        QVERIFY(test.settings().password.isEmpty());
        QCOMPARE(test.db().scalar(QStringLiteral("SELECT 6 * 7")).toInt(), 42);

        // The database tool, a program of its own, finds it the same way.
        const NorrixDBQueryRun tool = NorrixDBQueryRun::start({QStringLiteral("auto")});
        QVERIFY2(tool.exitCode == 0, qPrintable(tool.err));
    }

    void withoutThePasswordFileTheServerRefuses()
    {
        const QString hidden = passwordFile() + QStringLiteral(".away");
        QVERIFY(QFile::rename(passwordFile(), hidden));
        SuiteDatabase::closeAllConnections();
        QString message;
        QString detail;
        try
        {
            SuiteDatabase db(SuiteSettings::fromRegistry());
            db.open();
        }
        catch (const RuntimeError& error)
        {
            message = error.description();
            detail = error.detail();
        }
        QVERIFY(QFile::rename(hidden, passwordFile()));
        // The program's words, and the server's reason as the detail.
        QVERIFY2(message.startsWith(QLatin1String("The QC database cannot be opened: the database server cannot be "
                                                  "reached, or it did not accept the sign-in")),
                 qPrintable(message));
        QVERIFY2(detail.contains(QStringLiteral("password"), Qt::CaseInsensitive), qPrintable(detail));
    }
};

CALVEX_TEST(TestPasswordFile)
#include "TestPasswordFile.moc"
