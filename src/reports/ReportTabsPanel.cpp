#include "reports/ReportTabsPanel.h"

#include "platform/VbConversions.h"
#include "reports/NamedControls.h"
#include "widgets/ComboList.h"
#include "widgets/EventGuard.h"
#include "widgets/FindComboItem.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

ReportTabsPanel::ReportTabsPanel(MainWindowHost& host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
{
    setObjectName(QStringLiteral("ReportTabsPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    sstabReportTabs = new QTabWidget(this);
    sstabReportTabs->setObjectName(QStringLiteral("sstabReportTabs"));
    // Each page holds its saved-report list first, then its editor's
    // controls, which is the order the Tab key walks them.
    std::array<QWidget*, TabCount> pages{};
    for (int i = 0; i < TabCount; ++i)
    {
        pages[i] = new QWidget;
        pages[i]->setObjectName(NamedControls::IndexedName("tabPage", i));
    }
    m_lists = new SavedReportList(m_host, *sstabReportTabs, pages, m_editors, this);
    cboReports = m_lists->cboReports;
    sstabReportTabs->addTab(buildTab(0, pages[0]), QStringLiteral("Pulmonary Function (PF)"));
    sstabReportTabs->addTab(buildTab(1, pages[1]), QStringLiteral("Gas Exchange (GX)"));
    layout->addWidget(sstabReportTabs, 1);

    m_request = std::make_unique<ReportRequestBuilder>(m_host, *sstabReportTabs, m_editors);
    m_commands = new ReportCommands(m_host, *sstabReportTabs, *m_lists, m_editors, *m_request, this);
    cmdNew = m_commands->cmdNew;
    cmdSave = m_commands->cmdSave;
    cmdSaveAs = m_commands->cmdSaveAs;
    cmdDelete = m_commands->cmdDelete;
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {cmdNew, cmdSave, cmdSaveAs, cmdDelete})
        buttons->addWidget(button);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    connect(sstabReportTabs, &QTabWidget::currentChanged, this, [this] {
        if (!m_host.IsLoading())
            RunGuarded([this] { sstabReportTabs_Click(); }, m_host.MsgTitle());
    });
}

QWidget* ReportTabsPanel::buildTab(int Index, QWidget* page)
{
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
        auto* lbl = NamedControls::Make<QLabel>(page, "Label1", number);
        lbl->setText(caption);
        if (buddy)
            lbl->setBuddy(buddy);
        Label1[number] = lbl;
        return lbl;
    };

    auto* editor = new VariableEditor(Index, m_host, m_intPrevTableIndex, page);
    m_editors[std::size_t(Index)] = editor;
    cboTable[Index] = editor->cboTable;
    cboVariable[Index] = editor->cboVariable;
    cboVarUnits[Index] = editor->cboVarUnits;
    cboVarDecPlaces[Index] = editor->cboVarDecPlaces;
    cboVarTest[Index] = editor->cboVarTest;
    chkShowIn[2 * Index] = editor->chkShowIn[0];
    chkShowIn[2 * Index + 1] = editor->chkShowIn[1];
    cmdVarAdd[Index] = editor->cmdVarAdd;
    cmdVarUpdate[Index] = editor->cmdVarUpdate;
    cmdVarRemove[Index] = editor->cmdVarRemove;
    lblTotalFor[2 * Index] = editor->lblTotalFor[0];
    lblTotalFor[2 * Index + 1] = editor->lblTotalFor[1];
    msfgVariable[Index] = editor->msfgVariable;
    // Save As follows the rows of the tab's grid; a "show in" box marks the
    // definition of the tab shown.
    connect(editor, &VariableEditor::rowsChanged, this, [this, Index] { m_commands->UpdateSaveAsButton(Index); });
    connect(editor, &VariableEditor::showInClicked, this, [this] { m_host.SetReportDirty(CurrentTab(), true); });

    auto* pageLayout = new QVBoxLayout(page);

    auto* reportsRow = new QHBoxLayout;
    reportsRow->addWidget(label(lblReports, QStringLiteral("Saved Reports:"), cboReports[Index]));
    reportsRow->addWidget(cboReports[Index], 1);
    pageLayout->addLayout(reportsRow);

    auto* pickRow = new QHBoxLayout;
    pickRow->addWidget(
        label(lblTable, pf ? QStringLiteral("Table for all variables:") : QStringLiteral("Table:"), cboTable[Index]));
    pickRow->addWidget(cboTable[Index], 1);
    pickRow->addSpacing(12);
    pickRow->addWidget(label(lblVariable, QStringLiteral("Variable:"), cboVariable[Index]));
    pickRow->addWidget(cboVariable[Index], 2);
    pageLayout->addLayout(pickRow);

    auto* editRow = new QHBoxLayout;
    editRow->addWidget(chkShowIn[2 * Index]);
    editRow->addWidget(chkShowIn[2 * Index + 1]);
    editRow->addStretch(1);
    for (QPushButton* button : {cmdVarAdd[Index], cmdVarUpdate[Index], cmdVarRemove[Index]})
        editRow->addWidget(button);
    pageLayout->addLayout(editRow);

    pageLayout->addWidget(label(lblSelected, QStringLiteral("Selected Variables:"), msfgVariable[Index]));
    pageLayout->addWidget(msfgVariable[Index], 1);

    auto* totalsRow = new QHBoxLayout;
    totalsRow->addWidget(label(lblGraphTotal, QStringLiteral("Total selected for graph:"), nullptr));
    totalsRow->addWidget(lblTotalFor[2 * Index]);
    totalsRow->addSpacing(24);
    totalsRow->addWidget(label(lblTableTotal, QStringLiteral("Total selected for table:"), nullptr));
    totalsRow->addWidget(lblTotalFor[2 * Index + 1]);
    totalsRow->addStretch(1);
    pageLayout->addLayout(totalsRow);
    return page;
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
    m_commands->UpdateSaveAsButton(tab);
}

void ReportTabsPanel::DisableEditing()
{
    m_commands->DisableEditing();
    for (VariableEditor* editor : m_editors)
        editor->DisableEditing();
}

void ReportTabsPanel::EnableEditing()
{
    cmdSave->setEnabled(true);
    for (VariableEditor* editor : m_editors)
        editor->EnableEditing();
    UpdateReportButtons();
}
