#include "AutoLogoutFixture.h"

#include "common/TestMain.h"

#include <QScopeGuard>
#include <QTest>

namespace
{
const QStringList countdownTexts = {
    QStringLiteral("14"), QStringLiteral("13"), QStringLiteral("12"), QStringLiteral("11"),
    QStringLiteral("10"), QStringLiteral("9"),  QStringLiteral("8"),  QStringLiteral("7"),
    QStringLiteral("6"),  QStringLiteral("5"),  QStringLiteral("4"),  QStringLiteral("3"),
    QStringLiteral("2"),  QStringLiteral("1"),  QStringLiteral("0"),  QStringLiteral("-1")};

// Lets the countdown run out.
void expire(frmAutoLogout& countdown)
{
    AutoLogoutFixture::stopTimerTicks(countdown, 16);
}
} // namespace

class TestAutoLogout : public QObject
{
    Q_OBJECT

private slots:
    void countdownShowsOnTheTickAfterTheLimit()
    {
        AutoLogoutFixture f(1);
        f.start();
        QCOMPARE(f.state().lngLogoutSeconds, 60);
        QVERIFY(!f.state().blnLogoutPending);
        QVERIFY(f.quietTicks(60));
        QCOMPARE(f.state().intIdleSeconds, qint16(60));

        bool checked = false;
        const bool shown = f.tick([&](frmAutoLogout& countdown) {
            QCOMPARE(f.state().intIdleSeconds, qint16(61));
            QVERIFY(f.state().blnLogoutPending);
            QVERIFY(countdown.isModal());
            QCOMPARE(QApplication::activeModalWidget(), &countdown);
            QCOMPARE(countdown.windowTitle(), QStringLiteral("T4119"));
            QCOMPARE(countdown.cmdStopLogout->text(), QStringLiteral("T4120"));
            QCOMPARE(countdown.txtAutoLogout->text(), QStringLiteral("T4121"));
            QCOMPARE(countdown.txtSeconds->text(), QStringLiteral("15"));
            checked = true;
            countdown.cmdStopLogout_Click();
        });
        QVERIFY(shown);
        QVERIFY(checked);
        QVERIFY(!f.window().IsUnloaded());
    }

