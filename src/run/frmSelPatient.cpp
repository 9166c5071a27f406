#include "run/frmSelPatient.h"

#include "components/modCalcObject.h"
#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "widgets/FitToScreen.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QStyle>
#include <QVBoxLayout>

#include <array>

namespace
{
struct ColumnLayout
{
    qint16 header; // text number of the header
    int twips;
    Qt::Alignment alignment;
};

const std::array<ColumnLayout, frmSelPatient::ColumnCount> kColumns{{
    {4097, 1440, Qt::AlignLeft},  // PatientIDNum
    {4098, 1260, Qt::AlignRight}, // Birthday
    {4099, 1440, Qt::AlignLeft},  // PatientLastName
    {4100, 1440, Qt::AlignLeft},  // PatientFirstName
    {4101, 1260, Qt::AlignLeft},  // PatientMidName
}};

// The record's fields in the list's column order.
const std::array<const char*, frmSelPatient::ColumnCount> kFields{"PatientIDNum", "Birthday", "PatientLastName",
                                                                  "PatientFirstName", "PatientMidName"};

// A row that sorts by the shown text of the list's sort column, without regard to case.
class PatientRow final : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    bool operator<(const QTreeWidgetItem& other) const override
    {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        return QString::compare(text(column), other.text(column), Qt::CaseInsensitive) < 0;
    }
};
} // namespace

