#include "run/SubjectSearchPanel.h"

#include <QGridLayout>
#include <QHBoxLayout>

namespace
{
QLabel* makeLabel(std::map<int, QLabel*>& labels, int index, const QString& caption, QWidget* parent)
{
    auto* label = new QLabel(caption, parent);
    label->setObjectName(QStringLiteral("Label1(%1)").arg(index));
    labels[index] = label;
    return label;
}
} // namespace

SubjectSearchPanel::SubjectSearchPanel(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("SubjectSearchPanel"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* search = new QGroupBox(this);
    search->setObjectName(QStringLiteral("fraPatientSearch"));
    auto* searchLayout = new QGridLayout(search);
    QLabel* patientLabel = makeLabel(Label1, 0, QStringLiteral("&Patient:"), search);
    txtPatient = new QLineEdit(search);
    txtPatient->setObjectName(QStringLiteral("txtPatient"));
    txtPatient->setMinimumWidth(txtPatient->fontMetrics().horizontalAdvance(QLatin1Char('M')) * 12);
    patientLabel->setBuddy(txtPatient);
    optFindBy[0] = new QRadioButton(QStringLiteral("&ID"), search);
    optFindBy[1] = new QRadioButton(QStringLiteral("Last &Name"), search);
    for (int i = 0; i < 2; ++i)
        optFindBy[i]->setObjectName(QStringLiteral("optFindBy(%1)").arg(i));
    optFindBy[1]->setChecked(true);
    cmdFind = new QPushButton(QStringLiteral("&Find..."), search);
    cmdFind->setObjectName(QStringLiteral("cmdFind"));
    cmdFind->setAutoDefault(false);
    searchLayout->addWidget(patientLabel, 0, 0);
    searchLayout->addWidget(txtPatient, 0, 1, 1, 2);
    searchLayout->addWidget(cmdFind, 0, 3);
    searchLayout->addWidget(optFindBy[0], 1, 1);
    searchLayout->addWidget(optFindBy[1], 1, 2);
    searchLayout->setColumnStretch(2, 1);
    layout->addWidget(search, 1);

    fraSelectedPatient = new QGroupBox(QStringLiteral("Selected Patient"), this);
    fraSelectedPatient->setObjectName(QStringLiteral("fraSelectedPatient"));
    auto* selectedLayout = new QGridLayout(fraSelectedPatient);
    QLabel* idLabel = makeLabel(Label1, 10, QStringLiteral("ID:"), fraSelectedPatient);
    QLabel* nameLabel = makeLabel(Label1, 11, QStringLiteral("Name:"), fraSelectedPatient);
    txtPatientID = new QLineEdit(fraSelectedPatient);
    txtPatientID->setObjectName(QStringLiteral("txtPatientID"));
    txtPatientName = new QLineEdit(fraSelectedPatient);
    txtPatientName->setObjectName(QStringLiteral("txtPatientName"));
    for (QLineEdit* shown : {txtPatientID, txtPatientName})
    {
        shown->setReadOnly(true);
        shown->setFocusPolicy(Qt::ClickFocus); // shown, not entered: Tab passes over them
        shown->setMinimumWidth(shown->fontMetrics().horizontalAdvance(QLatin1Char('M')) * 12);
    }
    idLabel->setBuddy(txtPatientID);
    nameLabel->setBuddy(txtPatientName);
    selectedLayout->addWidget(idLabel, 0, 0);
    selectedLayout->addWidget(txtPatientID, 0, 1);
    selectedLayout->addWidget(nameLabel, 1, 0);
    selectedLayout->addWidget(txtPatientName, 1, 1);
    layout->addWidget(fraSelectedPatient, 1);
}
