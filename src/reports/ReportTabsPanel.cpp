#include "reports/ReportTabsPanel.h"

#include "components/modCalcObject.h"
#include "platform/VbConversions.h"
#include "widgets/ComboList.h"
#include "widgets/EventGuard.h"
#include "widgets/FindComboItem.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace
{
QString indexedName(const char* name, int index)
{
    return QLatin1String(name) + QLatin1Char('(') + QString::number(index) + QLatin1Char(')');
}

template <class W> W* makeControl(QWidget* parent, const char* name, int index)
{
    auto* control = new W(parent);
    control->setObjectName(indexedName(name, index));
    return control;
}

QComboBox* makeList(QWidget* parent, const char* name, int index)
{
    auto* list = makeControl<QComboBox>(parent, name, index);
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setMinimumContentsLength(12);
    return list;
}

QPushButton* makeButton(QWidget* parent, const char* name, const QString& caption)
{
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}
} // namespace

ReportTabsPanel::ReportTabsPanel(MainWindowHost& host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
{
    setObjectName(QStringLiteral("ReportTabsPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    sstabReportTabs = new QTabWidget(this);
    sstabReportTabs->setObjectName(QStringLiteral("sstabReportTabs"));
    sstabReportTabs->addTab(buildTab(0), QStringLiteral("Pulmonary Function (PF)"));
    sstabReportTabs->addTab(buildTab(1), QStringLiteral("Gas Exchange (GX)"));
    layout->addWidget(sstabReportTabs, 1);

    auto* buttons = new QHBoxLayout;
    cmdNew = makeButton(this, "cmdNew", QStringLiteral("&New"));
    cmdSave = makeButton(this, "cmdSave", QStringLiteral("&Save"));
    cmdSaveAs = makeButton(this, "cmdSaveAs", QStringLiteral("Save &As"));
    cmdDelete = makeButton(this, "cmdDelete", QStringLiteral("&Delete"));
    for (QPushButton* button : {cmdNew, cmdSave, cmdSaveAs, cmdDelete})
        buttons->addWidget(button);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    for (int i = 0; i < TabCount; ++i)
        connectHandlers(i);
    connect(sstabReportTabs, &QTabWidget::currentChanged, this, [this] {
        if (!m_host.IsLoading())
            RunGuarded([this] { sstabReportTabs_Click(); }, m_host.MsgTitle());
    });
    connect(cmdNew, &QPushButton::clicked, this, [this] { RunGuarded([this] { cmdNew_Click(); }, m_host.MsgTitle()); });
    // Save, Save As and Delete show their own errors.
    connect(cmdSave, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    connect(cmdSaveAs, &QPushButton::clicked, this, [this] { cmdSaveAs_Click(); });
    connect(cmdDelete, &QPushButton::clicked, this, [this] { cmdDelete_Click(); });
}

QWidget* ReportTabsPanel::buildTab(int Index)
{
    auto* page = new QWidget;
    page->setObjectName(indexedName("tabPage", Index));
    const bool pf = Index == 0;

    // Label numbers of the window's label array: the captions of the first
    // group are replaced at start-up.
    const int lblReports = pf ? 17 : 1;
    const int lblTable = pf ? 15 : 9;
    const int lblVariable = pf ? 16 : 8;
    const int lblSelected = pf ? 13 : 12;
    const int lblGraphTotal = pf ? 4 : 6;
    const int lblTableTotal = pf ? 5 : 7;
    auto label = [this, page](int number, const QString& caption, QWidget* buddy) {
        auto* lbl = makeControl<QLabel>(page, "Label1", number);
        lbl->setText(caption);
        if (buddy)
            lbl->setBuddy(buddy);
        Label1[number] = lbl;
        return lbl;
    };

    cboReports[Index] = makeList(page, "cboReports", Index);
    cboTable[Index] = makeList(page, "cboTable", Index);
    cboVariable[Index] = makeList(page, "cboVariable", Index);
    cboVariable[Index]->setMinimumContentsLength(24);
    cboVarUnits[Index] = makeList(page, "cboVarUnits", Index);
    cboVarDecPlaces[Index] = makeList(page, "cboVarDecPlaces", Index);
    cboVarTest[Index] = makeList(page, "cboVarTest", Index);
    for (QComboBox* hidden : {cboVarUnits[Index], cboVarDecPlaces[Index], cboVarTest[Index]})
        hidden->setVisible(false);

    auto* pageLayout = new QVBoxLayout(page);

    auto* reportsRow = new QHBoxLayout;
    reportsRow->addWidget(label(lblReports, QStringLiteral("Saved Reports"), cboReports[Index]));
    reportsRow->addWidget(cboReports[Index], 1);
    pageLayout->addLayout(reportsRow);

    auto* pickRow = new QHBoxLayout;
    pickRow->addWidget(
        label(lblTable, pf ? QStringLiteral("Table for all variables") : QStringLiteral("Table"), cboTable[Index]));
    pickRow->addWidget(cboTable[Index], 1);
    pickRow->addSpacing(12);
    pickRow->addWidget(label(lblVariable, QStringLiteral("Variable"), cboVariable[Index]));
    pickRow->addWidget(cboVariable[Index], 2);
    pageLayout->addLayout(pickRow);

    auto* editRow = new QHBoxLayout;
    chkShowIn[2 * Index] = makeControl<QCheckBox>(page, "chkShowIn", 2 * Index);
    chkShowIn[2 * Index + 1] = makeControl<QCheckBox>(page, "chkShowIn", 2 * Index + 1);
    chkShowIn[2 * Index]->setText(pf ? QStringLiteral("Show In &Graph") : QStringLiteral("Show In Graph"));
    chkShowIn[2 * Index + 1]->setText(pf ? QStringLiteral("Show In &Table") : QStringLiteral("Show In Table"));
    editRow->addWidget(chkShowIn[2 * Index]);
    editRow->addWidget(chkShowIn[2 * Index + 1]);
    editRow->addStretch(1);
    cmdVarAdd[Index] = makeControl<QPushButton>(page, "cmdVarAdd", Index);
    cmdVarUpdate[Index] = makeControl<QPushButton>(page, "cmdVarUpdate", Index);
    cmdVarRemove[Index] = makeControl<QPushButton>(page, "cmdVarRemove", Index);
    cmdVarAdd[Index]->setText(QStringLiteral("&Add"));
    cmdVarUpdate[Index]->setText(QStringLiteral("&Update"));
    cmdVarRemove[Index]->setText(QStringLiteral("Remove"));
    for (QPushButton* button : {cmdVarAdd[Index], cmdVarUpdate[Index], cmdVarRemove[Index]})
    {
        button->setAutoDefault(false);
        editRow->addWidget(button);
    }
    pageLayout->addLayout(editRow);

    msfgVariable[Index] = makeControl<FlexGrid>(page, "msfgVariable", Index);
    pageLayout->addWidget(label(lblSelected, QStringLiteral("Selected Variables"), msfgVariable[Index]));
    pageLayout->addWidget(msfgVariable[Index], 1);

    auto* totalsRow = new QHBoxLayout;
    lblTotalFor[2 * Index] = makeControl<QLabel>(page, "lblTotalFor", 2 * Index);
    lblTotalFor[2 * Index + 1] = makeControl<QLabel>(page, "lblTotalFor", 2 * Index + 1);
    for (QLabel* total : {lblTotalFor[2 * Index], lblTotalFor[2 * Index + 1]})
    {
        total->setText(QStringLiteral("0"));
        total->setMinimumWidth(total->fontMetrics().horizontalAdvance(QStringLiteral("000")));
        total->setFrameShape(QFrame::StyledPanel);
        total->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    totalsRow->addWidget(label(lblGraphTotal, QStringLiteral("Total selected for graph"), nullptr));
    totalsRow->addWidget(lblTotalFor[2 * Index]);
    totalsRow->addSpacing(24);
    totalsRow->addWidget(label(lblTableTotal, QStringLiteral("Total selected for table"), nullptr));
    totalsRow->addWidget(lblTotalFor[2 * Index + 1]);
    totalsRow->addStretch(1);
    pageLayout->addLayout(totalsRow);
    return page;
}

void ReportTabsPanel::connectHandlers(int Index)
{
    const auto guarded = [this](auto handler) { RunGuarded(handler, m_host.MsgTitle()); };
    connect(cboReports[Index], &QComboBox::currentIndexChanged, this, [this, Index](int position) {
        if (position >= 0)
            cboReports_Click(Index);
    });
    connect(cboTable[Index], &QComboBox::currentIndexChanged, this, [this, Index, guarded](int position) {
        if (position >= 0)
            guarded([this, Index] { cboTable_Click(Index); });
    });
    connect(cboVariable[Index], &QComboBox::currentIndexChanged, this, [this, Index, guarded](int position) {
        if (position >= 0)
            guarded([this, Index] { cboVariable_Click(Index); });
    });
    for (int k = 2 * Index; k <= 2 * Index + 1; ++k)
        connect(chkShowIn[k], &QCheckBox::toggled, this, [this, k] { chkShowIn_Click(k); });
    connect(msfgVariable[Index], &FlexGrid::userSelectedRow, this,
            [this, Index, guarded] { guarded([this, Index] { msfgVariable_Click(Index); }); });
    connect(msfgVariable[Index], &FlexGrid::resized, this,
            [this, Index, guarded] { guarded([this, Index] { SizeGridColumns(Index); }); });
    connect(cmdVarAdd[Index], &QPushButton::clicked, this,
            [this, Index, guarded] { guarded([this, Index] { cmdVarAdd_Click(Index); }); });
    connect(cmdVarUpdate[Index], &QPushButton::clicked, this,
            [this, Index, guarded] { guarded([this, Index] { cmdVarUpdate_Click(Index); }); });
    connect(cmdVarRemove[Index], &QPushButton::clicked, this,
            [this, Index, guarded] { guarded([this, Index] { cmdVarRemove_Click(Index); }); });
}

int ReportTabsPanel::CurrentTab() const
{
    return sstabReportTabs->currentIndex();
}

void ReportTabsPanel::SetCurrentTab(int tab)
{
    sstabReportTabs->setCurrentIndex(tab);
}

void ReportTabsPanel::sstabReportTabs_Click()
{
    const int tab = CurrentTab();
    m_host.SetLoading(false);
    const qint32 id = WholeNumberOfZeroPrefixed(msfgVariable[tab]->Tag());
    const int found = FindComboItem(cboReports[tab], QVariant(id), true, false);
    if (found >= 0)
        ComboList::SetListIndex(cboReports[tab], found);
    m_host.SetLoading(false);
    UpdateSaveAsButton(tab);
}

void ReportTabsPanel::UpdateSaveAsButton(int Index)
{
    cmdSaveAs->setEnabled(blnCanEditReports && msfgVariable[Index]->Rows() >= 3);
}

void ReportTabsPanel::DisableEditing()
{
    for (QWidget* control : {static_cast<QWidget*>(cmdNew), static_cast<QWidget*>(cmdSave),
                             static_cast<QWidget*>(cmdSaveAs), static_cast<QWidget*>(cmdDelete)})
        control->setEnabled(false);
    for (int i = 0; i < TabCount; ++i)
    {
        cboTable[i]->setEnabled(false);
        cboVariable[i]->setEnabled(false);
        cmdVarAdd[i]->setEnabled(false);
        cmdVarUpdate[i]->setEnabled(false);
        cmdVarRemove[i]->setEnabled(false);
    }
    for (QCheckBox* box : chkShowIn)
        box->setEnabled(false);
}
