// New, Save, Save As and Delete of the current tab's definition, and the
// rules that enable their buttons.
#include "reports/ReportCommands.h"

#include "components/QCReportStore.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/modResource.h"
#include "reports/VariableEditor.h"
#include "reports/frmSaveAs.h"
#include "widgets/ComboList.h"
#include "widgets/EventGuard.h"

#include <QSignalBlocker>

#include <memory>

namespace
{
std::unique_ptr<QCReportStore> createStore()
{
    return ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
}

// Removes the selected item of a list without choosing another one: the list
// is left without selection and its handler does not run.
void removeSelectedItem(QComboBox* list)
{
    const QSignalBlocker blocker(list);
    list->removeItem(list->currentIndex());
    list->setCurrentIndex(-1);
}

QPushButton* makeButton(QWidget* parent, const char* name, const QString& caption)
{
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}
} // namespace

ReportCommands::ReportCommands(MainWindowHost& host, const QTabWidget& tabs, SavedReportList& lists,
                               const std::array<VariableEditor*, TabCount>& editors,
                               const ReportRequestBuilder& request, QWidget* parent)
    : QObject(parent)
    , m_host(host)
    , m_tabs(tabs)
    , m_lists(lists)
    , m_editors(editors)
    , m_request(request)
{
    cmdNew = makeButton(parent, "cmdNew", QStringLiteral("&New"));
    cmdSave = makeButton(parent, "cmdSave", QStringLiteral("&Save"));
    cmdSaveAs = makeButton(parent, "cmdSaveAs", QStringLiteral("Save &As"));
    cmdDelete = makeButton(parent, "cmdDelete", QStringLiteral("&Delete"));

    connect(cmdNew, &QPushButton::clicked, this, [this] { RunGuarded([this] { cmdNew_Click(); }, m_host.MsgTitle()); });
    // Save, Save As and Delete show their own errors.
    connect(cmdSave, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    connect(cmdSaveAs, &QPushButton::clicked, this, [this] { cmdSaveAs_Click(); });
    connect(cmdDelete, &QPushButton::clicked, this, [this] { cmdDelete_Click(); });

    connect(&m_lists, &SavedReportList::newDefinitionChosen, this, [this](int tab) { newDefinitionChosen(tab); });
    connect(&m_lists, &SavedReportList::deletableChosen, cmdDelete, &QPushButton::setEnabled);
    connect(&m_lists, &SavedReportList::definitionLoaded, this, [this](int tab) { UpdateSaveAsButton(tab); });
}

void ReportCommands::newDefinitionChosen(int tab)
{
    UpdateSaveAsButton(tab);
    cmdDelete->setEnabled(false);
    cmdNew_Click();
}

void ReportCommands::cmdNew_Click()
{
    const int tab = currentTab();
    if (!m_host.ConfirmDiscardChanges(tab, GetResourceText(4063)))
        return;

    // Leaving a saved definition for the placeholder runs this procedure once
    // more from the list's handler; both runs end in the same state.
    ComboList::SetListIndex(m_lists.cboReports[tab], 0);
    m_editors.at(std::size_t(tab))->Clear();
    UpdateSaveAsButton(tab);

    m_host.ResetDateRange();
    m_host.SetReportDirty(tab, false);
}

void ReportCommands::UpdateSaveAsButton(int Index)
{
    cmdSaveAs->setEnabled(m_host.State().blnCanEditReports &&
                          m_editors.at(std::size_t(Index))->msfgVariable->Rows() >= 3);
}

void ReportCommands::DisableEditing()
{
    for (QPushButton* button : {cmdNew, cmdSave, cmdSaveAs, cmdDelete})
        button->setEnabled(false);
}

qint32 ReportCommands::SaveReportDefinition(QCReportStore& store, const QString& Name)
{
    // An empty grid gives BuildReportInfo nothing to fill, not even the tab:
    // the record carries the current tab beforehand, so the definition is
    // filed where it was made.
    ReportInfo info;
    info.TestTab = qint16(currentTab());
    m_request.BuildReportInfo(qint16(currentTab()), info);
    return store.SaveReport(Name, info);
}

void ReportCommands::DeleteSelectedReport(QCReportStore& store)
{
    QComboBox* list = m_lists.cboReports[currentTab()];
    store.DeleteReport(ComboList::ItemData(list, list->currentIndex()), QString());
}

void ReportCommands::cmdSave_Click()
{
    // A save replaces the stored definition: the stored copy is deleted and
    // the grid saved anew under the list's text, with a new ID. The
    // placeholder is saved the same way (deleting ID 0 finds nothing).
    //
    // Both writes run in one store transaction, so that a failing save leaves
    // the stored definition and the list item as they were; the error is then
    // shown with the exclamation icon. That guard against data loss is the one
    // addition to what Save has always done.
    const int tab = currentTab();
    QComboBox* list = m_lists.cboReports[tab];
    std::unique_ptr<QCReportStore> store;
    bool inTransaction = false;
    try
    {
        store = createStore();
        store->BeginTrans();
        inTransaction = true;
        DeleteSelectedReport(*store);
        const QString name = list->currentText();
        const int position = list->currentIndex();
        const qint32 newId = SaveReportDefinition(*store, name);
        store->CommitTrans();
        inTransaction = false;
        ComboList::SetItemData(list, position, newId);
        m_host.SetReportDirty(tab, false);
    }
    catch (const RuntimeError& error)
    {
        if (inTransaction)
        {
            try
            {
                store->RollbackTrans();
            }
            catch (const RuntimeError&)
            {
                // The store undoes what it began when it is released.
            }
        }
        store.reset();
        MsgBox(error.description(), MsgStyle::Exclamation, m_host.MsgTitle());
        // Another workstation replaced or deleted the stored copy: the grid
        // holds what is stored nowhere, so it stays modified (leaving it
        // asks first) and Save As can keep it.
        if (error.number() == QCReportStore::ErrorDefinitionChanged)
            m_host.SetReportDirty(tab, true);
    }
}

void ReportCommands::cmdSaveAs_Click()
{
    const int tab = currentTab();
    std::unique_ptr<QCReportStore> store;
    try
    {
        QString name;
        qint32 newId = 0;
        for (bool saved = false; !saved;)
        {
            {
                frmSaveAs dialog(m_host.MsgTitle(), cmdSaveAs->window());
                // After a name taken meanwhile, the window opens again on it.
                dialog.txtName->setText(name);
                dialog.exec();
                name = dialog.m_strName;
            }
            if (name.isEmpty())
                return;

            store = createStore();
            try
            {
                newId = SaveReportDefinition(*store, name);
                saved = true;
            }
            catch (const RuntimeError& error)
            {
                // Another workstation saved the name after the window had
                // found it free: told as if it had been taken before.
                if (error.number() != QCReportStore::ErrorNameTaken)
                    throw;
                store.reset();
                MsgBox(GetResourceText(4091), MsgStyle::Exclamation, GetResourceText(4092));
            }
            store.reset();
        }
        // The new item is selected without opening it: the grid already holds it.
        QComboBox* list = m_lists.cboReports[tab];
        m_host.SetLoading(true);
        ComboList::AddItem(list, name);
        ComboList::SetItemData(list, list->count() - 1, newId);
        ComboList::SetListIndex(list, list->count() - 1);
        m_host.SetLoading(false);
        m_host.SetReportDirty(tab, false);
    }
    catch (const RuntimeError& error)
    {
        store.reset();
        MsgBox(error.description(), MsgStyle::Exclamation, m_host.MsgTitle());
        m_host.SetLoading(false);
    }
}

void ReportCommands::cmdDelete_Click()
{
    const int tab = currentTab();
    QComboBox* list = m_lists.cboReports[tab];
    std::unique_ptr<QCReportStore> store;
    try
    {
        const QString question =
            GetResourceText(4057) + QStringLiteral(" \"") + list->currentText() + QStringLiteral("\"?");
        if (MsgBox(question, MsgStyle::YesNo + MsgStyle::Question, GetResourceText(4058)) != MsgAnswer::Yes)
            return;
        store = createStore();
        DeleteSelectedReport(*store);
        store.reset();
        cmdDelete->setEnabled(false);
        removeSelectedItem(list);
        // The placeholder starts a new definition on the tab.
        ComboList::SetListIndex(list, 0);
    }
    catch (const RuntimeError& error)
    {
        store.reset();
        MsgBox(error.description(), MsgStyle::Exclamation, m_host.MsgTitle());
        m_host.SetLoading(false);
    }
}

void ReportCommands::UpdateReportButtons()
{
    if (m_host.State().blnCanEditReports)
    {
        EnableNewButton();
        UpdateSaveAsButton(currentTab());
        UpdateDeleteButton();
    }
    else
    {
        cmdNew->setEnabled(false);
        cmdSave->setEnabled(false);
        cmdSaveAs->setEnabled(false);
        cmdDelete->setEnabled(false);
    }
}

void ReportCommands::EnableNewButton()
{
    cmdNew->setEnabled(m_host.State().blnCanEditReports);
}

void ReportCommands::UpdateDeleteButton()
{
    QComboBox* list = m_lists.cboReports[currentTab()];
    const qint32 id = ComboList::ItemData(list, list->currentIndex());
    if (id > 0)
        cmdDelete->setEnabled(createStore()->CanDeleteReport(id, QString()));
    else
        cmdDelete->setEnabled(false);
}
