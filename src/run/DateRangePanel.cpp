#include "run/DateRangePanel.h"

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
    }
}
