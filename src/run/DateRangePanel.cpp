#include "run/DateRangePanel.h"

#include "components/modReportRequest.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "widgets/EventGuard.h"

#include <QGridLayout>
#include <QVBoxLayout>

DateRangePanel::DateRangePanel(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("DateRangePanel"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    fraDateRange = new QGroupBox(QStringLiteral("Date Range"), this);
    fraDateRange->setObjectName(QStringLiteral("fraDateRange"));
    outer->addWidget(fraDateRange);

    auto* layout = new QGridLayout(fraDateRange);
    for (int i = 0; i < 2; ++i)
    {
        auto* label = new QLabel(i == 0 ? QStringLiteral("From:") : QStringLiteral("To:"), fraDateRange);
        label->setObjectName(QStringLiteral("Label1(%1)").arg(i + 2));
        Label1[i + 2] = label;
        mskDate[i] = new MaskEdBox(fraDateRange);
        mskDate[i]->setObjectName(QStringLiteral("mskDate(%1)").arg(i));
        mskDate[i]->setMinimumWidth(mskDate[i]->fontMetrics().horizontalAdvance(QStringLiteral("00/00/00000")));
        label->setBuddy(mskDate[i]);
        cmdDate[i] = new QPushButton(QStringLiteral("Choose"), fraDateRange);
        cmdDate[i]->setObjectName(QStringLiteral("cmdDate(%1)").arg(i));
        cmdDate[i]->setAutoDefault(false);
        layout->addWidget(label, i, 0);
        layout->addWidget(mskDate[i], i, 1);
        layout->addWidget(cmdDate[i], i, 2);
        connect(mskDate[i], &QLineEdit::textChanged, this, [this, i] { mskDate_Change(i); });
        connect(cmdDate[i], &QPushButton::clicked, this, [this, i] { RunGuarded([this, i] { cmdDate_Click(i); }); });
    }
}

void DateRangePanel::cmdDate_Click(int Index)
{
    const QString fromWord = GetResourceText(4041);
    const QString toWord = GetResourceText(4043);
    if (!m_chooseDate)
    {
        m_chooseDate = new frmChooseDate(this);
        m_chooseDate->Form_Load();
    }
    frmChooseDate& calendar = *m_chooseDate;
    const QChar quote = QLatin1Char('"');
    calendar.setWindowTitle(GetResourceText(4042) + QLatin1Char(' ') + quote + (Index == 0 ? fromWord : toWord) +
                            quote + QLatin1Char(' ') + GetResourceText(4053));
    MaskEdBox* box = mskDate.at(std::size_t(Index));
    if (IsDate(box->Text()))
        calendar.m_datDate = ToDate(box->Text());
    calendar.exec();
    if (!calendar.m_blnCancel)
        box->SetText(FormatMonthDayYear(calendar.m_datDate));
}

void DateRangePanel::mskDate_Change(int Index)
{
    emit DateChanged(Index);
}

bool DateRangePanel::ValidateDateRange() const
{
    return IsValidDateRange(mskDate[0]->Text(), mskDate[1]->Text());
}
