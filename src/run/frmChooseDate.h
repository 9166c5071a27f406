#pragma once

#include <QCalendarWidget>
#include <QDate>
#include <QDialog>
#include <QLabel>
#include <QPushButton>

// The calendar window of the date boxes: the user picks a day, Today jumps to
// today, OK hands the day back in m_datDate, Cancel sets m_blnCancel.
//
// The window is loaded once and only hidden afterwards, so both members keep
// their values from one showing to the next: the calendar opens on the last
// day chosen when the box holds no date, and m_blnCancel, set false only at
// the load, stays true after a Cancel, so later OK presses leave the boxes
// unchanged until the program starts again. That is the window's intended
// behaviour.
class frmChooseDate final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmChooseDate)

public:
    explicit frmChooseDate(QWidget* parent = nullptr);

    // Captions, m_datDate = today, m_blnCancel = false. Runs once, when the
    // window is loaded.
    void Form_Load();
    // Each time the window is shown: the calendar and the label show m_datDate.
    void Form_Activate();

    void mscalCalendar_Click();
    void cmdToday_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    // The message a calendar day gets on OK: 4122 for a day outside 1..31,
    // 4123 for a month outside 1..12, 4124 for a year below 1, in that
    // order; 0 when the day is accepted.
    static qint16 DateCheckMessage(int day, int month, int year);

    QLabel* Label1 = nullptr;
    QLabel* lblSelDate = nullptr;
    QCalendarWidget* mscalCalendar = nullptr;
    QPushButton* cmdToday = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;

    QDate m_datDate;
    bool m_blnCancel = false;

    // Escape and the close box act as Cancel.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
};
