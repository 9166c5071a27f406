#include "PanelFixture.h"

#include "common/TestMain.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "widgets/ComboList.h"

#include <QHeaderView>
#include <QTest>

class TestVariableEditor : public QObject
{
    Q_OBJECT

private:
    // The loaded panel shown with the grid of tab 0 600 by 300 pixels.
    static void showWithSmallGrid(PanelFixture& f)
    {
        f.load();
        f.grid(0).setFixedSize(600, 300);
        f.panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
    }

private slots:
    void headerRowIsNoVariable()
    {
        PanelFixture f;
        f.load();
        QVERIFY(!f.panel.ShowSelectedVariable(0, 0));
        QVERIFY(!f.panel.ShowSelectedVariable(0, -1));
    }

    void blankRowStandsForTheLastVariableRow()
    {
        PanelFixture f;
        f.load();
        QVERIFY(f.panel.ShowSelectedVariable(0, 3));
        QCOMPARE(f.grid(0).Row(), 2);
        QCOMPARE(f.grid(0).RowSel(), 2);
        QCOMPARE(f.grid(0).Col(), 0);
        QCOMPARE(f.grid(0).ColSel(), 7);
        QCOMPARE(f.panel.cboVariable[0]->currentText(), QStringLiteral("FEV1 (L)"));
    }

