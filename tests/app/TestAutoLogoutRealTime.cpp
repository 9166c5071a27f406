#include "AutoLogoutFixture.h"

#include "common/TestMain.h"

#include <QElapsedTimer>
#include <QScopeGuard>

// The auto-logout on its own timers, with a limit of one second: two idle
// ticks, sixteen countdown ticks, then the main window closes on the next
// tick. Bounded: a watchdog closes anything still open after 24 seconds.
class TestAutoLogoutRealTime : public QObject
{
    Q_OBJECT

private slots:
    void logsOutAfterOneIdleSecondAndTheCountdown()
    {
        AutoLogoutFixture f(1);
        f.window().Form_Load();
        lngLogoutSeconds = 1;
        intIdleSeconds = 0;
        f.window().show();

        QElapsedTimer clock;
        qint64 countdownShown = -1;
        qint64 countdownGone = -1;
        qint64 engineTold = -1;
        QStringList seconds;
        f.main.engine->calls.clear();
        f.main.engine->onCall = [&](const QString& call) {
            if (call.startsWith(QStringLiteral("CloseApplication")))
                engineTold = clock.elapsed();
        };
        const auto stopListening = qScopeGuard([&] { f.main.engine->onCall = nullptr; });
        // Watches the countdown on a timer of its own, as a user would see it.
        QTimer watch;
        watch.setInterval(20);
        QObject::connect(&watch, &QTimer::timeout, [&] {
            const auto* countdown = qobject_cast<frmAutoLogout*>(QApplication::activeModalWidget());
            if (countdown && countdownShown < 0)
                countdownShown = clock.elapsed();
            if (countdown && (seconds.isEmpty() || seconds.last() != countdown->txtSeconds->text()))
                seconds.append(countdown->txtSeconds->text());
            if (!countdown && countdownShown >= 0 && countdownGone < 0)
                countdownGone = clock.elapsed();
        });
        QTimer watchdog;
        watchdog.setSingleShot(true);
        QObject::connect(&watchdog, &QTimer::timeout, [] {
            QTest::qFail("the auto-logout did not finish in time", __FILE__, __LINE__);
            while (auto* open = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                open->done(0);
        });

        clock.start();
        watch.start();
        watchdog.start(24000);
        while (!f.window().IsUnloaded() && clock.elapsed() < 24500)
            QTest::qWait(20);
        const qint64 elapsed = clock.elapsed();

        QVERIFY(f.window().IsUnloaded());
        QVERIFY2(elapsed < 25000, qPrintable(QString::number(elapsed)));
        QCOMPARE(f.main.engine->calls,
                 QStringList({QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
        // The countdown comes once the idle count has passed one second: on the second tick.
        QVERIFY2(countdownShown >= 1500 && countdownShown < 3500, qPrintable(QString::number(countdownShown)));
        QCOMPARE(seconds,
                 QStringList({QStringLiteral("15"), QStringLiteral("14"), QStringLiteral("13"), QStringLiteral("12"),
                              QStringLiteral("11"), QStringLiteral("10"), QStringLiteral("9"), QStringLiteral("8"),
                              QStringLiteral("7"), QStringLiteral("6"), QStringLiteral("5"), QStringLiteral("4"),
                              QStringLiteral("3"), QStringLiteral("2"), QStringLiteral("1"), QStringLiteral("0")}));
        QCOMPARE(f.beeps.size(), 16);
        QCOMPARE(f.beeps.last(), QStringLiteral("-1"));
        // Sixteen seconds of countdown, then the window closes on the main window's next tick.
        QVERIFY2(countdownGone - countdownShown >= 15000, qPrintable(QString::number(countdownGone - countdownShown)));
        QVERIFY2(engineTold > countdownGone && engineTold - countdownGone <= 1500,
                 qPrintable(QStringLiteral("%1 %2").arg(engineTold).arg(countdownGone)));
    }
};

CALVEX_TEST(TestAutoLogoutRealTime)
#include "TestAutoLogoutRealTime.moc"
