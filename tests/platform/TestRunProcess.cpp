#include "common/TestMain.h"

#include "platform/Process.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <ctime>

class TestRunProcess : public QObject
{
    Q_OBJECT

private slots:
    void waitingServesEventsUntilTheProgramEnds()
    {
        int ticks = 0;
        QTimer timer;
        timer.setInterval(100);
        connect(&timer, &QTimer::timeout, this, [&ticks] { ++ticks; });
        timer.start();

        QElapsedTimer elapsed;
        elapsed.start();
        const std::clock_t cpuBefore = std::clock();
        QVERIFY(RunProcess(QStringLiteral("sleep 1"), true));
        const double cpuSeconds = double(std::clock() - cpuBefore) / CLOCKS_PER_SEC;

        QVERIFY2(elapsed.elapsed() >= 900, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY2(ticks >= 7, qPrintable(QStringLiteral("%1 timer ticks while waiting").arg(ticks)));
        // Waiting sleeps in the event loop; a polling loop would burn about a second.
        QVERIFY2(cpuSeconds < 0.3, qPrintable(QStringLiteral("%1 s of processor time").arg(cpuSeconds)));
    }

    void waitingReturnsAfterTheProgramsWork()
    {
        QTemporaryDir dir;
        const QString out = dir.filePath(QStringLiteral("out.txt"));
        QVERIFY(RunProcess(QStringLiteral("sh -c \"sleep 0.2; echo hello > '%1'\"").arg(out), true));
        QFile file(out);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("hello\n"));
    }

    void aProgramThatFailsWasStillCreated() { QVERIFY(RunProcess(QStringLiteral("sh -c \"exit 3\""), true)); }

    void missingProgramIsNotCreated()
    {
        QVERIFY(!RunProcess(QStringLiteral("/nonexistent/NorrixDBQuery.exe auto"), true));
        QVERIFY(!RunProcess(QStringLiteral("/nonexistent/NorrixDBQuery.exe auto"), false));
        QVERIFY(!RunProcess(QStringLiteral("no-such-program-anywhere"), true));
        QVERIFY(!RunProcess(QString(), true));
    }

    void withoutWaitReturnsAtOnce()
    {
        QTemporaryDir dir;
        const QString out = dir.filePath(QStringLiteral("out.txt"));
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(RunProcess(QStringLiteral("sh -c \"sleep 1; echo done > '%1'\"").arg(out), false));
        QVERIFY2(elapsed.elapsed() < 500, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY(!QFile::exists(out));
        // The detached program runs on by itself.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(out), 10000);
    }

    void doEventsRunsPendingEvents()
    {
        bool ran = false;
        QMetaObject::invokeMethod(
            this, [&ran] { ran = true; }, Qt::QueuedConnection);
        QVERIFY(!ran);
        DoEvents();
        QVERIFY(ran);
    }
};

CALVEX_TEST(TestRunProcess)
#include "TestRunProcess.moc"
