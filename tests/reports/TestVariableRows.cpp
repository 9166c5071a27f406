#include "PanelDriving.h"
#include "PanelFixture.h"

#include "common/GridRowTexts.h"
#include "common/TestMain.h"
#include "platform/VbConversions.h"
#include "widgets/ComboList.h"

#include <QTest>

using namespace PanelDriving;

namespace
{
QStringList row(std::initializer_list<const char*> cells)
{
    QStringList texts;
    for (const char* cell : cells)
        texts.append(QString::fromUtf8(cell));
    return texts;
}

// The loaded panel, shown, with a new (empty) definition on tab.
void startNew(PanelFixture& f, int tab)
{
    f.load();
    f.panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
    clickTab(f.panel, tab);
    QCOMPARE(f.panel.CurrentTab(), tab);
    click(f.panel.cmdNew);
    QCOMPARE(f.grid(tab).Rows(), 2);
}

void showPanel(PanelFixture& f)
{
    f.load();
    f.panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
}
} // namespace

class TestVariableRows : public QObject
{
    Q_OBJECT

private slots:
    void addWritesTheChosenVariableIntoANewRow()
    {
        PanelFixture f;
        showPanel(f);
        QCOMPARE(f.panel.CurrentTab(), 1);
        FlexGrid& grid = f.grid(1);
        QCOMPARE(grid.Rows(), 5);

        addVariable(f.panel, 1, QStringLiteral("Exercise"), QStringLiteral("VO2 (mL/min)"), true, false);

        QCOMPARE(f.boxes.count(), 0);
        QCOMPARE(grid.Rows(), 6);
        QCOMPARE(GridRowTexts(grid, 4), row({"Exercise", "VO2", "mL/min", "True", "False", "12", "201", "0"}));
        QCOMPARE(GridRowTexts(grid, 5), QStringList(8, QString())); // a new blank row follows
        // The new row is current and wholly selected, its unit cell left-aligned.
        QCOMPARE(grid.Row(), 4);
        QCOMPARE(grid.RowSel(), 4);
        QCOMPARE(grid.Col(), 0);
        QCOMPARE(grid.ColSel(), 7);
        grid.SetRow(4);
        grid.SetCol(2);
        QCOMPARE(grid.CellAlignment(), int(FlexGrid::flexAlignLeftCenter));

        QCOMPARE(f.panel.lblTotalFor[2]->text(), QStringLiteral("3"));
        QCOMPARE(f.panel.lblTotalFor[3]->text(), QStringLiteral("2"));
        QVERIFY(f.host.modified[1]);
        QVERIFY(!f.host.modified[0]);
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
    }

