#include "RunFixture.h"

#include "common/TestMain.h"
#include "platform/VbConversions.h"
#include "run/DateRangePanel.h"
#include "run/frmChooseDate.h"

#include <QSignalSpy>
#include <QTest>

// The From and To boxes, the calendar window and the range rule. Today is
// pinned to June 15, 2024.
class TestDateRange : public QObject
{
    Q_OBJECT

private:
    struct Panel
    {
        Panel()
        {
            panel.show();
            QApplication::setActiveWindow(&panel);
        }
        EngineFixture fx;
        ModalDriver modal;
        DateRangePanel panel;

        // What the calendar showed when it opened.
        struct Opened
        {
            QString title;
            QDate selected;
            int year = 0;
            int month = 0;
            QString label;
        };

        // Clicks cmdDate(index); once the calendar is open, records what it
        // shows and runs act on it.
        Opened choose(int index, const std::function<void(frmChooseDate&)>& act)
        {
            Opened opened;
            modal.onNextModal([&](QDialog* dialog) {
                auto* calendar = qobject_cast<frmChooseDate*>(dialog);
                QVERIFY(calendar);
                opened = {calendar->windowTitle(), calendar->mscalCalendar->selectedDate(),
                          calendar->mscalCalendar->yearShown(), calendar->mscalCalendar->monthShown(),
                          calendar->lblSelDate->text()};
                act(*calendar);
            });
            QTest::mouseClick(panel.cmdDate[std::size_t(index)], Qt::LeftButton);
            return opened;
        }

        static void pick(frmChooseDate& calendar, const QDate& day)
        {
            calendar.mscalCalendar->setSelectedDate(day);
            QTest::mouseClick(calendar.cmdOK, Qt::LeftButton);
        }
    };

    // The calendar's table of days, which takes the keys.
    static QWidget* dayTable(frmChooseDate& calendar)
    {
        return calendar.mscalCalendar->findChild<QWidget*>(QStringLiteral("qt_calendar_calendarview"));
    }

    static bool valid(const QString& from, const QString& to)
    {
        DateRangePanel panel;
        panel.mskDate[0]->SetText(from);
        panel.mskDate[1]->SetText(to);
        return panel.ValidateDateRange();
    }

private slots:
    void emptyFromIsAnOpenStart() { QVERIFY(valid(QString(), QStringLiteral("01/31/2024"))); }

    void equalDatesAreRefused() { QVERIFY(!valid(QStringLiteral("01/31/2024"), QStringLiteral("01/31/2024"))); }

    void reversedDatesAreRefused() { QVERIFY(!valid(QStringLiteral("02/01/2024"), QStringLiteral("01/31/2024"))); }

    void fromThatIsNoDateIsRefused() { QVERIFY(!valid(QStringLiteral("13/45/2024"), QStringLiteral("01/31/2024"))); }

    void toMustBeADate()
    {
        QVERIFY(!valid(QString(), QString()));
        QVERIFY(!valid(QStringLiteral("01/01/2024"), QStringLiteral("02/30/2024")));
        QVERIFY(!valid(QStringLiteral("01/01/2024"), QStringLiteral("02/0_/____")));
    }

    void aDayApartIsAccepted()
    {
        QVERIFY(valid(QStringLiteral("01/30/2024"), QStringLiteral("01/31/2024")));
        QVERIFY(valid(QStringLiteral("1/30/2024"), QStringLiteral("1/31/2024")));
        QVERIFY(valid(QStringLiteral(" 12/31/2023 "), QStringLiteral(" 01/01/2024 ")));
    }

    void aHalfTypedFromIsRefused() { QVERIFY(!valid(QStringLiteral("01/3_/____"), QStringLiteral("01/31/2024"))); }

    void typedDatesAreChecked()
    {
        EngineFixture fx;
        DateRangePanel panel;
        panel.show();
        QTest::keyClicks(panel.mskDate[0], QStringLiteral("3/7/2024"));
        QTest::keyClicks(panel.mskDate[1], QStringLiteral("3/8/2024"));
        QCOMPARE(panel.mskDate[0]->Text(), QStringLiteral("03/07/2024"));
        QVERIFY(panel.ValidateDateRange());
        panel.mskDate[1]->selectAll();
        QTest::keyClicks(panel.mskDate[1], QStringLiteral("3/7/2024"));
        QVERIFY(!panel.ValidateDateRange());
    }

