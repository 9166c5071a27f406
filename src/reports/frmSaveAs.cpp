#include "reports/frmSaveAs.h"

#include "components/QCReportStore.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/modResource.h"
#include "widgets/ControlCharacterValidator.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <memory>

frmSaveAs::frmSaveAs(const QString& msgTitle, QWidget* parent)
    : QDialog(parent)
    , m_msgTitle(msgTitle)
{
    setObjectName(QStringLiteral("frmSaveAs"));
    setModal(true);

    Label1 = new QLabel(QStringLiteral("Please enter a name for this report:"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    txtName = new QLineEdit(this);
    txtName->setObjectName(QStringLiteral("txtName"));
    // A name the store keeps as it was typed, on every database: no longer
    // than the stored names, and on one line.
    txtName->setMaxLength(QCReportStore::MaxNameLength);
    txtName->setValidator(new ControlCharacterValidator(txtName));
    txtName->setMinimumWidth(txtName->fontMetrics().horizontalAdvance(QLatin1Char('M')) * 24);
    Label1->setBuddy(txtName);
    cmdSave = new QPushButton(QStringLiteral("&Save"), this);
    cmdSave->setObjectName(QStringLiteral("cmdSave"));
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    // Only Save becomes the default button, and only once it may be pressed.
    cmdSave->setAutoDefault(false);
    cmdCancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(txtName);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdSave);
    buttons->addWidget(cmdCancel);
    layout->addLayout(buttons);
    setTabOrder(txtName, cmdSave);
    setTabOrder(cmdSave, cmdCancel);

    txtName->installEventFilter(this);
    connect(txtName, &QLineEdit::textChanged, this, [this] { txtName_Change(); });
    connect(cmdSave, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });

    Form_Load();
}

void frmSaveAs::Form_Load()
{
    setWindowTitle(GetResourceText(4089));
    Label1->setText(GetResourceText(4090));
    cmdSave->setText(GetResourceText(4048));
    cmdCancel->setText(GetResourceText(4008));
    cmdSave->setEnabled(false);
}

void frmSaveAs::txtName_Change()
{
    cmdSave->setEnabled(!txtName->text().isEmpty());
    if (cmdSave->isEnabled())
        cmdSave->setDefault(true);
}

bool frmSaveAs::eventFilter(QObject* watched, QEvent* event)
{
    // Whatever brings the focus to the name, its whole text is selected, so
    // typing replaces it.
    if (watched == txtName && event->type() == QEvent::FocusIn)
        txtName->selectAll();
    return QDialog::eventFilter(watched, event);
}

void frmSaveAs::cmdSave_Click()
{
    std::unique_ptr<QCReportStore> store;
    try
    {
        store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        const qint32 count = store->CountReportsNamed(txtName->text());
        store.reset();
        if (count < 1)
        {
            m_strName = txtName->text();
            accept();
            return;
        }
        MsgBox(GetResourceText(4091), MsgStyle::Exclamation, GetResourceText(4092));
        txtName->setFocus();
    }
    catch (const RuntimeError& error)
    {
        store.reset();
        MsgBox(error.description(), MsgStyle::Exclamation, m_msgTitle);
    }
}

void frmSaveAs::cmdCancel_Click()
{
    m_strName.clear();
    reject();
}
