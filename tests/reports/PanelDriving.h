#pragma once

#include "common/ModalDriver.h"
#include "reports/ReportTabsPanel.h"
#include "reports/frmSaveAs.h"

#include <QApplication>
#include <QTabBar>
#include <QTest>
#include <QTimer>

#include <functional>

// What a user does with the report panel, done through its controls.
namespace PanelDriving
{
// A mouse click in the middle of a button (a disabled one ignores it).
inline void click(QAbstractButton* button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

// Ticks or clears a check box by clicking it.
inline void tick(QCheckBox* box, bool checked)
{
    if (box->isChecked() != checked)
        box->click();
}

// Chooses the list item with this text, as a user does from the drop-down.
inline bool choose(QComboBox* list, const QString& text)
{
    const int index = list->findText(text);
    if (index < 0)
        return false;
    list->setCurrentIndex(index);
    return true;
}

// A click on a row of a grid (row 1 is the first variable row).
inline void clickRow(FlexGrid* grid, int row)
{
    grid->scrollTo(grid->model()->index(row - 1, 0));
    const QRect cell = grid->visualRect(grid->model()->index(row - 1, 1));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
}

// A click on the tab of the tab strip.
inline void clickTab(ReportTabsPanel& panel, int tab)
{
    QTabBar* bar = panel.sstabReportTabs->tabBar();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(tab).center());
}

// Picks a table and a variable, sets the two flags and presses Add.
inline void addVariable(ReportTabsPanel& panel, int tab, const QString& table, const QString& variable, bool graph,
                        bool inTable)
{
    if (!table.isEmpty())
        choose(panel.cboTable[tab], table);
    choose(panel.cboVariable[tab], variable);
    tick(panel.chkShowIn[2 * tab], graph);
    tick(panel.chkShowIn[2 * tab + 1], inTable);
    click(panel.cmdVarAdd[tab]);
}

// Runs `handle` on the modal window as soon as it is open (the caller then
// does what opens it); see ModalDriver::whenModal.
inline void whenModal(std::function<void(QWidget*)> handle, int attempts = 200)
{
    ModalDriver::whenModal(std::move(handle), attempts);
}

// Answers the "Save Report" window: types name and presses Save, or presses
// Cancel when name is empty.
inline void answerSaveAs(const QString& name)
{
    whenModal([name](QWidget* modal) {
        auto* dialog = qobject_cast<frmSaveAs*>(modal);
        if (!dialog)
            return;
        if (name.isEmpty())
        {
            click(dialog->cmdCancel);
            return;
        }
        dialog->txtName->setFocus();
        QTest::keyClicks(dialog->txtName, name);
        click(dialog->cmdSave);
    });
}

using Cells = QList<QStringList>;

// The variable rows of a grid, cell by cell.
inline Cells gridCells(const FlexGrid& grid)
{
    Cells cells;
    for (int r = 1; r <= grid.Rows() - 2; ++r)
    {
        QStringList row;
        for (int c = 0; c < grid.Cols(); ++c)
            row.append(grid.TextMatrix(r, c));
        cells.append(row);
    }
    return cells;
}
} // namespace PanelDriving
