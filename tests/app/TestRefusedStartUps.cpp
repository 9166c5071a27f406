#include "SuiteWindow.h"

#include "ScopedUserName.h"
#include "SuiteTestDatabase.h"
#include "app/ProgramMain.h"
#include "common/ExclusiveSqliteLock.h"
#include "common/TestMain.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDataLoader.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <optional>

namespace
{
const QString kText4125 =
    QStringLiteral("The diagnostics suite does not allow the program to start now. The program will close.");
const QString kText4116 = QStringLiteral("You do not have the right to run QC reports. The program will close.");
const QString kTitle4052 = QStringLiteral("Calvex QC Reports");

// Notes when the splash window first shows, on the start-up's clock.
class SplashWatch final : public QObject
{
public:
    explicit SplashWatch(const QElapsedTimer& clock)
        : m_clock(clock)
    {
        qApp->installEventFilter(this);
    }
    ~SplashWatch() override { qApp->removeEventFilter(this); }

    qint64 shownAt() const { return m_shownAt; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (m_shownAt < 0 && event->type() == QEvent::Show && watched->objectName() == QLatin1String("frmSplash"))
            m_shownAt = m_clock.elapsed();
        return false;
    }

private:
    const QElapsedTimer& m_clock;
    qint64 m_shownAt = -1;
};
} // namespace

// The program's start-up on the suite's own components and a database it
// cannot use, run as main runs it (RunMainWindow): every refusal shows its box
// with the text exactly as before and the reason as the box's details, once,
// and the program ends with a non-zero status. On SQLite: a missing, an
// empty, a damaged and a locked file; a disabled user and a user without
// right 500. On a PostgreSQL server that asks for a password (the test
// app.PostgreSQLPasswordFile) a wrong password too.
class TestRefusedStartUps : public QObject
{
    Q_OBJECT

    struct Outcome
    {
        int exitStatus = -1;
        QList<RecordingMessageService::Box> boxes;
        qint64 splashShownAt = -1; // ms after the start
        qint64 firstBoxAt = -1;
        bool splashUnderTheBox = false;
        qint64 endedAt = -1;
    };

    // The cases of SQLite files and of the system's user name run on SQLite;
    // the test server's run is for the server's own refusal.
    static bool skipOnTheServer() { return SuiteTestDatabase::onPostgres(); }

    // A key for a laboratory's own SQLite file at path (no demo database).
    static void useSiteFile(SuiteTestDatabase& test, const QString& path)
    {
        test.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        test.setValue(QStringLiteral("Database Name"), path);
        siteValues(test);
    }

    static void siteValues(SuiteTestDatabase& test)
    {
        test.setValue(QStringLiteral("Demo Database"), 0);
        test.setValue(QStringLiteral("Executable Path"), QCoreApplication::applicationDirPath());
        test.setValue(QStringLiteral("SI Unit"), QStringLiteral("0"));
        test.setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        test.setValue(QStringLiteral("Default Auto Logout Minutes"), 0);
    }

    // Starts the program as main does. A start that goes through is ended at
    // once with Cancel, so that the test sees its status instead of waiting.
    static Outcome start()
    {
        SuiteDatabase::closeAllConnections(); // as another program would find the database
        RegisterSuiteComponents();
        ResetResourceServer();
        Outcome outcome;
        RecordingMessageService boxes;
        ProgramState state;
        QElapsedTimer clock;
        clock.start();
        const SplashWatch splash(clock);
        boxes.onShow([&](const RecordingMessageService::Box&) {
            if (outcome.firstBoxAt < 0)
                outcome.firstBoxAt = clock.elapsed();
            const QList<QWidget*> windows = QApplication::topLevelWidgets();
            for (QWidget* window : windows)
            {
                if (window->objectName() == QLatin1String("frmSplash") && window->isVisible())
                    outcome.splashUnderTheBox = true;
            }
        });
        outcome.exitStatus = RunMainWindow(
            state, [](frmMain& window) { QTimer::singleShot(0, &window, [&window] { window.cmdCancel_Click(); }); });
        outcome.endedAt = clock.elapsed();
        outcome.splashShownAt = splash.shownAt();
        outcome.boxes = boxes.boxes();
        ForgetSuiteComponents();
        return outcome;
    }