frmSelPatient::frmSelPatient(ProgramState& state, QWidget* parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("frmSelPatient"));
    setWindowTitle(QStringLiteral("Search Results"));
    setModal(true);

    Label1 = new QLabel(QStringLiteral("Please select a patient:"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    lvwPatients = new QTreeWidget(this);
    lvwPatients->setObjectName(QStringLiteral("lvwPatients"));
    lvwPatients->setHeaderLabels({QStringLiteral("ID"), QStringLiteral("Last Name"), QStringLiteral("First Name"),
                                  QStringLiteral("Middle Name"), QStringLiteral("Birth Date")});
    lvwPatients->setRootIsDecorated(false);
    lvwPatients->setUniformRowHeights(true);
    lvwPatients->setAllColumnsShowFocus(true);
    lvwPatients->setSelectionMode(QAbstractItemView::SingleSelection);
    lvwPatients->setSelectionBehavior(QAbstractItemView::SelectRows);
    lvwPatients->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lvwPatients->header()->setSectionsClickable(true);
    lvwPatients->header()->setStretchLastSection(false);
    Label1->setBuddy(lvwPatients);

    cmdSelect = new QPushButton(QStringLiteral("&Select"), this);
    cmdSelect->setObjectName(QStringLiteral("cmdSelect"));
    cmdSelect->setDefault(true); // Enter in the list selects
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    cmdCancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(lvwPatients, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdSelect);
    buttons->addWidget(cmdCancel);
    layout->addLayout(buttons);
    setTabOrder(lvwPatients, cmdSelect);
    setTabOrder(cmdSelect, cmdCancel);

    connect(lvwPatients->header(), &QHeaderView::sectionClicked, this,
            [this](int column) { lvwPatients_ColumnClick(column); });
    connect(lvwPatients, &QTreeWidget::itemDoubleClicked, this, [this] { cmdSelect_Click(); });
    connect(cmdSelect, &QPushButton::clicked, this, [this] { cmdSelect_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
}

void frmSelPatient::Form_Load()
{
    setWindowTitle(GetResourceText(4094));
    Label1->setText(GetResourceText(4075) + QLatin1Char(':'));
    cmdSelect->setText(GetResourceText(4093));
    cmdCancel->setText(GetResourceText(4008));

    lvwPatients->clear();
    lvwPatients->setColumnCount(ColumnCount);
    auto* header = new QTreeWidgetItem;
    int width = 0;
    for (int c = 0; c < ColumnCount; ++c)
        header->setText(c, GetResourceText(kColumns[std::size_t(c)].header));
    lvwPatients->setHeaderItem(header);
    for (int c = 0; c < ColumnCount; ++c)
    {
        const ColumnLayout& column = kColumns[std::size_t(c)];
        header->setTextAlignment(c, column.alignment | Qt::AlignVCenter);
        const int pixels = column.twips * lvwPatients->logicalDpiX() / 1440;
        lvwPatients->setColumnWidth(c, pixels);
        width += pixels;
    }
    FitToScreen(*this, QSize(width + 2 * lvwPatients->frameWidth() + 40, height()));
}

bool frmSelPatient::LoadResults(Recordset& rs)
{
    lvwPatients->clear();
    // A new result list comes in the search's own order.
    m_sortKey = -1;
    m_sortOrder = Qt::AscendingOrder;
    lvwPatients->header()->setSortIndicatorShown(false);
    while (!rs.IsEOF())
    {
        auto* row = new PatientRow;
        for (int c = 0; c < ColumnCount; ++c)
        {
            row->setText(c, TextOf(rs.Value(QLatin1String(kFields[std::size_t(c)]))).trimmed());
            row->setTextAlignment(c, kColumns[std::size_t(c)].alignment | Qt::AlignVCenter);
        }
        lvwPatients->addTopLevelItem(row);
        rs.MoveNext();
    }
    if (lvwPatients->topLevelItemCount() == 0)
        return false;
    FitToResults();
    lvwPatients->setCurrentItem(lvwPatients->topLevelItem(0));
    lvwPatients->scrollToTop();
    lvwPatients->setFocus();
    return true;
}

void frmSelPatient::FitToResults()
{
    // Each column at least as wide as its layout width, wider where a text
    // or the header needs more.
    QHeaderView* header = lvwPatients->header();
    int columnsWidth = 0;
    for (int c = 0; c < ColumnCount; ++c)
    {
        const int layoutWidth = kColumns[std::size_t(c)].twips * lvwPatients->logicalDpiX() / 1440;
        lvwPatients->resizeColumnToContents(c);
        const int width = qMax(layoutWidth, lvwPatients->columnWidth(c));
        lvwPatients->setColumnWidth(c, width);
        columnsWidth += width;
    }

    // Room for every row, and for at least kShownRows; a list longer than
    // the screen scrolls.
    const int rows = qMax(kShownRows, lvwPatients->topLevelItemCount());
    const int rowHeight = lvwPatients->sizeHintForRow(0);
    const int frame = 2 * lvwPatients->frameWidth();
    const int scrollBar = lvwPatients->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, lvwPatients);
    const QSize listSize(columnsWidth + frame + scrollBar, header->sizeHint().height() + rows * rowHeight + frame);

    // The window around the list: its label, its buttons and the margins.
    const QSize around = (layout()->sizeHint() - lvwPatients->sizeHint()).expandedTo(QSize(0, 0));
    FitToScreen(*this, listSize + around);
}

void frmSelPatient::lvwPatients_ColumnClick(int column)
{
    if (column < 0 || column >= ColumnCount)
        return;
    if (m_sortKey == column)
    {
        m_sortOrder = m_sortOrder == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
    }
    else
    {
        m_sortKey = column;
        m_sortOrder = Qt::AscendingOrder;
    }
    lvwPatients->header()->setSortIndicatorShown(true);
    lvwPatients->sortItems(m_sortKey, m_sortOrder);
    if (QTreeWidgetItem* current = lvwPatients->currentItem())
        lvwPatients->scrollToItem(current);
}

void frmSelPatient::cmdSelect_Click()
{
    const QList<QTreeWidgetItem*> selected = lvwPatients->selectedItems();
    if (selected.isEmpty())
    {
        MsgBox(GetResourceText(4075), MsgStyle::Exclamation, GetResourceText(4096));
        lvwPatients->setFocus();
        m_strSelPatID.clear();
        return;
    }
    const QTreeWidgetItem* row = selected.first();
    m_strSelPatID = row->text(ColID);
    m_strSelPatLastName = row->text(ColLastName);
    m_strSelPatFirstName = row->text(ColFirstName);
    m_strSelPatMidName = row->text(ColMidName);

    const QString previous = m_state.strCurrentPatientID;
    m_state.strCurrentPatientID = m_strSelPatID;
    try
    {
        SetCurrentPatient(m_state);
    }
    catch (const RuntimeError& error)
    {
        // The engine did not take the subject: nothing is chosen, the list stays open.
        m_state.strCurrentPatientID = previous;
        clearChoice();
        MsgBox(error.description(), MsgStyle::Critical, GetResourceText(4096));
        lvwPatients->setFocus();
        return;
    }
    accept();
}

void frmSelPatient::cmdCancel_Click()
{
    clearChoice();
    QDialog::reject();
}

void frmSelPatient::reject()
{
    cmdCancel_Click();
}

void frmSelPatient::clearChoice()
{
    m_strSelPatID.clear();
    m_strSelPatFirstName.clear();
    m_strSelPatMidName.clear();
    m_strSelPatLastName.clear();
}