    void everyChangeOfABoxIsReported()
    {
        EngineFixture fx;
        DateRangePanel panel;
        panel.show();
        QSignalSpy changes(&panel, &DateRangePanel::DateChanged);
        QTest::keyClicks(panel.mskDate[0], QStringLiteral("1"));
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.last().first().toInt(), 0);
        panel.mskDate[1]->SetText(QStringLiteral("06/15/2024"));
        QCOMPARE(changes.count(), 2);
        QCOMPARE(changes.last().first().toInt(), 1);
        QTest::keyClick(panel.mskDate[0], Qt::Key_Backspace);
        QCOMPARE(changes.count(), 3);
        QCOMPARE(panel.mskDate[0]->Text(), QString());
    }

    void captionQuotesTheBoxName()
    {
        Panel p;
        const auto from = p.choose(0, [](frmChooseDate& c) { QTest::mouseClick(c.cmdCancel, Qt::LeftButton); });
        QCOMPARE(from.title, QStringLiteral("T4042 \"T4041\" T4053"));
        const auto to = p.choose(1, [](frmChooseDate& c) { QTest::mouseClick(c.cmdCancel, Qt::LeftButton); });
        QCOMPARE(to.title, QStringLiteral("T4042 \"T4043\" T4053"));
        QCOMPARE(p.modal.handled(), 2);
    }

    void theCalendarLoadsOnceWithItsCaptions()
    {
        Panel p;
        QVERIFY(!p.panel.ChooseDateWindow());
        p.choose(1, [](frmChooseDate& c) { QTest::mouseClick(c.cmdOK, Qt::LeftButton); });
        frmChooseDate* calendar = p.panel.ChooseDateWindow();
        QVERIFY(calendar);
        QCOMPARE(calendar->Label1->text(), QStringLiteral("T4005"));
        QCOMPARE(calendar->cmdToday->text(), QStringLiteral("T4006"));
        QCOMPARE(calendar->cmdOK->text(), QStringLiteral("T4007"));
        QCOMPARE(calendar->cmdCancel->text(), QStringLiteral("T4008"));
        QVERIFY(calendar->cmdOK->isEnabled());
        // Hidden, not unloaded: the next button finds the same window.
        QVERIFY(calendar->isHidden());
        p.choose(0, [calendar](frmChooseDate& c) {
            QCOMPARE(&c, calendar);
            QTest::mouseClick(c.cmdOK, Qt::LeftButton);
        });
        QCOMPARE(p.panel.ChooseDateWindow(), calendar);
    }

    void theCalendarOpensOnTheBoxDate()
    {
        Panel p;
        p.panel.mskDate[1]->SetText(QStringLiteral("03/07/2024"));
        const auto opened = p.choose(1, [](frmChooseDate& c) { QTest::mouseClick(c.cmdCancel, Qt::LeftButton); });
        QCOMPARE(opened.selected, QDate(2024, 3, 7));
        QCOMPARE(opened.year, 2024);
        QCOMPARE(opened.month, 3);
        QCOMPARE(opened.label, FormatLongDate(QDate(2024, 3, 7)));
        QCOMPARE(opened.label, QStringLiteral("Thursday, March 7, 2024"));
    }

    void theCalendarOpensOnTodayForAnEmptyBox()
    {
        Panel p;
        const auto opened = p.choose(0, [](frmChooseDate& c) { QTest::mouseClick(c.cmdCancel, Qt::LeftButton); });
        QCOMPARE(opened.selected, QDate(2024, 6, 15));
        QCOMPARE(opened.month, 6);
        QCOMPARE(opened.label, QStringLiteral("Saturday, June 15, 2024"));
        QCOMPARE(p.panel.mskDate[0]->Text(), QString());
    }

    void aBoxThatHoldsNoDateOpensOnTheLastDateChosen()
    {
        Panel p;
        p.choose(1, [](frmChooseDate& c) { Panel::pick(c, QDate(2023, 11, 20)); });
        QCOMPARE(p.panel.mskDate[1]->Text(), QStringLiteral("11/20/2023"));
        p.panel.mskDate[0]->SetText(QStringLiteral("13/45/2024"));
        const auto opened = p.choose(0, [](frmChooseDate& c) { Panel::pick(c, QDate(2023, 10, 2)); });
        QCOMPARE(opened.selected, QDate(2023, 11, 20));
        QCOMPARE(p.panel.mskDate[0]->Text(), QStringLiteral("10/02/2023"));
    }

    void okWritesTheDayWithLeadingZeros()
    {
        Panel p;
        p.choose(0, [](frmChooseDate& c) { Panel::pick(c, QDate(2024, 3, 7)); });
        QCOMPARE(p.panel.mskDate[0]->Text(), QStringLiteral("03/07/2024"));
        QCOMPARE(p.panel.ChooseDateWindow()->m_datDate, QDate(2024, 3, 7));
        QCOMPARE(p.fx.boxes.count(), 0);
    }

    void pickingADayShowsItInLongForm()
    {
        Panel p;
        QString label;
        bool okEnabled = false;
        p.choose(0, [&](frmChooseDate& c) {
            // One day on with the keyboard, as the user moves in the calendar.
            QTest::keyClick(dayTable(c), Qt::Key_Right);
            label = c.lblSelDate->text();
            okEnabled = c.cmdOK->isEnabled();
            QTest::mouseClick(c.cmdOK, Qt::LeftButton);
        });
        QCOMPARE(label, QStringLiteral("Sunday, June 16, 2024"));
        QVERIFY(okEnabled);
        QCOMPARE(p.panel.mskDate[0]->Text(), QStringLiteral("06/16/2024"));
    }

    void todayMovesTheCalendarToToday()
    {
        Panel p;
        p.panel.mskDate[1]->SetText(QStringLiteral("01/31/2020"));
        QString label;
        int month = 0;
        p.choose(1, [&](frmChooseDate& c) {
            QTest::mouseClick(c.cmdToday, Qt::LeftButton);
            label = c.lblSelDate->text();
            month = c.mscalCalendar->monthShown();
            QTest::mouseClick(c.cmdOK, Qt::LeftButton);
        });
        QCOMPARE(label, QStringLiteral("Saturday, June 15, 2024"));
        QCOMPARE(month, 6);
        QCOMPARE(p.panel.mskDate[1]->Text(), QStringLiteral("06/15/2024"));
    }

    void cancelLeavesTheBox()
    {
        Panel p;
        p.panel.mskDate[0]->SetText(QStringLiteral("01/31/2024"));
        p.choose(0, [](frmChooseDate& c) {
            c.mscalCalendar->setSelectedDate(QDate(2024, 5, 5));
            QTest::mouseClick(c.cmdCancel, Qt::LeftButton);
        });
        QCOMPARE(p.panel.mskDate[0]->Text(), QStringLiteral("01/31/2024"));
        QVERIFY(p.panel.ChooseDateWindow()->m_blnCancel);
        QVERIFY(p.panel.ChooseDateWindow()->isHidden());
    }

    void escapeIsCancel()
    {
        Panel p;
        p.choose(0, [](frmChooseDate& c) { QTest::keyClick(&c, Qt::Key_Escape); });
        QCOMPARE(p.panel.mskDate[0]->Text(), QString());
        QVERIFY(p.panel.ChooseDateWindow()->m_blnCancel);
    }

    void afterACancelLaterOkPressesLeaveTheBoxes()
    {
        // The window keeps m_blnCancel while hidden; only a new load clears it.
        Panel p;
        p.choose(0, [](frmChooseDate& c) { QTest::mouseClick(c.cmdCancel, Qt::LeftButton); });
        p.choose(0, [](frmChooseDate& c) { Panel::pick(c, QDate(2024, 2, 1)); });
        QCOMPARE(p.panel.mskDate[0]->Text(), QString());
        p.panel.mskDate[1]->SetText(QStringLiteral("06/15/2024"));
        p.choose(1, [](frmChooseDate& c) { Panel::pick(c, QDate(2024, 7, 1)); });
        QCOMPARE(p.panel.mskDate[1]->Text(), QStringLiteral("06/15/2024"));
        QCOMPARE(p.modal.handled(), 3);
    }

    void enterInTheCalendarTakesTheDay()
    {
        Panel p;
        p.choose(0, [](frmChooseDate& c) {
            c.mscalCalendar->setSelectedDate(QDate(2024, 6, 20));
            QTest::keyClick(dayTable(c), Qt::Key_Return);
        });
        QCOMPARE(p.panel.mskDate[0]->Text(), QStringLiteral("06/20/2024"));
        QVERIFY(p.panel.ChooseDateWindow()->isHidden());
    }

    void okChecksDayThenMonthThenYear()
    {
        QCOMPARE(frmChooseDate::DateCheckMessage(0, 13, 0), qint16(4122));
        QCOMPARE(frmChooseDate::DateCheckMessage(32, 1, 2024), qint16(4122));
        QCOMPARE(frmChooseDate::DateCheckMessage(31, 13, 0), qint16(4123));
        QCOMPARE(frmChooseDate::DateCheckMessage(31, 0, 2024), qint16(4123));
        QCOMPARE(frmChooseDate::DateCheckMessage(31, 12, 0), qint16(4124));
        QCOMPARE(frmChooseDate::DateCheckMessage(1, 1, -44), qint16(4124));
        QCOMPARE(frmChooseDate::DateCheckMessage(1, 1, 1), qint16(0));
        QCOMPARE(frmChooseDate::DateCheckMessage(31, 12, 9999), qint16(0));
    }

    void aYearBeforeOneKeepsTheCalendarOpen()
    {
        Panel p;
        bool openAfterOk = false;
        int boxesAfterOk = 0;
        p.choose(0, [&](frmChooseDate& c) {
            c.mscalCalendar->setMinimumDate(QDate(-100, 1, 1));
            c.mscalCalendar->setSelectedDate(QDate(-44, 3, 15));
            QTest::mouseClick(c.cmdOK, Qt::LeftButton);
            openAfterOk = c.isVisible();
            boxesAfterOk = p.fx.boxes.count();
            QTest::mouseClick(c.cmdCancel, Qt::LeftButton);
        });
        QVERIFY(openAfterOk);
        QCOMPARE(boxesAfterOk, 1);
        QCOMPARE(p.fx.boxes.last().text, QStringLiteral("T4124"));
        QCOMPARE(p.fx.boxes.last().style, 48);
        QCOMPARE(p.panel.mskDate[0]->Text(), QString());
    }
};

CALVEX_TEST(TestDateRange)
#include "TestDateRange.moc"