    void gridWithoutVariableRowsShowsNothing()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.panel.cmdNew_Click();
        QVERIFY(!f.panel.ShowSelectedVariable(0, 1));
    }

    void rowIsShownInTheEditors()
    {
        PanelFixture f;
        f.load();
        QVERIFY(f.panel.ShowSelectedVariable(0, 2));
        QCOMPARE(f.panel.cboVariable[0]->currentIndex(), 1);
        // The unit list goes to the first item with the row's unit, found without regard to case.
        QCOMPARE(f.panel.cboVarUnits[0]->currentIndex(), 0);
        QCOMPARE(f.panel.cboTable[0]->currentIndex(), 0);
        QVERIFY(f.panel.chkShowIn[0]->isChecked());
        QVERIFY(!f.panel.chkShowIn[1]->isChecked());
    }

    void showingARowWithOtherFlagsMarksTheDefinitionModified()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        QVERIFY(!f.host.modified[0]);
        QVERIFY(f.panel.ShowSelectedVariable(0, 2)); // row 1 has both flags, row 2 only the graph flag
        QVERIFY(f.host.modified[0]);
        QVERIFY(!f.host.modified[1]);
    }

    void flagsAreComparedExactly()
    {
        PanelFixture f;
        f.load();
        f.grid(0).SetTextMatrix(1, 3, QStringLiteral("true"));
        QVERIFY(f.panel.ShowSelectedVariable(0, 1));
        QVERIFY(!f.panel.chkShowIn[0]->isChecked());
    }

    void unknownTableLeavesTheTableListWithoutSelection()
    {
        PanelFixture f;
        f.load();
        f.grid(0).SetTextMatrix(1, 5, QStringLiteral("99"));
        QVERIFY(f.panel.ShowSelectedVariable(0, 1));
        QCOMPARE(f.panel.cboTable[0]->currentIndex(), -1);
        QVERIFY(!f.panel.cmdVarAdd[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarUpdate[0]->isEnabled());
        QVERIFY(f.panel.cmdVarRemove[0]->isEnabled());
        // No table chosen is no table change: the rows keep theirs.
        QCOMPARE(f.grid(0).TextMatrix(2, 0), QStringLiteral("Pre"));
    }

    void buttonsFollowTheListsAndTheCurrentRow()
    {
        PanelFixture f;
        f.load();
        FlexGrid& grid = f.grid(0);
        grid.SetRow(1);
        f.panel.UpdateVariableButtons(0);
        QVERIFY(f.panel.cmdVarAdd[0]->isEnabled());
        QVERIFY(f.panel.cmdVarUpdate[0]->isEnabled());
        QVERIFY(f.panel.cmdVarRemove[0]->isEnabled());
        QVERIFY(grid.HighLight());

        grid.SetRow(3); // the blank row
        f.panel.UpdateVariableButtons(0);
        QVERIFY(f.panel.cmdVarAdd[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarUpdate[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarRemove[0]->isEnabled());

        grid.SetRow(1);
        ComboList::SetListIndex(f.panel.cboVariable[0], -1);
        f.panel.UpdateVariableButtons(0);
        QVERIFY(!f.panel.cmdVarAdd[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarUpdate[0]->isEnabled());
        QVERIFY(f.panel.cmdVarRemove[0]->isEnabled());

        grid.SetRows(2);
        f.panel.UpdateVariableButtons(0);
        QVERIFY(!grid.HighLight());
        QVERIFY(!f.panel.cmdVarRemove[0]->isEnabled());
    }

    void withoutEditRightTheEditorButtonsStayDisabled()
    {
        PanelFixture f;
        f.load();
        f.host.state.blnCanEditReports = false;
        f.panel.UpdateVariableButtons(0);
        QVERIFY(!f.panel.cmdVarAdd[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarUpdate[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarRemove[0]->isEnabled());
    }

    void totalsCountTheFlagsOfEveryVariableRow()
    {
        PanelFixture f;
        f.load();
        FlexGrid& grid = f.grid(1);
        std::array<qint32, 2> counts{};
        f.panel.CountSelectedTotals(1, counts);
        QCOMPARE(counts[0], 2);
        QCOMPARE(counts[1], 2);
        grid.SetTextMatrix(3, 3, QStringLiteral("True"));
        grid.SetTextMatrix(1, 4, QStringLiteral("False"));
        f.panel.CountSelectedTotals(1, counts);
        QCOMPARE(counts[0], 3);
        QCOMPARE(counts[1], 1);
        QCOMPARE(f.panel.lblTotalFor[2]->text(), QStringLiteral("3"));
        QCOMPARE(f.panel.lblTotalFor[3]->text(), QStringLiteral("1"));
    }

    void totalsRefuseAFlagThatIsNoBoolean()
    {
        PanelFixture f;
        f.load();
        f.grid(0).SetTextMatrix(1, 3, QStringLiteral("maybe"));
        std::array<qint32, 2> counts{};
        QVERIFY_THROWS_EXCEPTION(RuntimeError, f.panel.CountSelectedTotals(0, counts));
    }

    void columnsFillTheGridWidth()
    {
        PanelFixture f;
        showWithSmallGrid(f);
        FlexGrid& grid = f.grid(0);
        f.panel.SizeGridColumns(0);

        QCOMPARE(grid.ColWidth(3), 630);
        QCOMPARE(grid.ColWidth(4), 630);
        const double width = grid.GridWidth() - 630 - 630 - 90;
        QCOMPARE(grid.ColWidth(0), RoundToInt32(width / 4));
        QCOMPARE(grid.ColWidth(1), RoundToInt32(width / 2));
        QCOMPARE(grid.ColWidth(2), RoundToInt32(width / 4));
        if (grid.logicalDpiX() == 96)
        {
            // 600 pixels are 9000 twips: W = 7650.
            QCOMPARE(grid.ColWidth(0), 1912);
            QCOMPARE(grid.ColWidth(1), 3825);
            QCOMPARE(grid.columnWidth(1), 255);
        }
        for (int c = 5; c < 8; ++c)
            QVERIFY(grid.isColumnHidden(c));
    }

    void columnsMakeRoomForTheScrollBarWhenRowsOverflow()
    {
        PanelFixture f;
        showWithSmallGrid(f);
        FlexGrid& grid = f.grid(0);
        const int rows = (grid.GridHeight() - 45) / grid.RowHeight(1) + 2;
        grid.SetRows(rows);
        f.panel.SizeGridColumns(0);
        const double width = grid.GridWidth() - 630 - 630 - 90 - 250;
        QCOMPARE(grid.ColWidth(0), RoundToInt32(width / 4));
        QCOMPARE(grid.ColWidth(1), RoundToInt32(width / 2));
        QCOMPARE(grid.ColWidth(2), RoundToInt32(width / 4));
    }

    void clickOnTheBlankRowSelectsTheLastVariableRow()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
        FlexGrid& grid = f.grid(0);
        QCOMPARE(grid.Row(), 1);
        const QRect blank = grid.visualRect(grid.model()->index(2, 0));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, blank.center());
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(grid.RowSel(), 2);
        QCOMPARE(f.panel.cboVariable[0]->currentText(), QStringLiteral("FEV1 (L)"));
    }

    void clickOnAVariableRowShowsIt()
    {
        PanelFixture f;
        f.load();
        f.panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
        FlexGrid& grid = f.grid(1);
        const QRect second = grid.visualRect(grid.model()->index(1, 1));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, second.center());
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(f.panel.cboVariable[1]->currentText(), QStringLiteral("HR (bpm)"));
        QCOMPARE(f.panel.cboTable[1]->currentText(), QStringLiteral("Exercise"));
        QVERIFY(!f.panel.chkShowIn[3]->isChecked());
    }

    void clickOnTheHeaderDoesNothing()
    {
        PanelFixture f;
        f.load();
        f.panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
        FlexGrid& grid = f.grid(1);
        grid.SetRow(2);
        QTest::mouseClick(grid.horizontalHeader()->viewport(), Qt::LeftButton, {}, QPoint(10, 5));
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(f.panel.cboVariable[1]->currentText(), QStringLiteral("VO2 (mL/min)"));
    }

    void checkBoxClickMarksTheCurrentTabModified()
    {
        PanelFixture f;
        f.load();
        QCOMPARE(f.panel.CurrentTab(), 1);
        f.panel.chkShowIn[3]->click();
        QVERIFY(f.host.modified[1]);
        QVERIFY(!f.host.modified[0]);
    }

    void checkBoxChangeWhileLoadingMarksNothing()
    {
        PanelFixture f;
        f.load();
        f.host.loading = true;
        f.panel.chkShowIn[3]->click();
        QVERIFY(!f.host.modified[1]);
    }
};

CALVEX_TEST(TestVariableEditor)
#include "TestVariableEditor.moc"
