#include "run/ReportRunPanel.h"

#include <QHBoxLayout>

ReportRunPanel::ReportRunPanel(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("ReportRunPanel"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    cmdPrintSetup = new QPushButton(QStringLiteral("P&rint Setup"), this);
    cmdPrintSetup->setObjectName(QStringLiteral("cmdPrintSetup"));
    cmdPreview = new QPushButton(QStringLiteral("Pre&view"), this);
    cmdPreview->setObjectName(QStringLiteral("cmdPreview"));
    cmdPrint = new QPushButton(QStringLiteral("&Print"), this);
    cmdPrint->setObjectName(QStringLiteral("cmdPrint"));
    for (QPushButton* button : {cmdPrintSetup, cmdPreview, cmdPrint})
    {
        button->setAutoDefault(false);
        layout->addWidget(button);
    }
}
