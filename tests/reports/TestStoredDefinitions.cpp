#include "PanelDriving.h"
#include "PanelFixture.h"

#include "common/ScopedRegistryFile.h"
#include "common/TestMain.h"
#include "components/CalcEngine.h"
#include "components/PatientQuery.h"
#include "platform/StringServer.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteSettings.h"
#include "suite/SuiteSetup.h"
#include "widgets/ComboList.h"

#include <QTest>

#include <memory>

using namespace PanelDriving;

namespace
{
// The stored parameter rows of a definition as the grid shows them (IDs,
// decimals and flags), or nothing when the store has no such definition.
Cells storedCells(qint32 id, int* tabOut = nullptr)
{
    auto store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    qint32 tab = -1;
    RecordsetPtr rs = store->OpenReport(id, false, tab);
    Cells cells;
    if (!rs)
        return cells;
    for (; !rs->IsEOF(); rs->MoveNext())
    {
        QStringList row;
        for (const QString& field : FakeCatalogue::parameterFields())
        {
            const QVariant value = rs->Value(field);
            row.append(value.typeId() == QMetaType::Bool
                           ? (value.toBool() ? QStringLiteral("True") : QStringLiteral("False"))
                           : value.toString().trimmed());
        }
        cells.append(row);
    }
    if (tabOut)
        *tabOut = tab;
    return cells;
}

// The stored definitions: ID -> name.
QMap<qint32, QString> storedNames()
{
    auto store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
    RecordsetPtr rs = store->ListReports();
    QMap<qint32, QString> names;
    for (; !rs->IsEOF(); rs->MoveNext())
        names.insert(rs->Value(QStringLiteral("QCReportID")).toInt(),
                     rs->Value(QStringLiteral("QCReportName")).toString());
    return names;
}

// The report panel on the suite's own store and a throwaway demo database.
struct StoreFixture
{
    StoreFixture()
    {
        registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("0"));
        registry.setValue(QStringLiteral("Database Driver"), QStringLiteral("QSQLITE"));
        registry.setValue(QStringLiteral("Database Name"),
                          QString(registry.folder() + QStringLiteral("/norrix-demo.sqlite")));
        registry.setValue(QStringLiteral("Demo Database"), 1);
        registry.setValue(QStringLiteral("Default Rights"), QStringLiteral("500,501"));
        SuiteSetup::runAuto(SuiteSettings::fromRegistry());
        RegisterSuiteComponents();
        ResetResourceServer();
        host.state.blnCanEditReports = true;
        start();
    }

    ~StoreFixture()
    {
        panel.reset();
        for (const QString& classId :
             {QCReportStore::ClassId, CalcEngine::ClassId, PatientQuery::ClassId, StringServer::ClassId})
            ComponentFactory::unregisterClass(classId);
        ResetResourceServer();
    }

    // A fresh panel that lists and opens the stored definitions, as at a start.
    void start()
    {
        panel = std::make_unique<ReportTabsPanel>(host);
        host.panel = panel.get();
        host.modified = {};
        host.loading = true;
        for (int t = 0; t < 2; ++t)
        {
            panel->PrepareGrid(t);
            QVERIFY(panel->LoadVariableCatalogue(t));
        }
        panel->ListSavedReports();
        host.loading = false;
        panel->SelectFirstReports();
        panel->resize(900, 600);
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
    }

    // The list position of the item with this ID on tab, -1 when not listed.
    int listed(int tab, qint32 id) const
    {
        for (int i = 1; i < panel->cboReports[tab]->count(); ++i)
        {
            if (ComboList::ItemData(panel->cboReports[tab], i) == id)
                return i;
        }
        return -1;
    }

    FlexGrid& grid(int tab) { return *panel->msfgVariable[std::size_t(tab)]; }

    ScopedRegistryFile registry;
    RecordingMessageService boxes;
    TestHost host;
    std::unique_ptr<ReportTabsPanel> panel;
};
} // namespace

class TestStoredDefinitions : public QObject
{
    Q_OBJECT

private slots:
    void saveReplacesTheStoredDefinition()
    {
        StoreFixture f;
        ReportTabsPanel& panel = *f.panel;
        clickTab(panel, 0);
        const qint32 oldId = ComboList::ItemData(panel.cboReports[0], 1);
        const QString name = panel.cboReports[0]->itemText(1);
        addVariable(panel, 0, QString(), QStringLiteral("TLC (L)"), true, true);
        const Cells edited = gridCells(f.grid(0));

        click(panel.cmdSave);
        QCOMPARE(f.boxes.count(), 0);
        const qint32 newId = ComboList::ItemData(panel.cboReports[0], 1);
        QVERIFY(newId != oldId);
        QVERIFY(storedCells(oldId).isEmpty());
        QCOMPARE(storedCells(newId), edited);
        QCOMPARE(storedNames().value(newId), name);
        QVERIFY(!storedNames().contains(oldId));

        // Once more: a third ID.
        click(panel.cmdSave);
        const qint32 thirdId = ComboList::ItemData(panel.cboReports[0], 1);
        QVERIFY(thirdId != newId && thirdId != oldId);
        QCOMPARE(storedCells(thirdId), edited);

        f.start();
        const int position = f.listed(0, thirdId);
        QVERIFY(position > 0);
        choose(f.panel->cboReports[0], name);
        QCOMPARE(gridCells(f.grid(0)), edited);
    }

