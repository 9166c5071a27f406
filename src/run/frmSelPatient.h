#pragma once

#include "components/ProgramState.h"
#include "platform/Recordset.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QTreeWidget>

// The result list of a subject search with several matches: one row per
// patient (ID, birth date, last, first and middle name), sortable by any
// column; Select (or a double-click, or Enter) takes the selected row,
// Cancel takes none. The choice is handed back through the four m_strSelPat
// members, all empty when nothing was chosen.
//
// The window is loaded on the first search that needs it and hidden, never
// unloaded, afterwards; each search fills it again from scratch.
class frmSelPatient final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmSelPatient)

public:
    // The list's columns in their run-time order.
    enum Column
    {
        ColID = 0,
        ColBirthday = 1,
        ColLastName = 2,
        ColFirstName = 3,
        ColMidName = 4,
        ColumnCount = 5
    };

    explicit frmSelPatient(ProgramState& state, QWidget* parent = nullptr);

    // Captions and the five columns with their headers, widths and alignment.
    void Form_Load();

    // Fills the list from the current record to the end of rs. True when the
    // list holds a row; the first row is then the selected one. Record-set
    // errors reach the caller.
    bool LoadResults(Recordset& rs);

    // A click on a column header: sorts by that column, ascending, or flips
    // the order when the list is sorted by it already. Texts are compared as
    // shown, without regard to case.
    void lvwPatients_ColumnClick(int column);
    void cmdSelect_Click();
    void cmdCancel_Click();

    // The column the list is sorted by (-1 while it keeps the search's order) and the order.
    int SortKey() const { return m_sortKey; }
    Qt::SortOrder SortOrder() const { return m_sortOrder; }

    QLabel* Label1 = nullptr;
    QTreeWidget* lvwPatients = nullptr;
    QPushButton* cmdSelect = nullptr;
    QPushButton* cmdCancel = nullptr;

    QString m_strSelPatID;
    QString m_strSelPatFirstName;
    QString m_strSelPatMidName;
    QString m_strSelPatLastName;

    // Escape and the close box act as Cancel.
    void reject() override;

    // The rows the list has room for at least, where the screen allows.
    static constexpr int kShownRows = 10;

private:
    void clearChoice();
    // Widens the columns to their texts and sizes the window to show the
    // rows, within the screen's available area.
    void FitToResults();

    ProgramState& m_state;
    int m_sortKey = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};
