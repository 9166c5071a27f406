#include "widgets/FlexGrid.h"

#include <QHeaderView>
#include <QItemSelection>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QPalette>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kTwipsPerInch = 1440;

Qt::Alignment toQtAlignment(int flex)
{
    switch (flex)
    {
    case FlexGrid::flexAlignLeftTop:
        return Qt::AlignLeft | Qt::AlignTop;
    case FlexGrid::flexAlignLeftCenter:
        return Qt::AlignLeft | Qt::AlignVCenter;
    case FlexGrid::flexAlignLeftBottom:
        return Qt::AlignLeft | Qt::AlignBottom;
    case FlexGrid::flexAlignCenterTop:
        return Qt::AlignHCenter | Qt::AlignTop;
    case FlexGrid::flexAlignCenterCenter:
        return Qt::AlignHCenter | Qt::AlignVCenter;
    case FlexGrid::flexAlignCenterBottom:
        return Qt::AlignHCenter | Qt::AlignBottom;
    case FlexGrid::flexAlignRightTop:
        return Qt::AlignRight | Qt::AlignTop;
    case FlexGrid::flexAlignRightCenter:
        return Qt::AlignRight | Qt::AlignVCenter;
    case FlexGrid::flexAlignRightBottom:
        return Qt::AlignRight | Qt::AlignBottom;
    default:
        return {};
    }
}

int toFlexAlignment(int qtAlignment)
{
    for (int flex = FlexGrid::flexAlignLeftTop; flex <= FlexGrid::flexAlignRightBottom; ++flex)
    {
        if (qtAlignment != 0 && int(toQtAlignment(flex)) == qtAlignment)
            return flex;
    }
    return FlexGrid::flexAlignGeneral;
}
} // namespace

FlexGrid::FlexGrid(QWidget* parent)
    : QTableWidget(parent)
{
    // A new grid has a header row, one data row and two columns.
    setRowCount(1);
    setColumnCount(2);
    m_colWidths.assign(2, -1);
    verticalHeader()->hide();
    // Rows as high as a line of text with a little room, not the style's roomier default.
    verticalHeader()->setMinimumSectionSize(fontMetrics().height() + 4);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(false);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setWordWrap(false);
    // Tab moves on to the next control, as in a form; the arrow keys move within the grid.
    setTabKeyNavigation(false);
    setCornerButtonEnabled(false);

    connect(this, &QTableWidget::currentCellChanged, this,
            [this](int currentRow, int currentColumn, int, int) { onCurrentCellChanged(currentRow, currentColumn); });
}

void FlexGrid::SetRows(int rows)
{
    rows = std::max(rows, 1);
    m_updating = true;
    setRowCount(rows - 1);
    m_updating = false;
    m_row = std::min(m_row, rows - 1);
    m_rowSel = std::min(m_rowSel, rows - 1);
    showSelection();
}

void FlexGrid::SetCols(int cols)
{
    cols = std::max(cols, 1);
    m_updating = true;
    setColumnCount(cols);
    m_updating = false;
    m_colWidths.resize(std::size_t(cols), -1);
    m_col = std::min(m_col, cols - 1);
    m_colSel = std::min(m_colSel, cols - 1);
}

QTableWidgetItem* FlexGrid::cellItem(int row, int col)
{
    if (row == 0)
    {
        QTableWidgetItem* header = horizontalHeaderItem(col);
        if (!header)
        {
            header = new QTableWidgetItem;
            setHorizontalHeaderItem(col, header);
        }
        return header;
    }
    QTableWidgetItem* cell = item(row - 1, col);
    if (!cell)
    {
        cell = new QTableWidgetItem;
        cell->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        setItem(row - 1, col, cell);
    }
    return cell;
}

const QTableWidgetItem* FlexGrid::cellItem(int row, int col) const
{
    return row == 0 ? horizontalHeaderItem(col) : item(row - 1, col);
}

QString FlexGrid::TextMatrix(int row, int col) const
{
    const QTableWidgetItem* cell = cellItem(row, col);
    return cell ? cell->text() : QString();
}

void FlexGrid::SetTextMatrix(int row, int col, const QString& text)
{
    if (row < 0 || row >= Rows() || col < 0 || col >= Cols())
        return;
    cellItem(row, col)->setText(text);
}

void FlexGrid::SetRow(int row)
{
    m_row = std::clamp(row, 0, Rows() - 1);
    m_rowSel = m_row;
    showSelection();
}

void FlexGrid::SetCol(int col)
{
    m_col = std::clamp(col, 0, Cols() - 1);
    m_colSel = m_col;
    showSelection();
}

void FlexGrid::SetRowSel(int row)
{
    m_rowSel = std::clamp(row, 0, Rows() - 1);
    showSelection();
}

void FlexGrid::SetColSel(int col)
{
    m_colSel = std::clamp(col, 0, Cols() - 1);
    showSelection();
}