    void addKeepsTheNameOfAVariableWithoutUnitWhole()
    {
        PanelFixture f;
        showPanel(f);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("RER"), false, true);
        QCOMPARE(GridRowTexts(f.grid(1), 4), row({"Rest", "RER", "", "False", "True", "11", "203", "2"}));
    }

    void addCutsTheUnitSuffixOfTheCaption()
    {
        PanelFixture f;
        startNew(f, 0);
        addVariable(f.panel, 0, QString(), QStringLiteral("FEV1/FVC (%)"), true, true);
        addVariable(f.panel, 0, QString(), QStringLiteral("PEF (L/s)"), false, false);
        QCOMPARE(GridRowTexts(f.grid(0), 1), row({"Pre", "FEV1/FVC", "%", "True", "True", "1", "103", "0"}));
        QCOMPARE(GridRowTexts(f.grid(0), 2), row({"Pre", "PEF", "L/s", "False", "False", "1", "104", "2"}));
    }

    void theSameVariableTwiceGivesTwoEqualRows()
    {
        PanelFixture f;
        startNew(f, 1);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("HR (bpm)"), true, true);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("HR (bpm)"), true, true);
        QCOMPARE(f.grid(1).Rows(), 4);
        QCOMPARE(GridRowTexts(f.grid(1), 1), GridRowTexts(f.grid(1), 2));
        QCOMPARE(f.panel.lblTotalFor[2]->text(), QStringLiteral("2"));
    }

    void nineGraphRowsRefuseATenth()
    {
        PanelFixture f;
        startNew(f, 0);
        for (int i = 0; i < 9; ++i)
            addVariable(f.panel, 0, QString(), QStringLiteral("FVC (L)"), true, false);
        QCOMPARE(f.grid(0).Rows(), 11);
        QCOMPARE(f.panel.lblTotalFor[0]->text(), QStringLiteral("9"));
        QCOMPARE(f.boxes.count(), 0);

        addVariable(f.panel, 0, QString(), QStringLiteral("FEV1 (L)"), true, false);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4078: 9"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(f.grid(0).Rows(), 11);
        QCOMPARE(f.panel.lblTotalFor[0]->text(), QStringLiteral("9"));
        // The refusal leaves the focus where the user was.
        QCOMPARE(QApplication::focusWidget(), f.panel.cmdVarAdd[0]);

        // The same variable only in the table is taken.
        addVariable(f.panel, 0, QString(), QStringLiteral("FEV1 (L)"), false, true);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.grid(0).Rows(), 12);
        QCOMPARE(GridRowTexts(f.grid(0), 10), row({"Pre", "FEV1", "L", "False", "True", "1", "102", "2"}));
        QCOMPARE(f.panel.lblTotalFor[1]->text(), QStringLiteral("1"));
    }

    void nineTableRowsRefuseATenth()
    {
        PanelFixture f;
        startNew(f, 1);
        for (int i = 0; i < 9; ++i)
            addVariable(f.panel, 1, QStringLiteral("Exercise"), QStringLiteral("HR (bpm)"), false, true);
        addVariable(f.panel, 1, QStringLiteral("Exercise"), QStringLiteral("RER"), true, true);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4079: 9"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(f.grid(1).Rows(), 11);
        addVariable(f.panel, 1, QStringLiteral("Exercise"), QStringLiteral("RER"), true, false);
        QCOMPARE(f.grid(1).Rows(), 12);
    }

    void updatingARowOfAFullGraphIsRefused()
    {
        PanelFixture f;
        startNew(f, 0);
        for (int i = 0; i < 9; ++i)
            addVariable(f.panel, 0, QString(), QStringLiteral("FVC (L)"), true, false);
        clickRow(&f.grid(0), 3);
        QCOMPARE(f.grid(0).Row(), 3);
        QVERIFY(f.panel.chkShowIn[0]->isChecked()); // the row's own flag
        choose(f.panel.cboVariable[0], QStringLiteral("PEF (L/s)"));
        click(f.panel.cmdVarUpdate[0]);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4078: 9"));
        QCOMPARE(f.grid(0).TextMatrix(3, 1), QStringLiteral("FVC"));

        // Without the graph flag the update goes through and the graph has room again.
        tick(f.panel.chkShowIn[0], false);
        click(f.panel.cmdVarUpdate[0]);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(GridRowTexts(f.grid(0), 3), row({"Pre", "PEF", "L/s", "False", "False", "1", "104", "2"}));
        QCOMPARE(f.panel.lblTotalFor[0]->text(), QStringLiteral("8"));
    }

    void updateOverwritesTheCurrentRow()
    {
        PanelFixture f;
        showPanel(f);
        FlexGrid& grid = f.grid(1);
        clickRow(&grid, 2);
        QCOMPARE(f.panel.cboVariable[1]->currentText(), QStringLiteral("HR (bpm)"));
        f.host.modified[1] = false;
        choose(f.panel.cboTable[1], QStringLiteral("Rest"));
        choose(f.panel.cboVariable[1], QStringLiteral("VO2 (mL/min)"));
        tick(f.panel.chkShowIn[3], true);
        click(f.panel.cmdVarUpdate[1]);
        QCOMPARE(grid.Rows(), 5);
        QCOMPARE(GridRowTexts(grid, 2), row({"Rest", "VO2", "mL/min", "True", "True", "11", "201", "0"}));
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(grid.ColSel(), 7);
        QCOMPARE(f.panel.lblTotalFor[3]->text(), QStringLiteral("3"));
        QVERIFY(f.host.modified[1]);
    }

    void removeDeletesTheCurrentRow()
    {
        PanelFixture f;
        showPanel(f);
        FlexGrid& grid = f.grid(1);
        clickRow(&grid, 2);
        f.host.modified[1] = false;
        click(f.panel.cmdVarRemove[1]);
        QCOMPARE(grid.Rows(), 4);
        QCOMPARE(grid.TextMatrix(1, 1), QStringLiteral("VO2"));
        QCOMPARE(grid.TextMatrix(2, 1), QStringLiteral("RER"));
        // The current row keeps its number and now holds the following
        // variable; the editors still show what they showed.
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(f.panel.cboVariable[1]->currentText(), QStringLiteral("HR (bpm)"));
        QCOMPARE(f.panel.cboTable[1]->currentText(), QStringLiteral("Exercise"));
        QCOMPARE(f.panel.lblTotalFor[2]->text(), QStringLiteral("1"));
        QCOMPARE(f.panel.lblTotalFor[3]->text(), QStringLiteral("2"));
        QVERIFY(f.host.modified[1]);
        QVERIFY(f.panel.cmdVarRemove[1]->isEnabled());
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
    }

    void removingTheLastRowSelectsTheRowAbove()
    {
        PanelFixture f;
        showPanel(f);
        FlexGrid& grid = f.grid(1);
        clickRow(&grid, 3);
        click(f.panel.cmdVarRemove[1]);
        QCOMPARE(grid.Rows(), 4);
        QCOMPARE(grid.Row(), 2);
        QCOMPARE(grid.RowSel(), 2);
        QCOMPARE(grid.Col(), 0);
        QCOMPARE(grid.ColSel(), 7);
        QCOMPARE(grid.TextMatrix(2, 1), QStringLiteral("HR"));
    }

    void removingEveryRowLeavesHeaderAndBlankRow()
    {
        PanelFixture f;
        showPanel(f);
        FlexGrid& grid = f.grid(1);
        for (int i = 0; i < 3; ++i)
            click(f.panel.cmdVarRemove[1]);
        QCOMPARE(grid.Rows(), 2);
        QCOMPARE(grid.TextMatrix(0, 0), QStringLiteral("T4067"));
        QCOMPARE(GridRowTexts(grid, 1), QStringList(8, QString()));
        QVERIFY(!f.panel.cmdVarRemove[1]->isEnabled());
        QVERIFY(!f.panel.cmdVarUpdate[1]->isEnabled());
        QVERIFY(f.panel.cmdVarAdd[1]->isEnabled());
        QVERIFY(!f.panel.cmdSaveAs->isEnabled());
        QVERIFY(!grid.HighLight());
        QCOMPARE(f.panel.lblTotalFor[2]->text(), QStringLiteral("0"));
        QCOMPARE(f.panel.lblTotalFor[3]->text(), QStringLiteral("0"));
        // A further press finds no variable row.
        click(f.panel.cmdVarRemove[1]);
        QCOMPARE(grid.Rows(), 2);
    }

    void aRowWhoseTableLeftTheCatalogueCannotBeAddedOrUpdated()
    {
        PanelFixture f;
        f.store->openReport = [](qint32 id, bool si, qint32& tab) {
            if (id != 3)
                return FakeCatalogue::parameters(id, si, tab);
            tab = 1;
            auto rs = std::make_shared<Recordset>(FakeCatalogue::parameterFields());
            rs->AppendRow(
                {QStringLiteral("Warm-up"), QStringLiteral("HR"), QStringLiteral("bpm"), true, true, 13, 202, 0});
            return RecordsetPtr(rs);
        };
        showPanel(f);
        QCOMPARE(f.grid(1).TextMatrix(1, 0), QStringLiteral("Warm-up"));
        QCOMPARE(f.panel.cboTable[1]->currentIndex(), -1);
        QCOMPARE(f.panel.cboVariable[1]->currentText(), QStringLiteral("HR (bpm)"));
        QVERIFY(!f.panel.cmdVarAdd[1]->isEnabled());
        QVERIFY(!f.panel.cmdVarUpdate[1]->isEnabled());
        QVERIFY(f.panel.cmdVarRemove[1]->isEnabled());
        click(f.panel.cmdVarAdd[1]);
        click(f.panel.cmdVarUpdate[1]);
        QCOMPARE(f.grid(1).Rows(), 3);
        QCOMPARE(f.grid(1).TextMatrix(1, 0), QStringLiteral("Warm-up"));
        // Choosing a table of the catalogue makes both possible again.
        choose(f.panel.cboTable[1], QStringLiteral("Rest"));
        QVERIFY(f.panel.cmdVarAdd[1]->isEnabled());
        QVERIFY(f.panel.cmdVarUpdate[1]->isEnabled());
    }

    void aNewRowBeyondTheVisibleRowsIsScrolledIntoView()
    {
        PanelFixture f;
        f.grid(0).setFixedHeight(120);
        startNew(f, 0);
        FlexGrid& grid = f.grid(0);
        const int scrollBarRoom = grid.GridWidth() - 630 - 630 - 90 - 250;
        for (int i = 0; i < 8; ++i)
        {
            addVariable(f.panel, 0, QString(), QStringLiteral("FEV1 (L)"), false, i % 2 == 0);
            QVERIFY(grid.RowIsVisible(grid.Rows() - 2));
        }
        QVERIFY(grid.TopRow() > 1);
        // The rows overflow the grid: columns 0 to 2 leave room for the scroll bar.
        QCOMPARE(grid.ColWidth(0), RoundToInt32(scrollBarRoom / 4.0));
        QCOMPARE(grid.ColWidth(1), RoundToInt32(scrollBarRoom / 2.0));
        QCOMPARE(grid.ColWidth(2), RoundToInt32(scrollBarRoom / 4.0));
    }

    void columnsGetTheirRoomBackWhenRowsFitAgain()
    {
        PanelFixture f;
        f.grid(0).setFixedHeight(120);
        startNew(f, 0);
        FlexGrid& grid = f.grid(0);
        for (int i = 0; i < 8; ++i)
            addVariable(f.panel, 0, QString(), QStringLiteral("PEF (L/s)"), false, false);
        const int narrow = grid.ColWidth(1);
        while (grid.Rows() > 3)
            click(f.panel.cmdVarRemove[0]);
        const int full = grid.GridWidth() - 630 - 630 - 90;
        QCOMPARE(grid.ColWidth(1), RoundToInt32(full / 2.0));
        QVERIFY(grid.ColWidth(1) > narrow);
    }

    void selectingARowWithOtherFlagsMarksTheDefinitionModified()
    {
        PanelFixture f;
        showPanel(f);
        clickTab(f.panel, 0);
        QVERIFY(!f.host.modified[0]);
        clickRow(&f.grid(0), 1); // both flags, as the boxes show them
        QVERIFY(!f.host.modified[0]);
        clickRow(&f.grid(0), 2); // graph only
        QVERIFY(!f.panel.chkShowIn[1]->isChecked());
        QVERIFY(f.host.modified[0]);
    }

    void selectedVariablesCountRowsShownAnywhere()
    {
        PanelFixture f;
        startNew(f, 1);
        QCOMPARE(f.panel.CountSelectedVariables(1), 0);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("VO2 (mL/min)"), true, false);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("HR (bpm)"), false, true);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("RER"), false, false);
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("RER"), true, true);
        QCOMPARE(f.panel.CountSelectedVariables(1), 3);
        QCOMPARE(f.panel.CountSelectedVariables(0), 2); // the untouched first tab
        // Only the exact word counts.
        f.grid(1).SetTextMatrix(4, 3, QStringLiteral("true"));
        f.grid(1).SetTextMatrix(4, 4, QStringLiteral("TRUE"));
        QCOMPARE(f.panel.CountSelectedVariables(1), 2);
    }

    void withoutTheEditRightNothingIsWritten()
    {
        PanelFixture f;
        f.host.state.blnCanEditReports = false;
        showPanel(f);
        click(f.panel.cmdVarAdd[1]);
        click(f.panel.cmdVarRemove[1]);
        QCOMPARE(f.grid(1).Rows(), 5);
        QVERIFY(!f.host.modified[1]);
    }
};

CALVEX_TEST(TestVariableRows)
#include "TestVariableRows.moc"
