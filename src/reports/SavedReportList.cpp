// The saved-report lists of the tabs: listing at start-up and opening a
// definition into its tab's grid.
#include "reports/SavedReportList.h"

#include "components/QCReportStore.h"
#include "platform/MessageService.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "platform/SIUnitSetting.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "reports/NamedControls.h"
#include "reports/VariableEditor.h"
#include "widgets/ComboList.h"

#include <QSignalBlocker>

#include <memory>

namespace
{
constexpr qint32 NoSuchControlArrayElement = 340;

[[noreturn]] void noSuchTab(qint32 tab, const char* where)
{
    throw RuntimeError(NoSuchControlArrayElement, QLatin1String(where),
                       QStringLiteral("Control array element '%1' doesn't exist").arg(tab));
}

} // namespace

SavedReportList::SavedReportList(MainWindowHost& host, QTabWidget& tabs, const std::array<QWidget*, TabCount>& pages,
                                 const std::array<VariableEditor*, TabCount>& editors, QObject* parent)
    : QObject(parent)
    , m_host(host)
    , m_tabs(tabs)
    , m_editors(editors)
{
    for (int i = 0; i < TabCount; ++i)
    {
        cboReports[i] = NamedControls::MakeList(pages[i], "cboReports", i);
        connect(cboReports[i], &QComboBox::currentIndexChanged, this, [this, i](int position) {
            if (position >= 0)
                cboReports_Click(i);
        });
    }
}

void SavedReportList::ListSavedReports()
{
    for (int i = 0; i < TabCount; ++i)
    {
        ComboList::Clear(cboReports[i]);
        ComboList::AddItem(cboReports[i], QLatin1Char('(') + GetResourceText(4114) + QLatin1Char(')'));
        m_host.SetReportDirty(i, false);
    }

    auto store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    RecordsetPtr rs = store->ListReports();
    if (!rs)
        RaiseObjectNotSet(QStringLiteral("ListSavedReports"));
    try
    {
        while (!rs->IsEOF())
        {
            const QString name = TextOf(rs->Value(QStringLiteral("QCReportName")));
            const qint32 tab = WholeNumberOfZeroPrefixed(rs->Value(QStringLiteral("QCReportType")));
            if (tab < 0 || tab >= TabCount)
                noSuchTab(tab, "ListSavedReports");
            ComboList::AddItem(cboReports[tab], name);
            ComboList::SetItemData(cboReports[tab], cboReports[tab]->count() - 1,
                                   ToWholeNumber(rs->Value(QStringLiteral("QCReportID"))));
            rs->MoveNext();
            DoEvents();
        }
        rs->Close();
    }
    catch (const RuntimeError&)
    {
        if (rs->IsOpen())
            rs->Close();
        throw;
    }
}

void SavedReportList::SelectFirstReports()
{
    // The count includes the placeholder, so position 1 is asked for even on a
    // tab without saved definitions, where it does not exist.
    for (int t = 0; t < TabCount; ++t)
        ComboList::SetListIndex(cboReports[t], cboReports[t]->count() != 0 ? 1 : 0);
}

void SavedReportList::cboReports_Click(int Index)
{
    std::unique_ptr<QCReportStore> store;
    RecordsetPtr rs;
    try
    {
        QComboBox* list = cboReports[Index];
        if (list->currentIndex() == 0)
        {
            // The placeholder stands for a new definition.
            emit newDefinitionChosen(Index);
            return;
        }
        if (m_host.IsLoading())
            return;

        const bool ok = m_host.ConfirmDiscardChanges(Index, GetResourceText(4054));
        m_host.SetLoading(true);
        if (!ok)
        {
            // Back to the definition the grid still holds, without opening it again.
            const QSignalBlocker blocker(list);
            ComboList::SetListIndex(list, m_lngPrevReportIndex[Index]);
            m_host.SetLoading(false);
            return;
        }
        m_lngPrevReportIndex[Index] = list->currentIndex();
        const qint32 id = ComboList::ItemData(list, list->currentIndex());

        store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        emit deletableChosen(m_host.State().blnCanEditReports && store->CanDeleteReport(id, QString()));

        const bool siUnits = ReadSIUnitSetting();
        qint32 tab = 0;
        rs = store->OpenReport(id, siUnits, tab);
        if (!rs)
        {
            MsgBox(GetResourceText(4055), MsgStyle::Exclamation, m_host.MsgTitle());
            m_host.SetLoading(false);
            return;
        }
        if (rs->IsBOF() && rs->IsEOF())
        {
            MsgBox(GetResourceText(4056), MsgStyle::Exclamation, m_host.MsgTitle());
            rs->Close();
            m_host.SetLoading(false);
            return;
        }
        if (tab < 0 || tab >= TabCount)
            noSuchTab(tab, "cboReports_Click");

        VariableEditor& editor = *m_editors.at(std::size_t(tab));
        editor.LoadReportParameters(*rs);
        m_tabs.setCurrentIndex(tab);
        editor.SizeGridColumns();
        emit definitionLoaded(tab);
        editor.msfgVariable->SetTag(QString::number(id));
        editor.CountSelectedTotals();
        editor.UpdateVariableButtons();
        m_host.SetReportDirty(tab, false);
        rs->Close();
        m_host.SetLoading(false);
    }
    catch (const RuntimeError& error)
    {
        if (rs && rs->IsOpen())
            rs->Close();
        store.reset();
        MsgBox(error.description(), MsgStyle::Exclamation, m_host.MsgTitle());
        m_host.SetLoading(false);
    }
}
