#include "common/TestMain.h"
#include "widgets/FlexGrid.h"

#include <QHeaderView>
#include <QSignalSpy>
#include <QTest>

class TestFlexGrid : public QObject
{
    Q_OBJECT

private slots:
    void newGridHasAHeaderRowAndOneDataRow()
    {
        FlexGrid grid;
        QCOMPARE(grid.Rows(), 2);
        QCOMPARE(grid.Cols(), 2);
        QCOMPARE(grid.rowCount(), 1);
        QCOMPARE(grid.ColWidth(0), -1);
    }

    void rowZeroIsTheHeader()
    {
        FlexGrid grid;
        grid.SetCols(3);
        grid.SetTextMatrix(0, 1, QStringLiteral("Variable"));
        grid.SetTextMatrix(1, 1, QStringLiteral("FVC"));
        QCOMPARE(grid.horizontalHeaderItem(1)->text(), QStringLiteral("Variable"));
        QCOMPARE(grid.item(0, 1)->text(), QStringLiteral("FVC"));
        QCOMPARE(grid.TextMatrix(0, 1), QStringLiteral("Variable"));
        QCOMPARE(grid.TextMatrix(1, 1), QStringLiteral("FVC"));
        QCOMPARE(grid.TextMatrix(1, 2), QString());
        QVERIFY(!(grid.item(0, 1)->flags() & Qt::ItemIsEditable));
    }

    void rowsCountTheHeaderAndKeepTheRestOfTheCells()
    {
        FlexGrid grid;
        grid.SetRows(4);
        grid.SetTextMatrix(2, 0, QStringLiteral("kept"));
        grid.SetTextMatrix(3, 0, QStringLiteral("dropped"));
        grid.SetRow(3);
        grid.SetRows(3);
        QCOMPARE(grid.rowCount(), 2);
        QCOMPARE(grid.TextMatrix(2, 0), QStringLiteral("kept"));
        QCOMPARE(grid.Row(), 2); // the current row follows the last one left
        grid.SetRows(1);
        QCOMPARE(grid.Rows(), 1);
        QCOMPARE(grid.Row(), 0);
        grid.SetRows(2);
        QCOMPARE(grid.TextMatrix(1, 0), QString());
    }

    void settingRowOrColCollapsesTheSelection()
    {
        FlexGrid grid;
        grid.SetRows(5);
        grid.SetCols(4);
        grid.SetRow(2);
        grid.SetRowSel(3);
        grid.SetCol(0);
        grid.SetColSel(3);
        QCOMPARE(grid.selectionModel()->selectedIndexes().size(), 8);
        QCOMPARE(grid.currentRow(), 1);
        grid.SetRow(4);
        QCOMPARE(grid.RowSel(), 4);
        QCOMPARE(grid.selectionModel()->selectedIndexes().size(), 4);
        grid.SetRow(0);
        QVERIFY(grid.selectionModel()->selectedIndexes().isEmpty());
    }

    void widthsAreTwips()
    {
        FlexGrid grid;
        grid.SetCols(3);
        grid.SetColWidth(1, 1500);
        QCOMPARE(grid.ColWidth(1), 1500);
        QCOMPARE(grid.columnWidth(1), grid.TwipsToPixels(1500));
        if (grid.logicalDpiX() == 96)
        {
            QCOMPARE(grid.columnWidth(1), 100);
            QCOMPARE(grid.PixelsToTwips(40), 600);
        }
        grid.resize(300, 200);
        QCOMPARE(grid.GridWidth(), grid.PixelsToTwips(300));
        QCOMPARE(grid.GridHeight(), grid.PixelsToTwips(200));
        QCOMPARE(grid.RowHeight(1), grid.PixelsToTwips(grid.rowHeight(0)));
    }

    void cellAlignmentOfTheCurrentCell()
    {
        FlexGrid grid;
        grid.SetRows(3);
        grid.SetRow(2);
        grid.SetCol(1);
        QCOMPARE(grid.CellAlignment(), int(FlexGrid::flexAlignGeneral));
        grid.SetCellAlignment(FlexGrid::flexAlignLeftCenter);
        QCOMPARE(grid.CellAlignment(), int(FlexGrid::flexAlignLeftCenter));
        QCOMPARE(grid.item(1, 1)->textAlignment(), int(Qt::AlignLeft | Qt::AlignVCenter));
        grid.SetCol(0);
        QCOMPARE(grid.CellAlignment(), int(FlexGrid::flexAlignGeneral));
    }

    void tagHoldsText()
    {
        FlexGrid grid;
        QCOMPARE(grid.Tag(), QString());
        grid.SetTag(QStringLiteral("42"));
        QCOMPARE(grid.Tag(), QStringLiteral("42"));
    }

    void userClickSelectsTheRowAndSignals()
    {
        FlexGrid grid;
        grid.SetRows(4);
        grid.SetCols(3);
        grid.resize(300, 300);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QSignalSpy spy(&grid, &FlexGrid::userSelectedRow);

        grid.SetRow(1); // the program's own changes say nothing
        QCOMPARE(spy.count(), 0);

        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(grid.model()->index(1, 1)).center());
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), 2);
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(grid.RowSel(), 2);
        QCOMPARE(grid.Col(), 0);
        QCOMPARE(grid.ColSel(), 2);

        // The same row again is chosen again.
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualRect(grid.model()->index(1, 0)).center());
        QCOMPARE(spy.count(), 2);
        QCOMPARE(spy.at(1).at(0).toInt(), 2);
    }

    void keyboardMoveSignalsTheNewRow()
    {
        FlexGrid grid;
        grid.SetRows(4);
        grid.resize(300, 300);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        grid.setFocus();
        grid.SetRow(1);
        QSignalSpy spy(&grid, &FlexGrid::userSelectedRow);
        QTest::keyClick(&grid, Qt::Key_Down);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(grid.Row(), 2);
    }

    void headerClicksDoNothing()
    {
        FlexGrid grid;
        grid.SetRows(3);
        grid.resize(300, 300);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QSignalSpy spy(&grid, &FlexGrid::userSelectedRow);
        QTest::mouseClick(grid.horizontalHeader()->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(spy.count(), 0);
        QVERIFY(grid.selectionModel()->selectedIndexes().isEmpty());
    }

    void topRowAndVisibility()
    {
        FlexGrid grid;
        grid.SetRows(60);
        grid.resize(300, 200);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QCOMPARE(grid.TopRow(), 1);
        QVERIFY(grid.RowIsVisible(1));
        QVERIFY(!grid.RowIsVisible(50));
        grid.SetTopRow(50);
        QVERIFY(grid.RowIsVisible(50));
        QCOMPARE(grid.TopRow(), 50);
        QVERIFY(!grid.RowIsVisible(1));
    }

    void highlightCanBeSwitchedOff()
    {
        FlexGrid grid;
        QVERIFY(grid.HighLight());
        grid.SetHighLight(false);
        QVERIFY(!grid.HighLight());
        QCOMPARE(grid.palette().color(QPalette::Highlight), grid.palette().color(QPalette::Base));
        grid.SetHighLight(true);
        QVERIFY(grid.palette().color(QPalette::Highlight) != grid.palette().color(QPalette::Base));
    }
};

CALVEX_TEST(TestFlexGrid)
#include "TestFlexGrid.moc"
