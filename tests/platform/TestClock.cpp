#include "common/TestMain.h"

#include "platform/Clock.h"

#include <QTest>

class TestClock : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { Clock::pin(QDateTime()); }

    void aPinnedClockStandsStill()
    {
        const QDateTime moment(QDate(2024, 6, 15), QTime(9, 30));
        Clock::pin(moment);
        QCOMPARE(Clock::now(), moment);
        QTest::qWait(20);
        QCOMPARE(Clock::now(), moment);
        QCOMPARE(Clock::today(), QDate(2024, 6, 15));
    }

    void anAdvancedClockMovesByTheSecondsGiven()
    {
        const QDateTime moment(QDate(2024, 6, 15), QTime(23, 59, 50));
        Clock::pin(moment);
        Clock::advanceSeconds(1);
        QCOMPARE(Clock::now(), moment.addSecs(1));
        Clock::advanceSeconds(9);
        QCOMPARE(Clock::now(), QDateTime(QDate(2024, 6, 16), QTime(0, 0)));
        QCOMPARE(Clock::today(), QDate(2024, 6, 16));
        Clock::advanceSeconds(-3600);
        QCOMPARE(Clock::now(), QDateTime(QDate(2024, 6, 15), QTime(23, 0)));
    }

    void advancingARunningClockPinsItFromNow()
    {
        const QDateTime before = QDateTime::currentDateTime();
        Clock::advanceSeconds(90);
        const QDateTime after = QDateTime::currentDateTime();
        const QDateTime pinned = Clock::now();
        QVERIFY(pinned >= before.addSecs(90));
        QVERIFY(pinned <= after.addSecs(90));
        // It stands still from then on.
        QTest::qWait(20);
        QCOMPARE(Clock::now(), pinned);
    }

    void anInvalidMomentLetsTheClockRunAgain()
    {
        Clock::pin(QDateTime(QDate(2000, 1, 1), QTime(0, 0)));
        Clock::pin(QDateTime());
        const QDateTime first = Clock::now();
        QVERIFY(first.date() > QDate(2020, 1, 1));
        QTest::qWait(20);
        QVERIFY(Clock::now() > first);
    }
};

CALVEX_TEST(TestClock)
#include "TestClock.moc"
