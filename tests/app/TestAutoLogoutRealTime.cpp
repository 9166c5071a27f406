#include "AutoLogoutFixture.h"

#include "common/TestMain.h"

#include <QElapsedTimer>

// The auto-logout on its own timers, with a limit of one second. The ticks
// of the whole logout are driven one by one in TestAutoLogout; this checks
// that the timers themselves drive them: the main window's timer shows the
// countdown, the countdown's timer counts it down, and Stop Auto-Logout
// ends it. About two seconds; a watchdog closes anything still open after five.
class TestAutoLogoutRealTime : public QObject
{
    Q_OBJECT

private slots:
    void theTimersShowAndCountTheCountdown()
    {
        AutoLogoutFixture f(1);
        f.window().Form_Load();
        f.state().lngLogoutSeconds = 1;
        // At the limit: the main window's next tick shows the countdown.
        f.state().intIdleSeconds = 1;
        f.window().show();

        QElapsedTimer clock;
        qint64 countdownShown = -1;
        qint64 countedDown = -1;
        QStringList seconds;
        // Watches the countdown on a timer of its own, as a user would see it,
        // and stops it once it has counted one second down.
        QTimer watch;
        watch.setInterval(20);
        QObject::connect(&watch, &QTimer::timeout, [&] {
            auto* countdown = qobject_cast<frmAutoLogout*>(QApplication::activeModalWidget());
            if (!countdown)
                return;
            if (countdownShown < 0)
                countdownShown = clock.elapsed();
            if (seconds.isEmpty() || seconds.last() != countdown->txtSeconds->text())
                seconds.append(countdown->txtSeconds->text());
            if (countdown->txtSeconds->text() == QStringLiteral("14"))
            {
                countedDown = clock.elapsed();
                watch.stop();
                QTest::mouseClick(countdown->cmdStopLogout, Qt::LeftButton);
            }
        });
        QTimer watchdog;
        watchdog.setSingleShot(true);
        QObject::connect(&watchdog, &QTimer::timeout, [] {
            QTest::qFail("the countdown did not come and count in time", __FILE__, __LINE__);
            while (auto* open = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                open->done(0);
        });

        clock.start();
        watch.start();
        watchdog.start(5000);
        while (countedDown < 0 && clock.elapsed() < 5500)
            QTest::qWait(20);
        watchdog.stop();

        QVERIFY(countedDown >= 0);
        QCOMPARE(seconds, QStringList({QStringLiteral("15"), QStringLiteral("14")}));
        QCOMPARE(f.beeps, QStringList{QStringLiteral("14")});
        QVERIFY(!f.state().blnLogoutPending);
        QCOMPARE(f.state().intLogoutElapsed, qint16(0));
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QVERIFY(!f.window().IsUnloaded());
        // One-second timers: the main window's first tick, then the countdown's.
        QVERIFY2(countdownShown < 1500, qPrintable(QString::number(countdownShown)));
        QVERIFY2(countedDown - countdownShown >= 900 && countedDown - countdownShown < 2000,
                 qPrintable(QString::number(countedDown - countdownShown)));
    }
};

CALVEX_TEST(TestAutoLogoutRealTime)
#include "TestAutoLogoutRealTime.moc"