int FlexGrid::TwipsToPixels(int twips) const
{
    return int(std::lround(double(twips) * logicalDpiX() / kTwipsPerInch));
}

int FlexGrid::PixelsToTwips(int pixels) const
{
    return int(std::lround(double(pixels) * kTwipsPerInch / logicalDpiX()));
}

int FlexGrid::ColWidth(int col) const
{
    if (col < 0 || col >= int(m_colWidths.size()))
        return -1;
    return m_colWidths[std::size_t(col)];
}

void FlexGrid::SetColWidth(int col, int twips)
{
    if (col < 0 || col >= Cols())
        return;
    m_colWidths[std::size_t(col)] = twips;
    setColumnWidth(col, TwipsToPixels(std::max(twips, 0)));
}

int FlexGrid::RowHeight(int row) const
{
    if (row == 0)
        return PixelsToTwips(horizontalHeader()->height());
    if (row >= 1 && row < Rows())
        return PixelsToTwips(rowHeight(row - 1));
    return PixelsToTwips(verticalHeader()->defaultSectionSize());
}

int FlexGrid::GridWidth() const
{
    return PixelsToTwips(width());
}

int FlexGrid::GridHeight() const
{
    return PixelsToTwips(height());
}

int FlexGrid::CellAlignment() const
{
    const QTableWidgetItem* cell = cellItem(m_row, m_col);
    return cell ? toFlexAlignment(cell->textAlignment()) : flexAlignGeneral;
}

void FlexGrid::SetCellAlignment(int alignment)
{
    QTableWidgetItem* cell = cellItem(m_row, m_col);
    const Qt::Alignment qt = toQtAlignment(alignment);
    if (qt)
        cell->setTextAlignment(qt);
    else
        cell->setData(Qt::TextAlignmentRole, QVariant());
}

void FlexGrid::SetHighLight(bool on)
{
    if (m_highLight == on)
        return;
    m_highLight = on;
    QPalette pal = palette();
    if (on)
    {
        pal.setBrush(QPalette::Highlight, QPalette().brush(QPalette::Highlight));
        pal.setBrush(QPalette::HighlightedText, QPalette().brush(QPalette::HighlightedText));
    }
    else
    {
        pal.setBrush(QPalette::Highlight, pal.brush(QPalette::Base));
        pal.setBrush(QPalette::HighlightedText, pal.brush(QPalette::Text));
    }
    setPalette(pal);
}

int FlexGrid::TopRow() const
{
    const int first = rowAt(0);
    return first < 0 ? 1 : first + 1;
}

void FlexGrid::SetTopRow(int row)
{
    if (row < 1 || row >= Rows())
        return;
    scrollTo(model()->index(row - 1, 0), QAbstractItemView::PositionAtTop);
}

bool FlexGrid::RowIsVisible(int row) const
{
    if (row == 0)
        return true;
    if (row < 0 || row >= Rows())
        return false;
    const QRect rect = visualRect(model()->index(row - 1, 0));
    return rect.top() >= 0 && rect.bottom() < viewport()->height();
}

void FlexGrid::mousePressEvent(QMouseEvent* event)
{
    const int before = m_row;
    QTableWidget::mousePressEvent(event);
    // A press on the row that was already current moves nothing, yet the user
    // chose that row again.
    const int pressed = rowAt(event->position().toPoint().y());
    if (pressed >= 0 && pressed + 1 == before && m_row == before)
        emit userSelectedRow(m_row);
}

void FlexGrid::resizeEvent(QResizeEvent* event)
{
    QTableWidget::resizeEvent(event);
    emit resized();
}

void FlexGrid::showSelection()
{
    m_updating = true;
    QItemSelectionModel* selection = selectionModel();
    if (m_row >= 1 && m_row < Rows())
    {
        const int top = std::min(m_row, m_rowSel);
        const int bottom = std::max(m_row, m_rowSel);
        const int left = std::min(m_col, m_colSel);
        const int right = std::max(m_col, m_colSel);
        selection->setCurrentIndex(model()->index(m_row - 1, m_col), QItemSelectionModel::NoUpdate);
        QItemSelection range(model()->index(std::max(top, 1) - 1, left), model()->index(bottom - 1, right));
        selection->select(range, QItemSelectionModel::ClearAndSelect);
    }
    else
    {
        selection->clearSelection();
        selection->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
    }
    m_updating = false;
}

void FlexGrid::onCurrentCellChanged(int currentRow, int currentColumn)
{
    if (m_updating || currentRow < 0 || currentColumn < 0)
        return;
    // The user moved: the whole row becomes the selection. A move within the
    // current row chooses no other row.
    const bool otherRow = currentRow + 1 != m_row;
    m_row = currentRow + 1;
    m_rowSel = m_row;
    m_col = 0;
    m_colSel = Cols() - 1;
    if (otherRow)
        emit userSelectedRow(m_row);
}