    void stopLogoutButtonCancelsAndTheClickRestartsTheCount()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.main.engine->calls.clear();
        QVERIFY(f.quietTicks(60));
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            AutoLogoutFixture::stopTimerTicks(countdown, 4);
            QCOMPARE(f.state().intLogoutElapsed, qint16(4));
            QTest::mouseClick(countdown.cmdStopLogout, Qt::LeftButton);
            QVERIFY(!countdown.isVisible());
        }));
        QVERIFY(!f.state().blnLogoutPending);
        QCOMPARE(f.state().intLogoutElapsed, qint16(0));
        // The click itself reset the idle count; counting goes on from there.
        QCOMPARE(f.state().intIdleSeconds, qint16(0));
        QVERIFY(f.quietTicks(1));
        QCOMPARE(f.state().intIdleSeconds, qint16(1));
        QVERIFY(!f.window().IsUnloaded());
        QVERIFY(f.main.engine->calls.isEmpty());
    }

    void stopLogoutByKeyboard()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.state().intIdleSeconds = 60;
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            AutoLogoutFixture::stopTimerTicks(countdown, 2);
            QTest::keyClick(countdown.cmdStopLogout, Qt::Key_Space);
        }));
        QVERIFY(!f.state().blnLogoutPending);
        QCOMPARE(f.state().intLogoutElapsed, qint16(0));
        QCOMPARE(f.state().intIdleSeconds, qint16(0));
    }

    void countdownBeepsOnEveryTickFrom14ToMinus1()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.state().intIdleSeconds = 60;
        QStringList shownAfterTick;
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            for (int i = 1; i <= 16; ++i)
            {
                countdown.StopTimer_Timer();
                shownAfterTick.append(countdown.txtSeconds->text());
                QCOMPARE(f.state().intLogoutElapsed, qint16(i));
                QCOMPARE(f.beeps.size(), i);
                // Open through the 15th tick (showing 0), gone after the 16th.
                QCOMPARE(countdown.isVisible(), i < 16);
            }
        }));
        QCOMPARE(shownAfterTick, countdownTexts);
        // Each beep comes after the new number is shown.
        QCOMPARE(f.beeps, countdownTexts);
        QVERIFY(f.state().blnLogoutPending);
        QCOMPARE(f.state().intLogoutElapsed, qint16(16));
    }

    void mainWindowClosesOneTickAfterTheCountdownAndTellsTheEngine()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.window().show();
        f.state().strCurrentPatientID = QStringLiteral("QC-7");
        SetCurrentPatient(f.state());
        f.main.engine->calls.clear();
        f.state().intIdleSeconds = 60;

        QVERIFY(f.tick(expire));
        // The tick that showed the countdown ends when the countdown has gone, and closes nothing.
        QVERIFY(!f.window().IsUnloaded());
        QVERIFY(f.window().isVisible());
        QVERIFY(f.main.engine->calls.isEmpty());
        QVERIFY(f.window().findChild<frmAutoLogout*>() == nullptr);

        QVERIFY(f.quietTicks(1));
        QVERIFY(f.window().IsUnloaded());
        QVERIFY(!f.window().isVisible());
        QVERIFY(f.window().m_blnAutoLogout);
        QCOMPARE(f.main.engine->calls,
                 QStringList({QStringLiteral("PatientNotify 10 6 0 QC-7"), QStringLiteral("CloseApplication 6 true"),
                              QStringLiteral("released")}));
        QCOMPARE(AutoLogoutFixture::installedFilters(), 0);
        // The program ends because its last window has closed, not through Cancel's end.
        QVERIFY(!f.state().exitRequested);
        QCOMPARE(f.main.boxes.count(), 0);

        // The window is gone: later ticks start no second shutdown.
        QVERIFY(f.quietTicks(3));
        QCOMPARE(f.main.engine->calls.size(), 3);
    }

    void ticksDuringTheCountdownDoNothing()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.state().intIdleSeconds = 60;
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            AutoLogoutFixture::stopTimerTicks(countdown, 15);
            // The main window's timer goes on ticking under the countdown.
            f.window().ActivityTimer_Timer();
            f.window().ActivityTimer_Timer();
            QCOMPARE(QApplication::activeModalWidget(), &countdown);
            QCOMPARE(f.state().intIdleSeconds, qint16(61));
            QVERIFY(!f.window().IsUnloaded());
            countdown.StopTimer_Timer();
        }));
        QVERIFY(!f.window().IsUnloaded());
        QVERIFY(f.quietTicks(1));
        QVERIFY(f.window().IsUnloaded());
    }

    void inputDuringTheCountdownResetsTheIdleCountButDoesNotStopIt()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.state().intIdleSeconds = 60;
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            AutoLogoutFixture::stopTimerTicks(countdown, 3);
            QTest::mouseClick(countdown.txtSeconds, Qt::LeftButton);
            QCOMPARE(f.state().intIdleSeconds, qint16(0));
            f.state().intIdleSeconds = 61;
            QTest::keyClick(&countdown, Qt::Key_A);
            QCOMPARE(f.state().intIdleSeconds, qint16(0));
            // Only the button stops the countdown: not Escape, not the close box.
            QTest::keyClick(&countdown, Qt::Key_Escape);
            QVERIFY(countdown.isVisible());
            countdown.close();
            QVERIFY(countdown.isVisible());
            QVERIFY(f.state().blnLogoutPending);
            QCOMPARE(f.state().intLogoutElapsed, qint16(3));
            AutoLogoutFixture::stopTimerTicks(countdown, 13);
            QVERIFY(!countdown.isVisible());
        }));
        QCOMPARE(f.beeps.size(), 16);
        QCOMPARE(f.beeps.last(), QStringLiteral("-1"));
        QVERIFY(f.quietTicks(1));
        QVERIFY(f.window().IsUnloaded());
        QCOMPARE(f.main.engine->calls.mid(f.main.engine->calls.size() - 2),
                 QStringList({QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
    }

    void aStoppedCountdownStartsAfreshNextTime()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.state().intIdleSeconds = 60;
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            AutoLogoutFixture::stopTimerTicks(countdown, 7);
            countdown.cmdStopLogout->click();
        }));
        // A click by program is no user input: the idle count goes on from where it stood.
        QCOMPARE(f.state().intIdleSeconds, qint16(61));
        f.state().intIdleSeconds = 0;
        QVERIFY(f.quietTicks(60));
        QStringList seen;
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            seen.append(countdown.txtSeconds->text());
            countdown.StopTimer_Timer();
            seen.append(countdown.txtSeconds->text());
            countdown.cmdStopLogout_Click();
        }));
        QCOMPARE(seen, QStringList({QStringLiteral("15"), QStringLiteral("14")}));
    }

    void stopTimerDoesNothingWithoutAPendingCountdown()
    {
        AutoLogoutFixture f(1);
        f.start();
        frmAutoLogout countdown(f.state(), &f.window());
        countdown.Form_Load();
        f.state().blnLogoutPending = false;
        countdown.StopTimer_Timer();
        QCOMPARE(countdown.txtSeconds->text(), QStringLiteral("15"));
        QCOMPARE(f.state().intLogoutElapsed, qint16(0));
        QVERIFY(f.beeps.isEmpty());

        f.state().blnLogoutPending = true;
        f.state().lngLogoutSeconds = 0;
        countdown.StopTimer_Timer();
        QCOMPARE(countdown.txtSeconds->text(), QStringLiteral("15"));
        QCOMPARE(f.state().intLogoutElapsed, qint16(0));
        QVERIFY(f.beeps.isEmpty());

        f.state().lngLogoutSeconds = 60;
        countdown.StopTimer_Timer();
        QCOMPARE(countdown.txtSeconds->text(), QStringLiteral("14"));
        QCOMPARE(f.beeps, QStringList({QStringLiteral("14")}));
    }

    void limitZeroWatchesNothingAndCountsNothing()
    {
        AutoLogoutFixture f(0);
        f.start();
        QCOMPARE(f.state().lngLogoutSeconds, 0);
        QCOMPARE(AutoLogoutFixture::installedFilters(), 0);
        f.state().intIdleSeconds = 7;
        AutoLogoutFixture::leftClick(&f.window());
        QTest::keyClick(&f.window(), Qt::Key_A);
        QCOMPARE(f.state().intIdleSeconds, qint16(7));
        QVERIFY(f.quietTicks(100));
        QCOMPARE(f.state().intIdleSeconds, qint16(7));
        f.state().blnLogoutPending = true;
        f.state().intLogoutElapsed = 16;
        QVERIFY(f.quietTicks(1));
        QVERIFY(!f.window().IsUnloaded());
        f.main.engine->calls.clear();
        f.window().close();
        QCOMPARE(f.main.engine->calls,
                 QStringList({QStringLiteral("CloseApplication 6 false"), QStringLiteral("released")}));
    }

    void onlyALimitAboveZeroRemovesTheWatching()
    {
        AutoLogoutFixture f(1);
        f.start();
        QCOMPARE(AutoLogoutFixture::installedFilters(), 1);
        f.state().lngLogoutSeconds = 0;
        RemoveActivityHooks(f.state());
        QCOMPARE(AutoLogoutFixture::installedFilters(), 1);
        f.state().intIdleSeconds = 9;
        QTest::keyClick(&f.window(), Qt::Key_A);
        QCOMPARE(f.state().intIdleSeconds, qint16(0));
        f.state().lngLogoutSeconds = 60;
        RemoveActivityHooks(f.state());
        QCOMPARE(AutoLogoutFixture::installedFilters(), 0);
        f.state().intIdleSeconds = 9;
        QTest::keyClick(&f.window(), Qt::Key_A);
        QCOMPARE(f.state().intIdleSeconds, qint16(9));
    }

    void theWatchingGoesWithTheState()
    {
        {
            AutoLogoutFixture f(1);
            f.start();
            QCOMPARE(AutoLogoutFixture::installedFilters(), 1);
            // Without a limit neither the shutdown nor RemoveActivityHooks
            // removes the watching; the state's end does.
            f.state().lngLogoutSeconds = 0;
        }
        QCOMPARE(AutoLogoutFixture::installedFilters(), 0);
    }

    void installingTwiceWatchesOnceAndRestartsTheCount()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.state().intIdleSeconds = 30;
        InstallActivityHooks(f.state());
        QCOMPARE(AutoLogoutFixture::installedFilters(), 1);
        QCOMPARE(f.state().intIdleSeconds, qint16(0));
    }

    void shutdownRemovesTheWatching()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.window().show();
        QCOMPARE(AutoLogoutFixture::installedFilters(), 1);
        f.window().close();
        QVERIFY(f.window().IsUnloaded());
        QCOMPARE(AutoLogoutFixture::installedFilters(), 0);
        f.state().intIdleSeconds = 5;
        QTest::keyClick(&f.window(), Qt::Key_A);
        QCOMPARE(f.state().intIdleSeconds, qint16(5));
    }

    void negativeLimitShowsTheCountdownOnTheFirstTick()
    {
        AutoLogoutFixture f(-1);
        f.start();
        QCOMPARE(f.state().lngLogoutSeconds, -60);
        QCOMPARE(AutoLogoutFixture::installedFilters(), 0);
        QVERIFY(f.tick([&](frmAutoLogout& countdown) {
            QCOMPARE(f.state().intIdleSeconds, qint16(1));
            countdown.cmdStopLogout_Click();
        }));
        // Without watching, nothing resets the count: every tick shows it again.
        QVERIFY(f.tick(expire));
        QVERIFY(f.quietTicks(1));
        QVERIFY(f.window().IsUnloaded());
        QCOMPARE(f.main.engine->calls.mid(f.main.engine->calls.size() - 2),
                 QStringList({QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
    }

    void idleCountOverflowIsCaughtAndShowsNothing()
    {
        AutoLogoutFixture f(667);
        f.start();
        QCOMPARE(f.state().lngLogoutSeconds, 40020);
        f.state().intIdleSeconds = 32766;
        QVERIFY(f.quietTicks(1));
        QCOMPARE(f.state().intIdleSeconds, qint16(32767));
        QVERIFY(f.quietTicks(3));
        QCOMPARE(f.state().intIdleSeconds, qint16(32767));
        QCOMPARE(f.main.boxes.count(), 0);
        QVERIFY(!f.state().blnLogoutPending);
        QVERIFY(!f.window().IsUnloaded());
        // The next click starts the count again.
        AutoLogoutFixture::leftClick(&f.window());
        QCOMPARE(f.state().intIdleSeconds, qint16(0));
        QVERIFY(f.quietTicks(1));
        QCOMPARE(f.state().intIdleSeconds, qint16(1));
    }

    void logsOutAfterOneIdleSecondAndTheCountdown()
    {
        // The whole auto-logout at a limit of one second, every tick of both
        // timers driven here, each one when its timer's second has passed on
        // the clock: the countdown comes on the second tick, counts sixteen
        // seconds, and the main window closes on the next tick.
        AutoLogoutFixture f(1);
        f.start();
        f.state().lngLogoutSeconds = 1;
        f.state().intIdleSeconds = 0;
        f.window().show();
        QCOMPARE(f.window().ActivityTimer->interval(), 1000);

        const QDateTime start = Clock::now();
        const auto secondsGone = [&start] { return start.secsTo(Clock::now()); };
        qint64 countdownShown = -1;
        qint64 countdownGone = -1;
        qint64 engineTold = -1;
        QStringList seconds;
        f.main.engine->calls.clear();
        f.main.engine->onCall = [&](const QString& call) {
            if (call.startsWith(QStringLiteral("CloseApplication")))
                engineTold = secondsGone();
        };
        const auto stopListening = qScopeGuard([&] { f.main.engine->onCall = nullptr; });

        for (int tick = 0; tick < 30 && !f.window().IsUnloaded(); ++tick)
        {
            Clock::advanceSeconds(1);
            f.tick([&](frmAutoLogout& countdown) {
                QCOMPARE(countdown.StopTimer->interval(), 1000);
                countdownShown = secondsGone();
                seconds.append(countdown.txtSeconds->text());
                for (int second = 0; second < 30 && countdown.isVisible(); ++second)
                {
                    Clock::advanceSeconds(1);
                    countdown.StopTimer_Timer();
                    if (countdown.isVisible())
                        seconds.append(countdown.txtSeconds->text());
                }
                countdownGone = secondsGone();
            });
        }

        QVERIFY(f.window().IsUnloaded());
        QCOMPARE(f.main.engine->calls,
                 QStringList({QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
        // The countdown comes once the idle count has passed one second: on the second tick.
        QCOMPARE(countdownShown, 2);
        QCOMPARE(seconds, QStringList{QStringLiteral("15")} + countdownTexts.mid(0, 15));
        QCOMPARE(f.beeps, countdownTexts);
        // Sixteen seconds of countdown, then the window closes on the main window's next tick.
        QCOMPARE(countdownGone - countdownShown, 16);
        QCOMPARE(engineTold, countdownGone + 1);
    }

    void addSecondOverflowsBeyondSixteenBits()
    {
        QCOMPARE(AddSecond(0), qint16(1));
        QCOMPARE(AddSecond(-1), qint16(0));
        QCOMPARE(AddSecond(32766), qint16(32767));
        try
        {
            AddSecond(32767);
            QFAIL("no overflow");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), ErrorNumber::Overflow);
        }
    }
};

CALVEX_TEST(TestAutoLogout)
#include "TestAutoLogout.moc"
