// The selected-variables editor of a tab: the variable catalogue in the
// tab's lists, the grid of the definition's variables with the controls that
// show the chosen row, and Add / Update / Remove within the limits of nine
// variables in the graph and nine in the table.
#include "reports/VariableEditor.h"

#include "components/QCReportStore.h"
#include "platform/MessageService.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "platform/SIUnitSetting.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "reports/NamedControls.h"
#include "reports/VariableGridCells.h"
#include "widgets/ComboList.h"
#include "widgets/EventGuard.h"
#include "widgets/FindComboItem.h"

#include <QSignalBlocker>

#include <algorithm>
#include <limits>
#include <memory>

namespace
{
constexpr int kFlagColumnWidth = 630; // twips, the graph and table columns

constexpr qint32 InvalidProcedureCall = 5;

// The leftmost characters of text without the last `cut` ones; cutting more
// than there is, is an invalid argument.
QString withoutLast(const QString& text, qsizetype cut)
{
    if (cut > text.size())
        throw RuntimeError(InvalidProcedureCall, QStringLiteral("AddOrUpdateVariable"),
                           QStringLiteral("Invalid procedure call or argument"));
    return text.left(text.size() - cut);
}

// Removes grid row `row`; the current row keeps its number (or becomes the
// last row) and the removal is no choice of the user's.
void removeGridRow(FlexGrid* grid, int row)
{
    const int current = grid->Row();
    {
        const QSignalBlocker blocker(grid);
        grid->removeRow(row - 1);
    }
    grid->SetRow(std::min(current, grid->Rows() - 1));
}
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
// The parameter-row fields in grid column order.
const char* const kParameterFields[VariableGridCells::ColumnCount] = {
    "QCUserName", "ParamsUserName", "ParamsUnit", "ShowInGraph", "ShowInTable", "QCTableID", "ParamsDefID", "Decimal"};

// Trim(value & ""), with a Boolean written "True" or "False".
QString cellText(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    return TextOf(value).trimmed();
}

} // namespace

