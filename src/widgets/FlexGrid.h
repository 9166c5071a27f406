#pragma once

#include <QString>
#include <QTableWidget>

#include <vector>

// A text grid with the classic flex-grid model over QTableWidget:
//
// - Row 0 is the fixed header row (the table's horizontal header); data rows
//   are 1 .. Rows() - 1. Rows() counts the header row.
// - Row/Col name the current cell, RowSel/ColSel the other corner of the
//   selection. The current row may be the header row (0), e.g. after the grid
//   was emptied.
// - Widths and heights are in twips: 15 twips a pixel at 96 dpi, scaled with
//   the screen's logical dpi.
// - Column widths that were never set read as -1.
// - Cell alignments use the flex-grid numbers (flexAlignLeftCenter = 1 ...).
//
// A click or a keyboard move by the user to another row emits userSelectedRow
// after Row/RowSel have followed it; changes made by the program emit nothing.
class FlexGrid : public QTableWidget
{
    Q_OBJECT

public:
    enum Alignment
    {
        flexAlignLeftTop = 0,
        flexAlignLeftCenter = 1,
        flexAlignLeftBottom = 2,
        flexAlignCenterTop = 3,
        flexAlignCenterCenter = 4,
        flexAlignCenterBottom = 5,
        flexAlignRightTop = 6,
        flexAlignRightCenter = 7,
        flexAlignRightBottom = 8,
        flexAlignGeneral = 9
    };

    explicit FlexGrid(QWidget* parent = nullptr);

    int Rows() const { return rowCount() + 1; }
    void SetRows(int rows);
    int Cols() const { return columnCount(); }
    void SetCols(int cols);

    QString TextMatrix(int row, int col) const;
    void SetTextMatrix(int row, int col, const QString& text);

    int Row() const { return m_row; }
    void SetRow(int row);
    int Col() const { return m_col; }
    void SetCol(int col);
    int RowSel() const { return m_rowSel; }
    void SetRowSel(int row);
    int ColSel() const { return m_colSel; }
    void SetColSel(int col);

    // Twips.
    int ColWidth(int col) const;
    void SetColWidth(int col, int twips);
    int RowHeight(int row) const;
    int GridWidth() const;
    int GridHeight() const;

    // Alignment of the current cell (Row, Col).
    int CellAlignment() const;
    void SetCellAlignment(int alignment);

    // Whether the selection is painted as selected.
    bool HighLight() const { return m_highLight; }
    void SetHighLight(bool on);

    const QString& Tag() const { return m_tag; }
    void SetTag(const QString& tag) { m_tag = tag; }

    int TopRow() const;
    void SetTopRow(int row);
    bool RowIsVisible(int row) const;

    // Twips <-> pixels of this widget's screen.
    int TwipsToPixels(int twips) const;
    int PixelsToTwips(int pixels) const;

signals:
    void userSelectedRow(int row);
    void resized();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QTableWidgetItem* cellItem(int row, int col);
    const QTableWidgetItem* cellItem(int row, int col) const;
    void showSelection();
    void onCurrentCellChanged(int currentRow, int currentColumn);

    int m_row = 0;
    int m_col = 0;
    int m_rowSel = 0;
    int m_colSel = 0;
    bool m_highLight = true;
    bool m_updating = false;
    QString m_tag;
    std::vector<int> m_colWidths; // twips, -1 = never set
};
