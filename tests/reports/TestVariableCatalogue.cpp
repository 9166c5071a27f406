#include "PanelFixture.h"

#include "common/ComboItemTexts.h"
#include "common/TestMain.h"
#include "widgets/ComboList.h"

#include <QSignalSpy>
#include <QTest>

namespace
{
QList<qint32> itemData(const QComboBox* list)
{
    QList<qint32> data;
    for (int i = 0; i < list->count(); ++i)
        data.append(ComboList::ItemData(list, i));
    return data;
}

// A variable recordset of the given rows (VarID, VarUserName, VarUnit, DecimalPlaces).
RecordsetPtr variableRows(std::vector<QVariantList> rows)
{
    return std::make_shared<Recordset>(QStringList{QStringLiteral("VarID"), QStringLiteral("VarUserName"),
                                                   QStringLiteral("VarUnit"), QStringLiteral("DecimalPlaces")},
                                       std::move(rows));
}
} // namespace

class TestVariableCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void fillsTheThreeParallelListsInTheStoresOrder()
    {
        PanelFixture f;
        f.host.loading = true;
        QVERIFY(f.panel.LoadVariableCatalogue(0));
        QCOMPARE(f.store->calls, QStringList({QStringLiteral("ListTables 0"), QStringLiteral("ListVariables si=0 0")}));
        QCOMPARE(ComboItemTexts(f.panel.cboTable[0]), QStringList({QStringLiteral("Pre"), QStringLiteral("Post")}));
        QCOMPARE(itemData(f.panel.cboTable[0]), QList<qint32>({1, 2}));
        QCOMPARE(ComboItemTexts(f.panel.cboVariable[0]),
                 QStringList({QStringLiteral("FVC (L)"), QStringLiteral("FEV1 (L)"), QStringLiteral("FEV1/FVC (%)"),
                              QStringLiteral("PEF (L/s)"), QStringLiteral("Effort")}));
        QCOMPARE(itemData(f.panel.cboVariable[0]), QList<qint32>({101, 102, 103, 104, 105}));
        QCOMPARE(ComboItemTexts(f.panel.cboVarUnits[0]),
                 QStringList({QStringLiteral("L"), QStringLiteral("L"), QStringLiteral("%"), QStringLiteral("L/s"),
                              QString()}));
        QCOMPARE(ComboItemTexts(f.panel.cboVarDecPlaces[0]),
                 QStringList({QStringLiteral("2"), QStringLiteral("2"), QStringLiteral("0"), QStringLiteral("2"),
                              QStringLiteral("0")}));
        QCOMPARE(f.panel.cboVarTest[0]->count(), 0);
        QCOMPARE(f.panel.cboTable[0]->currentIndex(), 0);
        QCOMPARE(f.panel.cboVariable[0]->currentIndex(), 0);
        QCOMPARE(f.panel.cboVarUnits[0]->currentIndex(), 0);
        QVERIFY(f.panel.cboVarUnits[0]->isHidden());
        QVERIFY(f.panel.cboVarDecPlaces[0]->isHidden());
        QVERIFY(f.panel.cboVarTest[0]->isHidden());
        QCOMPARE(f.boxes.count(), 0);
    }

    void variableWithoutUnitHasNoParentheses()
    {
        PanelFixture f;
        QVERIFY(f.panel.LoadVariableCatalogue(1));
        QCOMPARE(f.panel.cboVariable[1]->itemText(2), QStringLiteral("RER"));
        QCOMPARE(f.panel.cboVarUnits[1]->itemText(2), QString());
    }

    void unitsFollowTheSiSettingAtLoad()
    {
        PanelFixture f;
        f.registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("1"));
        QVERIFY(f.panel.LoadVariableCatalogue(1));
        QCOMPARE(f.store->calls.last(), QStringLiteral("ListVariables si=1 1"));
        QCOMPARE(f.panel.cboVariable[1]->itemText(0), QStringLiteral("VO2 (L/min)"));
    }

    void choosingAVariableKeepsTheUnitListAligned()
    {
        PanelFixture f;
        QVERIFY(f.panel.LoadVariableCatalogue(0));
        // Two variables share the unit "L": the unit list follows by position.
        ComboList::SetListIndex(f.panel.cboVariable[0], 1);
        QCOMPARE(f.panel.cboVarUnits[0]->currentIndex(), 1);
        ComboList::SetListIndex(f.panel.cboVariable[0], 4);
        QCOMPARE(f.panel.cboVarUnits[0]->currentIndex(), 4);
        QCOMPARE(f.panel.cboVarUnits[0]->currentText(), QString());
    }

    void nullDecimalPlacesFailsTheLoad()
    {
        PanelFixture f;
        f.store->listVariables = [](bool, qint16) {
            return variableRows({{101, QStringLiteral("FVC"), QStringLiteral("L"), 2},
                                 {102, QStringLiteral("FEV1"), QStringLiteral("L"), QVariant()}});
        };
        QVERIFY(!f.panel.LoadVariableCatalogue(0));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("Invalid use of Null"));
        QCOMPARE(f.boxes.last().style, 16);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
    }

    void nullNamesAndUnitsReadAsEmpty()
    {
        PanelFixture f;
        f.store->listVariables = [](bool, qint16) { return variableRows({{7, QVariant(), QVariant(), 1}}); };
        QVERIFY(f.panel.LoadVariableCatalogue(0));
        QCOMPARE(ComboItemTexts(f.panel.cboVariable[0]), QStringList({QString()}));
        QCOMPARE(f.boxes.count(), 0);
    }

    void emptyTableListFailsTheLoad()
    {
        PanelFixture f;
        f.store->listTables = [](qint16) {
            return std::make_shared<Recordset>(QStringList{QStringLiteral("QCTableID"), QStringLiteral("QCUserName")});
        };
        QVERIFY(!f.panel.LoadVariableCatalogue(0));
        QCOMPARE(f.panel.cboTable[0]->count(), 0);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("Invalid property value"));
        QCOMPARE(f.boxes.last().style, 16);
    }

    void storeErrorFailsTheLoadWithItsDescription()
    {
        PanelFixture f;
        f.store->failOn = QStringLiteral("ListVariables");
        QVERIFY(!f.panel.LoadVariableCatalogue(0));
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in ListVariables"));
        QCOMPARE(f.boxes.last().style, 16);
    }

    void noRecordsetsLeaveTheListsAsTheyAre()
    {
        PanelFixture f;
        f.store->listTables = [](qint16) { return RecordsetPtr(); };
        f.store->listVariables = [](bool, qint16) { return RecordsetPtr(); };
        QVERIFY(f.panel.LoadVariableCatalogue(0));
        QCOMPARE(f.panel.cboTable[0]->count(), 0);
        QCOMPARE(f.panel.cboVariable[0]->count(), 0);
    }

    void pfTableChangeRewritesEveryRow()
    {
        PanelFixture f;
        f.load();
        // Report 1 is open on the PF tab: two rows from table "Pre".
        QCOMPARE(f.grid(0).Rows(), 4);
        QVERIFY(!f.host.modified[0]);
        ComboList::SetListIndex(f.panel.cboTable[0], 1);
        for (int r = 1; r <= 2; ++r)
        {
            QCOMPARE(f.grid(0).TextMatrix(r, 0), QStringLiteral("Post"));
            QCOMPARE(f.grid(0).TextMatrix(r, 5), QStringLiteral("2"));
        }
        QCOMPARE(f.grid(0).TextMatrix(3, 0), QString()); // the blank row stays blank
        QVERIFY(f.host.modified[0]);
    }

    void pfSameTableAsRowOneChangesNothing()
    {
        PanelFixture f;
        f.load();
        QCOMPARE(f.panel.cboTable[0]->currentText(), QStringLiteral("Pre"));
        // Row 2 differs, but only row 1 is compared with the chosen table.
        f.grid(0).SetTextMatrix(2, 0, QStringLiteral("Other"));
        QVERIFY(f.panel.ApplyTableToAllVariables(0));
        QCOMPARE(f.grid(0).TextMatrix(1, 0), QStringLiteral("Pre"));
        QCOMPARE(f.grid(0).TextMatrix(2, 0), QStringLiteral("Other"));
        QVERIFY(!f.host.modified[0]);
    }

    void gxVariablesKeepTheirOwnTables()
    {
        PanelFixture f;
        f.load();
        QCOMPARE(f.grid(1).TextMatrix(1, 0), QStringLiteral("Rest"));
        ComboList::SetListIndex(f.panel.cboTable[1], 1);
        QCOMPARE(f.grid(1).TextMatrix(1, 0), QStringLiteral("Rest"));
        QCOMPARE(f.grid(1).TextMatrix(2, 0), QStringLiteral("Exercise"));
        QVERIFY(!f.host.modified[1]);
    }

    void tableChangeOnAnEmptyGridChangesNothing()
    {
        PanelFixture f;
        f.host.loading = true;
        f.panel.PrepareGrid(0);
        QVERIFY(f.panel.LoadVariableCatalogue(0));
        f.host.loading = false;
        ComboList::SetListIndex(f.panel.cboTable[0], 1);
        QCOMPARE(f.grid(0).Rows(), 2);
        QVERIFY(!f.host.modified[0]);
    }
};

CALVEX_TEST(TestVariableCatalogue)
#include "TestVariableCatalogue.moc"
