// The variable catalogue of a tab: the tables and variables a definition may
// use, in the lists of the tab.
#include "reports/ReportTabsPanel.h"

#include "components/QCReportStore.h"
#include "platform/MessageService.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "reports/SIUnitSetting.h"
#include "reports/VariableGridCells.h"
#include "widgets/ComboList.h"

#include <memory>

namespace
{
constexpr qint32 InvalidUseOfNull = 94;

// The list caption of a variable: its name, and " (unit)" when it has a unit.
QString variableCaption(const QString& name, const QString& unit)
{
    return unit.isEmpty() ? name : name + QStringLiteral(" (") + unit + QLatin1Char(')');
}

// A number field as text; a null cannot be turned into text.
QString numberText(const QVariant& value)
{
    if (value.isNull())
        throw RuntimeError(InvalidUseOfNull, QStringLiteral("LoadVariableCatalogue"),
                           QStringLiteral("Invalid use of Null"));
    return TextOf(value);
}

void appendItem(QComboBox* list, const QString& text, qint32 itemData)
{
    ComboList::AddItem(list, text);
    ComboList::SetItemData(list, list->count() - 1, itemData);
}
} // namespace

bool ReportTabsPanel::LoadVariableCatalogue(int Index)
{
    std::unique_ptr<QCReportStore> store;
    RecordsetPtr rs;
    try
    {
        const bool siUnits = ReadSIUnitSetting();
        store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        rs = store->ListTables(qint16(Index));
        if (rs)
        {
            ComboList::Clear(cboTable[Index]);
            if (!rs->IsBOF())
                rs->MoveFirst();
            while (!rs->IsEOF())
            {
                appendItem(cboTable[Index], TextOf(rs->Value(QStringLiteral("QCUserName"))),
                           ToWholeNumber(rs->Value(QStringLiteral("QCTableID"))));
                rs->MoveNext();
                DoEvents();
            }
            ComboList::SetListIndex(cboTable[Index], 0);
            rs->Close();
        }

        rs = store->ListVariables(siUnits, qint16(Index));
        for (QComboBox* list : {cboVarUnits[Index], cboVarDecPlaces[Index], cboVarTest[Index], cboVariable[Index]})
            ComboList::Clear(list);
        if (rs)
        {
            if (!rs->IsBOF())
                rs->MoveFirst();
            while (!rs->IsEOF())
            {
                const QString unit = TextOf(rs->Value(QStringLiteral("VarUnit")));
                appendItem(cboVariable[Index], variableCaption(TextOf(rs->Value(QStringLiteral("VarUserName"))), unit),
                           ToWholeNumber(rs->Value(QStringLiteral("VarID"))));
                ComboList::AddItem(cboVarDecPlaces[Index], numberText(rs->Value(QStringLiteral("DecimalPlaces"))));
                ComboList::AddItem(cboVarUnits[Index], unit);
                rs->MoveNext();
                DoEvents();
            }
            ComboList::SetListIndex(cboVariable[Index], 0);
            rs->Close();
        }
        return true;
    }
    catch (const RuntimeError& error)
    {
        if (rs && rs->IsOpen())
            rs->Close();
        store.reset();
        MsgBox(error.description(), MsgStyle::Critical, m_host.MsgTitle());
        return false;
    }
}

void ReportTabsPanel::cboVariable_Click(int Index)
{
    ComboList::SetListIndex(cboVarUnits[Index], cboVariable[Index]->currentIndex());
    UpdateVariableButtons(Index);
}

void ReportTabsPanel::cboTable_Click(int Index)
{
    if (ApplyTableToAllVariables(Index))
        m_intPrevTableIndex = cboTable[Index]->currentIndex();
    else
        ComboList::SetListIndex(cboTable[Index], m_intPrevTableIndex);
    UpdateVariableButtons(Index);
}

bool ReportTabsPanel::ApplyTableToAllVariables(int Index)
{
    // Only the pulmonary function tab takes all its variables from one table;
    // on the gas exchange tab each variable keeps its own.
    if (Index != 0)
        return true;
    FlexGrid* grid = msfgVariable[0];
    QComboBox* table = cboTable[0];
    if (grid->Rows() < 3)
        return true;
    if (VariableGridCells::TableName(*grid, 1) == table->currentText())
        return true;
    const qint32 tableId = ComboList::ItemData(table, table->currentIndex());
    for (int r = 1; r <= VariableGridCells::RowCount(*grid); ++r)
        VariableGridCells::SetTable(*grid, r, table->currentText(), tableId);
    m_host.SetReportDirty(0, true);
    return true;
}