VariableEditor::VariableEditor(int tab, MainWindowHost& host, int& prevTableIndex, QWidget* page)
    : QObject(page)
    , m_tab(tab)
    , m_host(host)
    , m_intPrevTableIndex(prevTableIndex)
{
    const bool pf = tab == 0;
    cboTable = NamedControls::MakeList(page, "cboTable", tab);
    cboVariable = NamedControls::MakeList(page, "cboVariable", tab);
    cboVariable->setMinimumContentsLength(24);
    cboVarUnits = NamedControls::MakeList(page, "cboVarUnits", tab);
    cboVarDecPlaces = NamedControls::MakeList(page, "cboVarDecPlaces", tab);
    cboVarTest = NamedControls::MakeList(page, "cboVarTest", tab);
    for (QComboBox* hidden : {cboVarUnits, cboVarDecPlaces, cboVarTest})
        hidden->setVisible(false);

    chkShowIn[0] = NamedControls::Make<QCheckBox>(page, "chkShowIn", 2 * tab);
    chkShowIn[1] = NamedControls::Make<QCheckBox>(page, "chkShowIn", 2 * tab + 1);
    chkShowIn[0]->setText(pf ? QStringLiteral("Show In &Graph") : QStringLiteral("Show In Graph"));
    chkShowIn[1]->setText(pf ? QStringLiteral("Show In &Table") : QStringLiteral("Show In Table"));

    cmdVarAdd = NamedControls::Make<QPushButton>(page, "cmdVarAdd", tab);
    cmdVarUpdate = NamedControls::Make<QPushButton>(page, "cmdVarUpdate", tab);
    cmdVarRemove = NamedControls::Make<QPushButton>(page, "cmdVarRemove", tab);
    cmdVarAdd->setText(QStringLiteral("&Add"));
    cmdVarUpdate->setText(QStringLiteral("&Update"));
    cmdVarRemove->setText(QStringLiteral("Remove"));
    for (QPushButton* button : {cmdVarAdd, cmdVarUpdate, cmdVarRemove})
        button->setAutoDefault(false);

    msfgVariable = NamedControls::Make<FlexGrid>(page, "msfgVariable", tab);

    lblTotalFor[0] = NamedControls::Make<QLabel>(page, "lblTotalFor", 2 * tab);
    lblTotalFor[1] = NamedControls::Make<QLabel>(page, "lblTotalFor", 2 * tab + 1);
    for (QLabel* total : lblTotalFor)
    {
        total->setText(QStringLiteral("0"));
        total->setMinimumWidth(total->fontMetrics().horizontalAdvance(QStringLiteral("000")));
        total->setFrameShape(QFrame::StyledPanel);
        total->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    connectHandlers();
}

void VariableEditor::connectHandlers()
{
    const auto guarded = [this](auto handler) { RunGuarded(handler, m_host.MsgTitle()); };
    connect(cboTable, &QComboBox::currentIndexChanged, this, [this, guarded](int position) {
        if (position >= 0)
            guarded([this] { cboTable_Click(); });
    });
    connect(cboVariable, &QComboBox::currentIndexChanged, this, [this, guarded](int position) {
        if (position >= 0)
            guarded([this] { cboVariable_Click(); });
    });
    for (QCheckBox* box : chkShowIn)
        connect(box, &QCheckBox::toggled, this, [this] { chkShowIn_Click(); });
    connect(msfgVariable, &FlexGrid::userSelectedRow, this,
            [this, guarded] { guarded([this] { msfgVariable_Click(); }); });
    connect(msfgVariable, &FlexGrid::resized, this, [this, guarded] { guarded([this] { SizeGridColumns(); }); });
    connect(cmdVarAdd, &QPushButton::clicked, this, [this, guarded] { guarded([this] { cmdVarAdd_Click(); }); });
    connect(cmdVarUpdate, &QPushButton::clicked, this, [this, guarded] { guarded([this] { cmdVarUpdate_Click(); }); });
    connect(cmdVarRemove, &QPushButton::clicked, this, [this, guarded] { guarded([this] { cmdVarRemove_Click(); }); });
}

void VariableEditor::PrepareGrid()
{
    FlexGrid* grid = msfgVariable;
    grid->SetCols(VariableGridCells::ColumnCount);
    grid->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    // The identity columns travel with the rows but are never shown.
    for (int c = VariableGridCells::TableIdColumn; c < VariableGridCells::ColumnCount; ++c)
        grid->setColumnHidden(c, true);
    for (int c = 0; c < VariableGridCells::ColumnCount; ++c)
        grid->SetTextMatrix(0, c, GetResourceText(qint16(4067 + c)));
    SizeGridColumns();
    grid->SetRows(2);
}

bool VariableEditor::ShowSelectedVariable(int Row)
{
    FlexGrid* grid = msfgVariable;
    if (Row < 1)
        return false;
    if (Row >= grid->Rows() - 1)
    {
        // The blank last row stands for the last variable row.
        Row = grid->Rows() - 2;
        if (Row == 0)
            return false;
    }
    grid->SetRow(Row);
    grid->SetRowSel(Row);
    grid->SetCol(0);
    grid->SetColSel(VariableGridCells::ColumnCount - 1);

    ComboList::SetListIndex(cboVariable, FindComboItem(cboVariable, VariableGridCells::VarID(*grid, Row), true, false));
    ComboList::SetListIndex(cboVarUnits, FindComboItem(cboVarUnits, VariableGridCells::Unit(*grid, Row), false, false));
    ComboList::SetListIndex(cboTable, FindComboItem(cboTable, VariableGridCells::TableID(*grid, Row), true, false));

    chkShowIn[0]->setChecked(VariableGridCells::InGraph(*grid, Row));
    chkShowIn[1]->setChecked(VariableGridCells::InTable(*grid, Row));

    UpdateVariableButtons();
    return true;
}

void VariableEditor::UpdateVariableButtons()
{
    if (!m_host.State().blnCanEditReports)
    {
        cmdVarAdd->setEnabled(false);
        cmdVarUpdate->setEnabled(false);
        cmdVarRemove->setEnabled(false);
        return;
    }
    const FlexGrid* grid = msfgVariable;
    const bool canAdd = cboVariable->currentIndex() >= 0 && cboTable->currentIndex() >= 0;
    const bool rowChosen = grid->Row() >= 1 && grid->Row() < grid->Rows() - 1 && grid->Rows() >= 3;
    cmdVarAdd->setEnabled(canAdd);
    cmdVarUpdate->setEnabled(canAdd && rowChosen);
    cmdVarRemove->setEnabled(rowChosen);
    msfgVariable->SetHighLight(grid->Rows() >= 3);
}

void VariableEditor::CountSelectedTotals(std::array<qint32, 2>& Counts)
{
    Counts = VariableGridCells::CountAsBooleans(*msfgVariable);
    lblTotalFor[0]->setText(QString::number(Counts[0]));
    lblTotalFor[1]->setText(QString::number(Counts[1]));
}

void VariableEditor::CountSelectedTotals()
{
    std::array<qint32, 2> counts{};
    CountSelectedTotals(counts);
}

void VariableEditor::SizeGridColumns()
{
    FlexGrid* grid = msfgVariable;
    const qint64 rowsHeight = qint64(grid->RowHeight(1)) * grid->Rows();
    if (rowsHeight > std::numeric_limits<qint32>::max())
        throw RuntimeError(ErrorNumber::Overflow, QStringLiteral("SizeGridColumns"), QStringLiteral("Overflow"));
    const bool overflow = grid->GridHeight() - 45 < rowsHeight;

    grid->SetColWidth(3, kFlagColumnWidth);
    grid->SetColWidth(4, kFlagColumnWidth);
    double width = double(grid->GridWidth()) - grid->ColWidth(3) - grid->ColWidth(4) - 90;
    if (overflow)
        width -= 250; // room for the vertical scroll bar
    grid->SetColWidth(0, RoundToInt32(width / 4));
    grid->SetColWidth(1, RoundToInt32(width / 2));
    grid->SetColWidth(2, RoundToInt32(width / 4));
}

void VariableEditor::chkShowIn_Click()
{
    emit showInClicked();
}

void VariableEditor::msfgVariable_Click()
{
    ShowSelectedVariable(msfgVariable->RowSel());
}

void VariableEditor::cmdVarAdd_Click()
{
    AddOrUpdateVariable(true);
}

void VariableEditor::cmdVarUpdate_Click()
{
    AddOrUpdateVariable(false);
}

void VariableEditor::AddOrUpdateVariable(bool blnAdd)
{
    const bool graph = chkShowIn[0]->isChecked();
    const bool table = chkShowIn[1]->isChecked();

    // The counters decide. The row being updated counts too, so a row already
    // shown in a full graph (or table) cannot be updated while it keeps its flag.
    if (WholeNumberOfZeroPrefixed(lblTotalFor[0]->text()) >= kMaxVariables && graph)
    {
        MsgBox(GetResourceText(4078) + QStringLiteral(": ") + QString::number(kMaxVariables), MsgStyle::Exclamation,
               m_host.MsgTitle());
        return;
    }
    if (WholeNumberOfZeroPrefixed(lblTotalFor[1]->text()) >= kMaxVariables && table)
    {
        MsgBox(GetResourceText(4079) + QStringLiteral(": ") + QString::number(kMaxVariables), MsgStyle::Exclamation,
               m_host.MsgTitle());
        return;
    }

    FlexGrid* grid = msfgVariable;
    int row = 0;
    if (blnAdd)
    {
        // The blank last row becomes the new variable's row; a new blank row follows.
        grid->SetRows(grid->Rows() + 1);
        row = grid->Rows() - 2;
    }
    else
    {
        row = grid->Row();
    }

    // The variable list shows "name (unit)"; the grid keeps name and unit apart.
    const QString unit = cboVarUnits->currentText();
    const QString test = cboVarTest->currentText();
    QString name = cboVariable->currentText();
    if (!unit.isEmpty())
        name = withoutLast(name, unit.size() + 3);
    if (!test.isEmpty())
        name = withoutLast(name, test.size() + 1);

    QComboBox* tables = cboTable;
    QComboBox* variables = cboVariable;
    // The decimal places list runs parallel to the variable list.
    VariableGridCells::WriteTexts(*grid, row,
                                  {tables->currentText(), name, unit, VariableGridCells::FlagText(graph),
                                   VariableGridCells::FlagText(table),
                                   QString::number(ComboList::ItemData(tables, tables->currentIndex())),
                                   QString::number(ComboList::ItemData(variables, variables->currentIndex())),
                                   cboVarDecPlaces->itemText(variables->currentIndex())});

    grid->SetRow(row);
    grid->SetCol(2);
    grid->SetCellAlignment(FlexGrid::flexAlignLeftCenter);
    grid->SetRow(row);
    grid->SetRowSel(row);
    grid->SetCol(0);
    grid->SetColSel(grid->Cols() - 1);
    if (!grid->RowIsVisible(row))
        grid->SetTopRow(row);

    CountSelectedTotals();
    SizeGridColumns();
    UpdateVariableButtons();
    m_host.SetReportDirty(m_tab, true);
    emit rowsChanged();
}

void VariableEditor::cmdVarRemove_Click()
{
    FlexGrid* grid = msfgVariable;
    if (grid->Row() < grid->Rows() - 1)
        removeGridRow(grid, grid->Row());
    SizeGridColumns();
    // Removing the last variable row leaves the blank row current: the row
    // above it is shown instead.
    if (grid->Row() == grid->Rows() - 1 && grid->Rows() - 2 >= 1)
    {
        const int last = grid->Rows() - 2;
        grid->SetRow(last);
        grid->SetRowSel(last);
        grid->SetCol(0);
        grid->SetColSel(VariableGridCells::ColumnCount - 1);
    }
    UpdateVariableButtons();
    CountSelectedTotals();
    m_host.SetReportDirty(m_tab, true);
    emit rowsChanged();
}

bool VariableEditor::LoadVariableCatalogue()
{
    std::unique_ptr<QCReportStore> store;
    RecordsetPtr rs;
    try
    {
        const bool siUnits = ReadSIUnitSetting();
        store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        rs = store->ListTables(qint16(m_tab));
        if (rs)
        {
            ComboList::Clear(cboTable);
            if (!rs->IsBOF())
                rs->MoveFirst();
            while (!rs->IsEOF())
            {
                appendItem(cboTable, TextOf(rs->Value(QStringLiteral("QCUserName"))),
                           ToWholeNumber(rs->Value(QStringLiteral("QCTableID"))));
                rs->MoveNext();
                DoEvents();
            }
            ComboList::SetListIndex(cboTable, 0);
            rs->Close();
        }

        rs = store->ListVariables(siUnits, qint16(m_tab));
        for (QComboBox* list : {cboVarUnits, cboVarDecPlaces, cboVarTest, cboVariable})
            ComboList::Clear(list);
        if (rs)
        {
            if (!rs->IsBOF())
                rs->MoveFirst();
            while (!rs->IsEOF())
            {
                const QString unit = TextOf(rs->Value(QStringLiteral("VarUnit")));
                appendItem(cboVariable, variableCaption(TextOf(rs->Value(QStringLiteral("VarUserName"))), unit),
                           ToWholeNumber(rs->Value(QStringLiteral("VarID"))));
                ComboList::AddItem(cboVarDecPlaces, numberText(rs->Value(QStringLiteral("DecimalPlaces"))));
                ComboList::AddItem(cboVarUnits, unit);
                rs->MoveNext();
                DoEvents();
            }
            ComboList::SetListIndex(cboVariable, 0);
            rs->Close();
        }
        return true;
    }
    catch (const RuntimeError& error)
    {
        if (rs && rs->IsOpen())
            rs->Close();
        store.reset();
        // The start-up ends after this box; its details say what failed where.
        MsgBox(error.description(), MsgStyle::Critical, m_host.MsgTitle(),
               RuntimeErrorDetail(error, QStringLiteral("loading the variable catalogue of tab %1").arg(m_tab)));
        return false;
    }
}

void VariableEditor::cboVariable_Click()
{
    ComboList::SetListIndex(cboVarUnits, cboVariable->currentIndex());
    UpdateVariableButtons();
}

void VariableEditor::cboTable_Click()
{
    if (ApplyTableToAllVariables())
        m_intPrevTableIndex = cboTable->currentIndex();
    else
        ComboList::SetListIndex(cboTable, m_intPrevTableIndex);
    UpdateVariableButtons();
}

bool VariableEditor::ApplyTableToAllVariables()
{
    // Only the pulmonary function tab takes all its variables from one table;
    // on the gas exchange tab each variable keeps its own.
    if (m_tab != 0)
        return true;
    FlexGrid* grid = msfgVariable;
    QComboBox* table = cboTable;
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

void VariableEditor::LoadReportParameters(Recordset& rs)
{
    FlexGrid* grid = msfgVariable;
    grid->SetRows(1);
    grid->SetRows(2);
    while (!rs.IsEOF())
    {
        grid->SetRows(grid->Rows() + 1);
        const int row = grid->Rows() - 2;
        std::array<QString, VariableGridCells::ColumnCount> texts;
        for (int c = 0; c < VariableGridCells::ColumnCount; ++c)
            texts[std::size_t(c)] = cellText(rs.Value(QLatin1String(kParameterFields[c])));
        VariableGridCells::WriteTexts(*grid, row, texts);
        grid->SetRow(row);
        grid->SetCol(2);
        grid->SetCellAlignment(FlexGrid::flexAlignLeftCenter);
        rs.MoveNext();
    }
    ShowSelectedVariable(1);
}

void VariableEditor::Clear()
{
    ComboList::SetListIndex(cboTable, 0);
    ComboList::SetListIndex(cboVariable, 0);

    FlexGrid* grid = msfgVariable;
    grid->SetRows(1);
    grid->SetRows(2);
    grid->SetRow(0);
    const bool rowChosen = grid->Row() >= 1 && grid->Row() < grid->Rows() - 1 && grid->Rows() > 2;
    cmdVarRemove->setEnabled(rowChosen);
    cmdVarUpdate->setEnabled(rowChosen);
    // The counters follow the emptied grid (the limits of nine are checked
    // against the counters).
    CountSelectedTotals();
}

qint32 VariableEditor::CountSelectedVariables() const
{
    return VariableGridCells::CountShownAnywhere(*msfgVariable);
}

std::array<qint32, 2> VariableEditor::CountShownVariables() const
{
    return VariableGridCells::CountShown(*msfgVariable);
}

QList<SelectedVariable> VariableEditor::Rows() const
{
    QList<SelectedVariable> rows;
    for (int r = 1; r <= VariableGridCells::RowCount(*msfgVariable); ++r)
        rows.append(VariableGridCells::Read(*msfgVariable, r));
    return rows;
}

void VariableEditor::DisableEditing()
{
    for (QWidget* control : std::initializer_list<QWidget*>{cboTable, cboVariable, cmdVarAdd, cmdVarUpdate,
                                                            cmdVarRemove, chkShowIn[0], chkShowIn[1]})
        control->setEnabled(false);
}

void VariableEditor::EnableEditing()
{
    for (QWidget* control : std::initializer_list<QWidget*>{cboTable, cboVariable, chkShowIn[0], chkShowIn[1]})
        control->setEnabled(true);
    UpdateVariableButtons();
}
