#include "run/SubjectSearchPanel.h"

#include "components/PatientQuery.h"
#include "components/modCalcObject.h"
#include "components/modReportRequest.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "widgets/EventGuard.h"

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

// Trim(field & "").
QString fieldText(const Recordset& rs, const char* field)
{
    return TextOf(rs.Value(QLatin1String(field))).trimmed();
}
} // namespace

SubjectSearchPanel::SubjectSearchPanel(MainWindowHost& host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
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

    const auto find = [this] { RunGuarded([this] { cmdFind_Click(); }, m_host.MsgTitle()); };
    connect(cmdFind, &QPushButton::clicked, this, find);
    connect(txtPatient, &QLineEdit::returnPressed, this, find);
}

frmSelPatient& SubjectSearchPanel::SelPatient()
{
    if (!m_selPatient)
    {
        m_selPatient = new frmSelPatient(m_host.State(), this);
        m_selPatient->Form_Load();
    }
    return *m_selPatient;
}

void SubjectSearchPanel::ShowSubject(const QString& id, const QString& firstName, const QString& midName,
                                     const QString& lastName)
{
    m_host.State().strCurrentPatientID = id;
    txtPatient->clear();
    txtPatientName->setText(FormatPatientName(firstName, midName, lastName));
    txtPatientID->setText(id);
}

void SubjectSearchPanel::cmdFind_Click()
{
    const QString search = txtPatient->text().trimmed();
    if (search.size() <= 2)
    {
        MsgBox(GetResourceText(4060), MsgStyle::Exclamation, m_host.MsgTitle());
        txtPatient->setFocus();
        return;
    }

    // What an error puts back: the search never leaves half a choice behind.
    const QString previousID = m_host.State().strCurrentPatientID;
    const QString previousSearch = txtPatient->text();
    const QString previousName = txtPatientName->text();
    const QString previousIDText = txtPatientID->text();
    try
    {
        auto query = ComponentFactory::create<PatientQuery>(PatientQuery::ClassId);
        const RecordsetPtr rs =
            optFindBy[0]->isChecked() ? query->FindByIdNum(search) : query->FindByName(search, QString(), QString());
        if (!rs)
            RaiseObjectNotSet(QStringLiteral("cmdFind_Click"));
        const qint32 count = rs->RecordCount();
        if (count == 0)
        {
            MsgBox(GetResourceText(4061), MsgStyle::Exclamation, m_host.MsgTitle());
            rs->Close();
            return;
        }
        if (count == 1)
        {
            ShowSubject(fieldText(*rs, "PatientIDNum"), fieldText(*rs, "PatientFirstName"),
                        fieldText(*rs, "PatientMidName"), fieldText(*rs, "PatientLastName"));
        }
        else
        {
            // Several matches, or a source that cannot tell how many.
            frmSelPatient& list = SelPatient();
            if (!list.LoadResults(*rs))
            {
                MsgBox(GetResourceText(4062), MsgStyle::Exclamation, m_host.MsgTitle());
            }
            else
            {
                list.exec();
                if (!list.m_strSelPatID.isEmpty())
                    ShowSubject(list.m_strSelPatID, list.m_strSelPatFirstName, list.m_strSelPatMidName,
                                list.m_strSelPatLastName);
            }
        }
        rs->Close();
        SetCurrentPatient(m_host.State());
    }
    catch (const RuntimeError& error)
    {
        m_host.State().strCurrentPatientID = previousID;
        txtPatient->setText(previousSearch);
        txtPatientName->setText(previousName);
        txtPatientID->setText(previousIDText);
        MsgBox(error.description(), MsgStyle::Critical, m_host.MsgTitle());
    }
}