    // The one box of a refused start: its text, style, title and a detail
    // that holds reason; the status is not 0.
    static void verifyRefused(const Outcome& outcome, const QString& text, int style, const QString& title,
                              const QString& reason)
    {
        QCOMPARE(outcome.boxes.size(), 1);
        const RecordingMessageService::Box& box = outcome.boxes.first();
        QCOMPARE(box.text, text);
        QCOMPARE(box.style, style);
        QCOMPARE(box.title, title);
        QVERIFY2(box.detail.contains(reason), qPrintable(box.detail));
        QVERIFY(outcome.exitStatus != 0);
        QCOMPARE(outcome.exitStatus, 1);
        // The splash was there before the engine was asked, and under the box.
        QVERIFY(outcome.splashShownAt >= 0);
        QVERIFY(outcome.splashShownAt <= outcome.firstBoxAt);
        QVERIFY(outcome.splashUnderTheBox);
    }

private slots:
    void missingDatabase()
    {
        if (skipOnTheServer())
            QSKIP("Runs on SQLite.");
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("site/qc.sqlite"));
        useSiteFile(test, path);
        const Outcome outcome = start();
        verifyRefused(outcome, kText4125, 48, kTitle4052,
                      QStringLiteral("The QC database cannot be opened: the file \"%1\" does not exist")
                          .arg(QFileInfo(path).absoluteFilePath()));
        QVERIFY(!QFileInfo::exists(path));
    }

    void emptyDatabase()
    {
        if (skipOnTheServer())
            QSKIP("Runs on SQLite.");
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("empty.sqlite"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        useSiteFile(test, path);
        const Outcome outcome = start();
        verifyRefused(outcome, kText4125, 48, kTitle4052,
                      QStringLiteral("The QC database holds none of the suite's tables"));
        QCOMPARE(QFileInfo(path).size(), 0); // nothing was written into it
    }

    void damagedDatabase()
    {
        if (skipOnTheServer())
            QSKIP("Runs on SQLite.");
        SuiteTestDatabase test;
        const QString path = test.tempPath(QStringLiteral("damaged.sqlite"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        // Reproducible bytes that are no SQLite file: 16 KiB of a simple sequence.
        QByteArray garbage(16384, '\0');
        quint32 x = 2463534242u;
        for (char& byte : garbage)
        {
            x ^= x << 13;
            x ^= x >> 17;
            x ^= x << 5;
            byte = char(x & 0xff);
        }
        file.write(garbage);
        file.close();
        useSiteFile(test, path);
        const Outcome outcome = start();
        verifyRefused(outcome, kText4125, 48, kTitle4052, QStringLiteral("file is not a database"));
    }

    // Another process holds an exclusive transaction: every wait of the
    // start-up ends within the timeout, the splash is on the screen before
    // the first of them, and after the box the program ends without waiting
    // once more.
    void lockedDatabase()
    {
        if (skipOnTheServer())
            QSKIP("Runs on SQLite.");
        SuiteTestDatabase test;
        siteValues(test);
        test.createSchema();
        constexpr int kTimeoutSeconds = 2; // room for a slow start on a busy machine
        test.setValue(QStringLiteral("Database Timeout Seconds"), kTimeoutSeconds);
        SuiteDatabase::closeAllConnections();
        const ExclusiveSqliteLock lock(test.settings().databaseName);
        QVERIFY2(lock.held(), qPrintable(lock.whyNot()));

        const Outcome outcome = start();
        verifyRefused(outcome, kText4125, 48, kTitle4052,
                      QStringLiteral("The QC database did not answer within 2 seconds."));
        const qint64 timeoutMs = kTimeoutSeconds * 1000;
        QVERIFY2(outcome.splashShownAt < timeoutMs, qPrintable(QString::number(outcome.splashShownAt)));
        // The start-up waited for the lock, with the splash on the screen ...
        QVERIFY2(outcome.firstBoxAt >= timeoutMs, qPrintable(QString::number(outcome.firstBoxAt)));
        // ... each question at most once: the session, the user, the start check.
        QVERIFY2(outcome.firstBoxAt < 3 * timeoutMs + 3000, qPrintable(QString::number(outcome.firstBoxAt)));
        // The end asks the locked database nothing more.
        QVERIFY2(outcome.endedAt - outcome.firstBoxAt < timeoutMs,
                 qPrintable(QString::number(outcome.endedAt - outcome.firstBoxAt)));
    }

    void disabledUser()
    {
        if (skipOnTheServer())
            QSKIP("Runs on SQLite.");
        SuiteTestDatabase test;
        siteValues(test);
        test.createSchema();
        SuiteDataLoader(test.db()).addUser(QStringLiteral("formerstaff"), QStringLiteral("Former Staff Member"),
                                           {500, 501}, 30, true);
        const ScopedUserName user(test, "formerstaff");
        const Outcome outcome = start();
        verifyRefused(outcome, kText4125, 48, kTitle4052,
                      QStringLiteral("The user \"formerstaff\" is disabled in the QC database."));
    }

    void userWithoutTheRightToRunReports()
    {
        if (skipOnTheServer())
            QSKIP("Runs on SQLite.");
        SuiteTestDatabase test;
        siteValues(test);
        test.createSchema();
        SuiteDataLoader(test.db()).addUser(QStringLiteral("visitor"), QStringLiteral("Visitor"), {501}, 0, false);
        const ScopedUserName user(test, "visitor");
        const Outcome outcome = start();
        // 4116 has the default title, as it always had.
        verifyRefused(
            outcome, kText4116, 64, QString(),
            QStringLiteral("The user \"visitor\" does not have right 500 (run QC reports) in the QC database."));
    }

    void wrongPasswordOnTheServer()
    {
        if (qEnvironmentVariableIsEmpty("CALVEX_TEST_PGPASS") || !SuiteTestDatabase::onPostgres())
            QSKIP("Needs a PostgreSQL server that asks for a password: run-postgres.sh --password-file.");
        SuiteTestDatabase test;
        siteValues(test);
        test.createSchema();
        test.setValue(QStringLiteral("Database Password"), QStringLiteral("not-the-password"));
        const Outcome outcome = start();
        verifyRefused(outcome, kText4125, 48, kTitle4052,
                      QStringLiteral("password authentication failed for user \"%1\"").arg(test.settings().user));
    }

    // The same program on a database it can use starts and ends with 0.
    void aUsableDatabaseStartsAndEndsWithZero()
    {
        SuiteTestDatabase test;
        siteValues(test);
        test.fillDemo();
        // On a server the key file's own login signs in, with the password
        // the server asks for.
        std::optional<ScopedUserName> user;
        if (!SuiteTestDatabase::onPostgres())
            user.emplace(test, "labmanager");
        const Outcome outcome = start();
        QCOMPARE(outcome.boxes.size(), 0);
        QCOMPARE(outcome.exitStatus, 0);
        QVERIFY(outcome.splashShownAt >= 0);
    }
};

CALVEX_TEST(TestRefusedStartUps)
#include "TestRefusedStartUps.moc"
