#include "PanelFixture.h"

#include "common/ComboItemTexts.h"
#include "common/GridRowTexts.h"
#include "common/TestMain.h"
#include "platform/RuntimeError.h"
#include "platform/SIUnitSetting.h"
#include "widgets/ComboList.h"

#include <QTest>

namespace
{
RecordsetPtr reportRows(std::vector<QVariantList> rows)
{
    return std::make_shared<Recordset>(
        QStringList{QStringLiteral("QCReportName"), QStringLiteral("QCReportType"), QStringLiteral("QCReportID")},
        std::move(rows));
}

int countOf(const QStringList& calls, const QString& call)
{
    return int(calls.count(call));
}
} // namespace

class TestReportOpening : public QObject
{
    Q_OBJECT

private slots:
    void listingPutsThePlaceholderFirstAndEachReportOnItsTab()
    {
        PanelFixture f;
        f.load();
        QCOMPARE(ComboItemTexts(f.panel.cboReports[0]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Spirometry QC"), QStringLiteral("Flow QC")}));
        QCOMPARE(ComboItemTexts(f.panel.cboReports[1]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Exercise QC")}));
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 1);
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 2), 2);
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[1], 1), 3);
    }

    void emptyOrNullReportTypeFilesUnderTheFirstTab()
    {
        PanelFixture f;
        f.store->listReports = [] {
            return reportRows({{QStringLiteral("Typed"), 1, 3},
                               {QStringLiteral("Empty type"), QString(), 1},
                               {QStringLiteral("Null type"), QVariant(), 2}});
        };
        f.load();
        QCOMPARE(ComboItemTexts(f.panel.cboReports[0]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Empty type"), QStringLiteral("Null type")}));
        QCOMPARE(ComboItemTexts(f.panel.cboReports[1]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Typed")}));
    }

    void listingYieldsAndClosesTheList()
    {
        PanelFixture f;
        RecordsetPtr list = FakeCatalogue::reports();
        f.store->listReports = [list] { return list; };
        f.panel.ListSavedReports();
        QVERIFY(!list->IsOpen());
        QVERIFY(!f.host.modified[0]);
        QVERIFY(!f.host.modified[1]);
    }

    void firstDefinitionOfEachTabIsOpenedIntoItsGrid()
    {
        PanelFixture f;
        f.load();
        QVERIFY(f.store->calls.contains(QStringLiteral("OpenReport 1 si=0")));
        QVERIFY(f.store->calls.contains(QStringLiteral("OpenReport 3 si=0")));
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(f.panel.cboReports[1]->currentIndex(), 1);

        FlexGrid& pf = f.grid(0);
        QCOMPARE(pf.Rows(), 4);
        QCOMPARE(pf.Cols(), 8);
        QCOMPARE(GridRowTexts(pf, 1), QStringList({QStringLiteral("Pre"), QStringLiteral("FVC"), QStringLiteral("L"),
                                                   QStringLiteral("True"), QStringLiteral("True"), QStringLiteral("1"),
                                                   QStringLiteral("101"), QStringLiteral("2")}));
        QCOMPARE(GridRowTexts(pf, 2), QStringList({QStringLiteral("Pre"), QStringLiteral("FEV1"), QStringLiteral("L"),
                                                   QStringLiteral("True"), QStringLiteral("False"), QStringLiteral("1"),
                                                   QStringLiteral("102"), QStringLiteral("2")}));
        QCOMPARE(GridRowTexts(pf, 3), QStringList(8, QString()));
        QCOMPARE(pf.Tag(), QStringLiteral("1"));
        pf.SetRow(2);
        pf.SetCol(2);
        QCOMPARE(pf.CellAlignment(), int(FlexGrid::flexAlignLeftCenter));

        FlexGrid& gx = f.grid(1);
        QCOMPARE(gx.Rows(), 5);
        QCOMPARE(gx.Tag(), QStringLiteral("3"));
        QCOMPARE(gx.TextMatrix(3, 1), QStringLiteral("RER"));
        QCOMPARE(gx.TextMatrix(3, 2), QString());

        QCOMPARE(f.panel.lblTotalFor[0]->text(), QStringLiteral("2"));
        QCOMPARE(f.panel.lblTotalFor[1]->text(), QStringLiteral("1"));
        QCOMPARE(f.panel.lblTotalFor[2]->text(), QStringLiteral("2"));
        QCOMPARE(f.panel.lblTotalFor[3]->text(), QStringLiteral("2"));
        QVERIFY(!f.host.modified[0]);
        QVERIFY(!f.host.modified[1]);
        QVERIFY(!f.host.loading);
        // The GX definition was opened last and its tab is shown.
        QCOMPARE(f.panel.CurrentTab(), 1);
    }

    void openingShowsTheFirstRowInTheEditors()
    {
        PanelFixture f;
        f.load();
        QCOMPARE(f.grid(1).Row(), 1);
        QCOMPARE(f.grid(1).RowSel(), 1);
        QCOMPARE(f.grid(1).ColSel(), 7);
        QCOMPARE(f.panel.cboVariable[1]->currentText(), QStringLiteral("VO2 (mL/min)"));
        QCOMPARE(f.panel.cboVarUnits[1]->currentText(), QStringLiteral("mL/min"));
        QCOMPARE(f.panel.cboTable[1]->currentText(), QStringLiteral("Rest"));
        QVERIFY(f.panel.chkShowIn[2]->isChecked());
        QVERIFY(f.panel.chkShowIn[3]->isChecked());
        QVERIFY(f.panel.cmdVarAdd[1]->isEnabled());
        QVERIFY(f.panel.cmdVarUpdate[1]->isEnabled());
        QVERIFY(f.panel.cmdVarRemove[1]->isEnabled());
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
    }

    void tabWithoutSavedReportsCannotSelectItsFirstReport()
    {
        PanelFixture f;
        f.store->listReports = [] { return reportRows({{QStringLiteral("Only PF"), 0, 1}}); };
        f.host.loading = true;
        for (int t = 0; t < 2; ++t)
        {
            f.panel.PrepareGrid(t);
            QVERIFY(f.panel.LoadVariableCatalogue(t));
        }
        f.panel.ListSavedReports();
        f.host.loading = false;
        QCOMPARE(f.panel.cboReports[1]->count(), 1);
        try
        {
            f.panel.SelectFirstReports();
            QFAIL("selecting the first report of an empty tab must fail");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 380);
            QCOMPARE(error.description(), QStringLiteral("Invalid property value"));
        }
    }

    void reportTypeBeyondTheTabsIsAnError()
    {
        PanelFixture f;
        f.store->listReports = [] { return reportRows({{QStringLiteral("Third tab"), 2, 9}}); };
        QVERIFY_THROWS_EXCEPTION(RuntimeError, f.panel.ListSavedReports());
    }

    void siSettingValues_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("si");
        QTest::newRow("one") << QVariant(QStringLiteral("1")) << true;
        QTest::newRow("dword one") << QVariant(1) << true;
        QTest::newRow("missing") << QVariant() << false;
        QTest::newRow("empty") << QVariant(QString()) << false;
        QTest::newRow("zero") << QVariant(QStringLiteral("0")) << false;
        QTest::newRow("two") << QVariant(QStringLiteral("2")) << false;
    }

    void siSettingValues()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, si);
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        ScopedRegistryFile registry;
        registry.setValue(QStringLiteral("SI Unit"), value);
        QCOMPARE(ReadSIUnitSetting(), si);
        QCOMPARE(boxes.count(), 0);
    }

    void siSettingIsReadAfreshAtEveryOpen()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("1"));
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.store->calls.last(), QStringLiteral("OpenReport 2 si=1"));
        f.registry.setValue(QStringLiteral("SI Unit"), QVariant());
        ComboList::SetListIndex(f.panel.cboReports[0], 1);
        QCOMPARE(f.store->calls.last(), QStringLiteral("OpenReport 1 si=0"));
        f.registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("2"));
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.store->calls.last(), QStringLiteral("OpenReport 2 si=0"));
    }

    void openingWithoutRecordsetShows4055()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.store->openReport = [](qint32, bool, qint32&) { return RecordsetPtr(); };
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4055"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(!f.host.loading);
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("1"));
        QCOMPARE(f.grid(0).Rows(), 4);
    }

    void openingADefinitionWithoutRowsShows4056()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        RecordsetPtr empty = std::make_shared<Recordset>(FakeCatalogue::parameterFields());
        f.store->openReport = [empty](qint32, bool, qint32& tab) {
            tab = 0;
            return empty;
        };
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4056"));
        QCOMPARE(f.boxes.last().style, 48);
        QVERIFY(!empty->IsOpen());
        QVERIFY(!f.host.loading);
        QCOMPARE(f.grid(0).Rows(), 4);
    }

    void storeErrorWhileOpeningShowsItsDescription()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.store->failOn = QStringLiteral("OpenReport");
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in OpenReport"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(!f.host.loading);
    }

    void answeringNoPutsTheListBack()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.host.modified[0] = true;
        f.boxes.queueAnswer(MsgAnswer::No);
        const int opensBefore = countOf(f.store->calls, QStringLiteral("OpenReport 2 si=0"));
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.last().style, 36);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4054"));
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(countOf(f.store->calls, QStringLiteral("OpenReport 2 si=0")), opensBefore);
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("1"));
        QCOMPARE(f.grid(0).TextMatrix(1, 1), QStringLiteral("FVC"));
        QVERIFY(f.host.modified[0]);
        QVERIFY(!f.host.loading);
    }

    void answeringYesOpensTheChosenDefinition()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.host.modified[0] = true;
        f.boxes.queueAnswer(MsgAnswer::Yes);
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(f.store->calls.last(), QStringLiteral("OpenReport 2 si=0"));
        QCOMPARE(f.grid(0).Rows(), 3);
        QCOMPARE(f.grid(0).TextMatrix(1, 1), QStringLiteral("PEF"));
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("2"));
        QVERIFY(!f.host.modified[0]);
    }

    void deleteButtonFollowsTheStoresAnswer()
    {
        PanelFixture f;
        f.store->canDelete = false;
        f.load();
        QVERIFY(f.store->calls.contains(QStringLiteral("CanDeleteReport 3")));
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        f.store->canDelete = true;
        f.panel.SetCurrentTab(0);
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QVERIFY(f.panel.cmdDelete->isEnabled());
    }

    void withoutEditRightTheStoreIsNotAskedAboutDeleting()
    {
        PanelFixture f;
        f.host.state.blnCanEditReports = false;
        f.load();
        QVERIFY(!f.store->calls.join(QLatin1Char(',')).contains(QStringLiteral("CanDeleteReport")));
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        QVERIFY(!f.panel.cmdSaveAs->isEnabled());
        QCOMPARE(f.grid(0).Rows(), 4);
        QVERIFY(!f.panel.cmdVarAdd[0]->isEnabled());
    }

    void placeholderStartsANewDefinition()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.host.modified[0] = true;
        f.boxes.queueAnswer(MsgAnswer::Yes);
        ComboList::SetListIndex(f.panel.cboTable[0], 1); // New puts the table list back on its first item
        ComboList::SetListIndex(f.panel.cboReports[0], 0);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4063"));
        QCOMPARE(f.grid(0).Rows(), 2);
        QCOMPARE(f.grid(0).Row(), 0);
        QCOMPARE(f.panel.cboTable[0]->currentIndex(), 0);
        QCOMPARE(f.panel.cboVariable[0]->currentIndex(), 0);
        QVERIFY(!f.panel.cmdVarUpdate[0]->isEnabled());
        QVERIFY(!f.panel.cmdVarRemove[0]->isEnabled());
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        QVERIFY(!f.panel.cmdSaveAs->isEnabled());
        QCOMPARE(f.panel.lblTotalFor[0]->text(), QStringLiteral("0"));
        QCOMPARE(f.host.to, QStringLiteral("06/15/2024"));
        QVERIFY(f.host.from.isEmpty());
        QVERIFY(!f.host.modified[0]);
        // Only opening writes the grid's Tag.
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("1"));
    }

    void newRefusedKeepsTheGrid()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.host.modified[0] = true;
        f.boxes.queueAnswer(MsgAnswer::No);
        ComboList::SetListIndex(f.panel.cboReports[0], 0);
        QCOMPARE(f.grid(0).Rows(), 4);
        QVERIFY(f.host.modified[0]);
        QVERIFY(!f.host.actions.contains(QStringLiteral("ResetDateRange")));
    }

    void tabSwitchReopensTheDefinitionTheGridHolds()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        f.panel.cmdNew_Click();
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 0);
        const int opens = countOf(f.store->calls, QStringLiteral("OpenReport 1 si=0"));
        f.panel.SetCurrentTab(1);
        QCOMPARE(f.panel.cboReports[1]->currentIndex(), 1); // unchanged: nothing opened
        f.panel.SetCurrentTab(0);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(countOf(f.store->calls, QStringLiteral("OpenReport 1 si=0")), opens + 1);
        QCOMPARE(f.grid(0).Rows(), 4);
    }

    void tabSwitchFindsNothingForAnUnknownId()
    {
        PanelFixture f;
        f.load();
        f.grid(0).SetTag(QStringLiteral("77"));
        f.panel.SetCurrentTab(0);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
    }

    void parameterFieldsAreTrimmedAndNullsEmpty()
    {
        PanelFixture f;
        f.load();
        f.panel.SetCurrentTab(0);
        RecordsetPtr rows = std::make_shared<Recordset>(FakeCatalogue::parameterFields());
        rows->AppendRow(
            {QStringLiteral("  Pre "), QStringLiteral(" FVC"), QVariant(), false, true, 1, 101, QVariant()});
        f.store->openReport = [rows](qint32, bool, qint32& tab) {
            tab = 0;
            return rows;
        };
        ComboList::SetListIndex(f.panel.cboReports[0], 2);
        QCOMPARE(GridRowTexts(f.grid(0), 1),
                 QStringList({QStringLiteral("Pre"), QStringLiteral("FVC"), QString(), QStringLiteral("False"),
                              QStringLiteral("True"), QStringLiteral("1"), QStringLiteral("101"), QString()}));
        QVERIFY(!rows->IsOpen());
        QCOMPARE(f.boxes.count(), 0);
    }
};

CALVEX_TEST(TestReportOpening)
#include "TestReportOpening.moc"
