#include "run/frmChooseDate.h"

#include "platform/Clock.h"
#include "platform/MessageService.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

frmChooseDate::frmChooseDate(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmChooseDate"));
    setWindowTitle(QStringLiteral("Choose Date"));
    setModal(true);

    mscalCalendar = new QCalendarWidget(this);
    mscalCalendar->setObjectName(QStringLiteral("mscalCalendar"));
    mscalCalendar->setGridVisible(true);
    Label1 = new QLabel(QStringLiteral("Selected date:"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    lblSelDate = new QLabel(this);
    lblSelDate->setObjectName(QStringLiteral("lblSelDate"));
    cmdToday = new QPushButton(QStringLiteral("&Today"), this);
    cmdToday->setObjectName(QStringLiteral("cmdToday"));
    cmdToday->setAutoDefault(false);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    cmdCancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(mscalCalendar);
    auto* selected = new QHBoxLayout;
    selected->addWidget(Label1);
    selected->addWidget(lblSelDate, 1);
    layout->addLayout(selected);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdToday);
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    layout->addLayout(buttons);
    setTabOrder(mscalCalendar, cmdToday);
    setTabOrder(cmdToday, cmdOK);
    setTabOrder(cmdOK, cmdCancel);

    connect(mscalCalendar, &QCalendarWidget::selectionChanged, this, [this] { mscalCalendar_Click(); });
    // A double-click on a day, or Enter in the calendar, takes that day.
    connect(mscalCalendar, &QCalendarWidget::activated, this, [this] { cmdOK_Click(); });
    connect(cmdToday, &QPushButton::clicked, this, [this] { cmdToday_Click(); });
    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
}

void frmChooseDate::Form_Load()
{
    setWindowTitle(GetResourceText(4004));
    Label1->setText(GetResourceText(4005));
    cmdToday->setText(GetResourceText(4006));
    cmdOK->setText(GetResourceText(4007));
    cmdCancel->setText(GetResourceText(4008));
    m_datDate = Clock::today();
    m_blnCancel = false;
    cmdOK->setEnabled(mscalCalendar->selectedDate().isValid());
}

void frmChooseDate::Form_Activate()
{
    if (!m_datDate.isValid())
        return;
    mscalCalendar->setSelectedDate(m_datDate);
    mscalCalendar->setCurrentPage(m_datDate.year(), m_datDate.month());
    lblSelDate->setText(FormatLongDate(m_datDate));
    mscalCalendar->setFocus();
}

void frmChooseDate::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    Form_Activate();
}

void frmChooseDate::mscalCalendar_Click()
{
    const QDate date = mscalCalendar->selectedDate();
    cmdOK->setEnabled(date.isValid());
    lblSelDate->setText(FormatLongDate(date));
}

void frmChooseDate::cmdToday_Click()
{
    const QDate today = Clock::today();
    mscalCalendar->setSelectedDate(today);
    mscalCalendar->setCurrentPage(today.year(), today.month());
    mscalCalendar_Click();
}

qint16 frmChooseDate::DateCheckMessage(int day, int month, int year)
{
    if (day < 1 || day > 31)
        return 4122;
    if (month < 1 || month > 12)
        return 4123;
    if (year < 1)
        return 4124;
    return 0;
}

void frmChooseDate::cmdOK_Click()
{
    m_datDate = mscalCalendar->selectedDate();
    const qint16 message = DateCheckMessage(m_datDate.day(), m_datDate.month(), m_datDate.year());
    if (message != 0)
    {
        MsgBox(GetResourceText(message), MsgStyle::Exclamation);
        return;
    }
    accept();
}

void frmChooseDate::cmdCancel_Click()
{
    m_blnCancel = true;
    QDialog::reject();
}

void frmChooseDate::reject()
{
    cmdCancel_Click();
}