    void aFailingSaveKeepsTheOldDefinitionStoredAndListed()
    {
        StoreFixture f;
        ReportTabsPanel& panel = *f.panel;
        clickTab(panel, 0);
        const qint32 id = ComboList::ItemData(panel.cboReports[0], 1);
        const QString name = panel.cboReports[0]->itemText(1);
        const Cells before = storedCells(id);
        QVERIFY(!before.isEmpty());
        QCOMPARE(gridCells(f.grid(0)), before);

        // A row whose variable the catalogue no longer has cannot be stored.
        addVariable(panel, 0, QString(), QStringLiteral("TLC (L)"), false, true);
        f.grid(0).SetTextMatrix(f.grid(0).Rows() - 2, 6, QStringLiteral("999999"));
        click(panel.cmdSave);

        QCOMPARE(f.boxes.count(), 1);
        QVERIFY(!f.boxes.last().text.isEmpty());
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(ComboList::ItemData(panel.cboReports[0], 1), id);
        QVERIFY(f.host.modified[0]);
        // The delete that went before was undone with the failed save.
        QCOMPARE(storedCells(id), before);
        QCOMPARE(storedNames().value(id), name);

        f.start();
        QCOMPARE(f.listed(0, id), 1);
        QCOMPARE(f.panel->cboReports[0]->itemText(1), name);
        QCOMPARE(gridCells(f.grid(0)), before);
    }

    void saveAsStoresANewDefinitionBesideTheOld()
    {
        StoreFixture f;
        ReportTabsPanel& panel = *f.panel;
        clickTab(panel, 1);
        const qint32 oldId = ComboList::ItemData(panel.cboReports[1], 1);
        const Cells old = storedCells(oldId);
        addVariable(panel, 1, QStringLiteral("Peak"), QStringLiteral("SpO2 (%)"), true, false);
        const Cells edited = gridCells(f.grid(1));

        answerSaveAs(QStringLiteral("GX copy"));
        click(panel.cmdSaveAs);
        QCOMPARE(f.boxes.count(), 0);
        QCOMPARE(panel.cboReports[1]->currentText(), QStringLiteral("GX copy"));
        const qint32 newId = ComboList::ItemData(panel.cboReports[1], panel.cboReports[1]->currentIndex());
        int tab = -1;
        QCOMPARE(storedCells(newId, &tab), edited);
        QCOMPARE(tab, 1);
        QCOMPARE(storedCells(oldId), old);

        // The name is now taken, whatever its case.
        bool refused = false;
        whenModal([&](QWidget* modal) {
            auto* dialog = qobject_cast<frmSaveAs*>(modal);
            QVERIFY(dialog);
            QTest::keyClicks(dialog->txtName, QStringLiteral("gx COPY"));
            click(dialog->cmdSave);
            QCOMPARE(f.boxes.count(), 1);
            QCOMPARE(f.boxes.last().text, GetResourceText(4091));
            QCOMPARE(f.boxes.last().title, GetResourceText(4092));
            refused = dialog->isVisible();
            click(dialog->cmdCancel);
        });
        click(panel.cmdSaveAs);
        QVERIFY(refused);

        f.start();
        QVERIFY(f.listed(1, newId) > 0);
        QVERIFY(f.listed(1, oldId) > 0);
    }

    void deleteRemovesTheStoredDefinition()
    {
        StoreFixture f;
        ReportTabsPanel& panel = *f.panel;
        clickTab(panel, 0);
        const qint32 id = ComboList::ItemData(panel.cboReports[0], 1);
        const QString name = panel.cboReports[0]->itemText(1);
        QVERIFY(panel.cmdDelete->isEnabled());
        f.boxes.queueAnswer(MsgAnswer::Yes);
        click(panel.cmdDelete);
        QCOMPARE(f.boxes.last().text, GetResourceText(4057) + QStringLiteral(" \"") + name + QStringLiteral("\"?"));
        QVERIFY(!storedNames().contains(id));
        QVERIFY(storedCells(id).isEmpty());
        QCOMPARE(f.listed(0, id), -1);

        f.start();
        QCOMPARE(f.listed(0, id), -1);
    }
};

CALVEX_TEST(TestStoredDefinitions)
#include "TestStoredDefinitions.moc"
