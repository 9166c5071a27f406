#include "PanelDriving.h"
#include "PanelFixture.h"

#include "common/ComboItemTexts.h"
#include "common/TestMain.h"
#include "widgets/ComboList.h"

#include <QRegularExpression>
#include <QTest>

using namespace PanelDriving;

namespace
{
// The calls made since `from`.
QStringList callsSince(const PanelFixture& f, qsizetype from)
{
    return f.store->calls.mid(from);
}

void showPanel(PanelFixture& f, int tab)
{
    f.load();
    f.panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
    clickTab(f.panel, tab);
    QCOMPARE(f.panel.CurrentTab(), tab);
}

// A change of the definition on tab 0 (Spirometry QC), made by the user.
void changeFirstTab(PanelFixture& f)
{
    f.panel.chkShowIn[1]->click();
    QVERIFY(f.host.modified[0]);
}
} // namespace

class TestReportCommands : public QObject
{
    Q_OBJECT

private slots:
    // New

    void newOnAModifiedDefinitionAsksFirst()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        f.host.actions.clear();
        f.boxes.queueAnswer(MsgAnswer::Yes);
        click(f.panel.cmdNew);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.last().style, 36);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4063"));
        // The placeholder's handler runs New once more; the inner run has nothing to ask.
        QCOMPARE(f.host.actions, QStringList({QStringLiteral("ConfirmDiscardChanges 0 T4063"),
                                              QStringLiteral("ConfirmDiscardChanges 0 T4063"),
                                              QStringLiteral("ResetDateRange"), QStringLiteral("ResetDateRange")}));
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 0);
        QCOMPARE(f.grid(0).Rows(), 2);
        QCOMPARE(f.grid(0).Row(), 0);
        QVERIFY(!f.host.modified[0]);
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        QVERIFY(!f.panel.cmdSaveAs->isEnabled());
        QVERIFY(f.panel.cmdSave->isEnabled());
        QVERIFY(f.panel.cmdNew->isEnabled());
        QVERIFY(f.host.from.isEmpty());
        QCOMPARE(f.host.to, QStringLiteral("06/15/2024"));
    }

    void newAnsweredNoKeepsTheDefinition()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        f.boxes.queueAnswer(MsgAnswer::No);
        click(f.panel.cmdNew);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(f.grid(0).Rows(), 4);
        QVERIFY(f.host.modified[0]);
        QVERIFY(!f.host.actions.contains(QStringLiteral("ResetDateRange")));
    }

    void newOnThePlaceholderRunsOnce()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdNew);
        f.host.actions.clear();
        click(f.panel.cmdNew);
        QCOMPARE(f.host.actions,
                 QStringList({QStringLiteral("ConfirmDiscardChanges 0 T4063"), QStringLiteral("ResetDateRange")}));
    }

    void newWorksOnTheCurrentTabOnly()
    {
        PanelFixture f;
        showPanel(f, 1);
        click(f.panel.cmdNew);
        QCOMPARE(f.grid(1).Rows(), 2);
        QCOMPARE(f.grid(0).Rows(), 4);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
    }

    // Save

    void saveReplacesTheStoredDefinition()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        const int created = f.store->created;
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(callsSince(f, from),
                 QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 1"),
                              QStringLiteral("SaveReport Spirometry QC tab=0 n=2"), QStringLiteral("CommitTrans")}));
        QCOMPARE(f.store->created, created + 1); // one store for the whole save
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 100);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QVERIFY(!f.host.modified[0]);
        QCOMPARE(f.boxes.count(), 0);
        // The record handed to the store is the grid's.
        QCOMPARE(f.store->saved.size(), 1);
        QCOMPARE(f.store->saved.last().VariableCount(), 2);
        const ReportInfo& saved = f.store->saved.last();
        QCOMPARE(saved.Variables.at(1).VarName, QStringLiteral("FEV1"));
        QVERIFY(saved.Variables.at(1).ShowInGraph);
        QVERIFY(!saved.Variables.at(1).ShowInTable);
        // Only opening writes the grid's Tag.
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("1"));
    }

    void savingTwiceGivesTwoIds()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdSave);
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 100);
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(callsSince(f, from),
                 QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 100"),
                              QStringLiteral("SaveReport Spirometry QC tab=0 n=2"), QStringLiteral("CommitTrans")}));
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 101);
        QCOMPARE(f.boxes.count(), 0);
    }

    void saveOnThePlaceholderSavesUnderItsText()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdNew);
        QVERIFY(f.panel.cmdSave->isEnabled());
        addVariable(f.panel, 0, QStringLiteral("Post"), QStringLiteral("PEF (L/s)"), true, true);
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(callsSince(f, from),
                 QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 0"),
                              QStringLiteral("SaveReport (T4114) tab=0 n=1"), QStringLiteral("CommitTrans")}));
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 0), 100);
        QCOMPARE(ComboItemTexts(f.panel.cboReports[0]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Spirometry QC"), QStringLiteral("Flow QC")}));
        QVERIFY(!f.host.modified[0]);
    }

    void saveAsksNothingAndSavesAnEmptyGridToo()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdNew);
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(f.boxes.count(), 0);
        QCOMPARE(callsSince(f, from),
                 QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 0"),
                              QStringLiteral("SaveReport (T4114) tab=0 n=0"), QStringLiteral("CommitTrans")}));
        QCOMPARE(f.store->saved.size(), 1);
        QCOMPARE(f.store->saved.last().VariableCount(), 0);
    }

    void aFailingSaveKeepsTheStoredDefinition()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        f.store->failOn = QStringLiteral("SaveReport");
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        // The delete is undone with the failed save.
        QCOMPARE(callsSince(f, from),
                 QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 1"),
                              QStringLiteral("SaveReport Spirometry QC tab=0 n=2"), QStringLiteral("RollbackTrans")}));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in SaveReport"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        // Still listed under its ID, and still unsaved.
        QCOMPARE(ComboItemTexts(f.panel.cboReports[0]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Spirometry QC"), QStringLiteral("Flow QC")}));
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 1);
        QVERIFY(f.host.modified[0]);
        QCOMPARE(f.grid(0).Rows(), 4);
    }

    void aSaveOfADefinitionChangedElsewhereKeepsTheGridModified()
    {
        PanelFixture f;
        showPanel(f, 0);
        QVERIFY(!f.host.modified[0]);
        // Another workstation replaced the definition after it was opened here.
        f.store->failOn = QStringLiteral("DeleteReport");
        f.store->failNumber = QCReportStore::ErrorDefinitionChanged;
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(callsSince(f, from), QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 1"),
                                                   QStringLiteral("RollbackTrans")}));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in DeleteReport"));
        QCOMPARE(f.boxes.last().style, 48);
        // Nothing is lost: the rows stay, and stay unsaved; the item keeps its ID.
        QVERIFY(f.host.modified[0]);
        QCOMPARE(f.grid(0).Rows(), 4);
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 1);

        // Save As keeps them under another name.
        f.store->failOn.clear();
        answerSaveAs(QStringLiteral("Spirometry QC (mine)"));
        click(f.panel.cmdSaveAs);
        QVERIFY(f.store->calls.contains(QStringLiteral("SaveReport Spirometry QC (mine) tab=0 n=2")));
        QCOMPARE(f.panel.cboReports[0]->currentText(), QStringLiteral("Spirometry QC (mine)"));
        QVERIFY(!f.host.modified[0]);
    }

    void anotherFailingSaveLeavesTheModifiedFlagAsItWas()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->failOn = QStringLiteral("DeleteReport");
        f.store->failNumber = 3260; // a wait that ran out
        click(f.panel.cmdSave);
        QCOMPARE(f.boxes.count(), 1);
        QVERIFY(!f.host.modified[0]);
    }

    void aFailingDeleteSavesNothing()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->failOn = QStringLiteral("DeleteReport");
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(callsSince(f, from), QStringList({QStringLiteral("BeginTrans"), QStringLiteral("DeleteReport 1"),
                                                   QStringLiteral("RollbackTrans")}));
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in DeleteReport"));
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 1);
    }

    void aStoreThatCannotBeginSavesNothing()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->failOn = QStringLiteral("BeginTrans");
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdSave);
        QCOMPARE(callsSince(f, from), QStringList({QStringLiteral("BeginTrans")}));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().style, 48);
    }

    // Save As

    void saveAsAddsTheNewNameAndSelectsIt()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        const qsizetype from = f.store->calls.size();
        answerSaveAs(QStringLiteral("PF Copy"));
        click(f.panel.cmdSaveAs);
        QCOMPARE(callsSince(f, from), QStringList({QStringLiteral("CountReportsNamed PF Copy"),
                                                   QStringLiteral("SaveReport PF Copy tab=0 n=2")}));
        QCOMPARE(ComboItemTexts(f.panel.cboReports[0]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Spirometry QC"), QStringLiteral("Flow QC"),
                              QStringLiteral("PF Copy")}));
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 3);
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 3), 100);
        // The old definition is untouched and the new one is not opened again.
        QCOMPARE(ComboList::ItemData(f.panel.cboReports[0], 1), 1);
        QVERIFY(f.store->calls.filter(QRegularExpression(QStringLiteral("^DeleteReport"))).isEmpty());
        QVERIFY(!f.host.modified[0]);
        QVERIFY(!f.host.loading);
        QCOMPARE(f.grid(0).Rows(), 4);
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("1"));
        QCOMPARE(f.boxes.count(), 0);
    }

    void saveAsCancelledSavesNothing()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        const qsizetype from = f.store->calls.size();
        answerSaveAs(QString());
        click(f.panel.cmdSaveAs);
        QCOMPARE(callsSince(f, from), QStringList());
        QCOMPARE(f.panel.cboReports[0]->count(), 3);
        QVERIFY(f.host.modified[0]);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void saveAsWithAUsedNameKeepsTheWindowOpen()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->countReportsNamed = [](const QString& name) {
            return name.compare(QStringLiteral("Flow QC"), Qt::CaseInsensitive) == 0 ? 1 : 0;
        };
        bool checked = false;
        whenModal([&](QWidget* modal) {
            auto* dialog = qobject_cast<frmSaveAs*>(modal);
            QVERIFY(dialog);
            QTest::keyClicks(dialog->txtName, QStringLiteral("flow qc"));
            click(dialog->cmdSave);
            QCOMPARE(f.boxes.count(), 1);
            QCOMPARE(f.boxes.last().text, QStringLiteral("T4091"));
            QCOMPARE(f.boxes.last().style, 48);
            QCOMPARE(f.boxes.last().title, QStringLiteral("T4092"));
            QVERIFY(dialog->isVisible());
            QCOMPARE(QApplication::activeModalWidget(), dialog);
            QCOMPARE(dialog->focusWidget(), dialog->txtName);
            dialog->txtName->selectAll();
            QTest::keyClicks(dialog->txtName, QStringLiteral("Flow QC 2"));
            click(dialog->cmdSave);
            checked = true;
        });
        click(f.panel.cmdSaveAs);
        QVERIFY(checked);
        QCOMPARE(f.panel.cboReports[0]->currentText(), QStringLiteral("Flow QC 2"));
        QVERIFY(f.store->calls.contains(QStringLiteral("SaveReport Flow QC 2 tab=0 n=2")));
        QVERIFY(!f.store->calls.join(QLatin1Char(',')).contains(QStringLiteral("SaveReport flow qc")));
    }

    void saveAsThatLosesItsNameMeanwhileIsToldTheNameIsTaken()
    {
        PanelFixture f;
        showPanel(f, 0);
        // The name was free when the window checked it; another workstation
        // saved it before this one did.
        int saves = 0;
        f.store->onCall = [&saves](const QString& call) {
            if (call.startsWith(QLatin1String("SaveReport")) && ++saves == 1)
                throw RuntimeError(QCReportStore::ErrorNameTaken, QStringLiteral("FakeReportStore"),
                                   QStringLiteral("taken meanwhile"));
        };
        bool again = false;
        whenModal([&](QWidget* modal) {
            auto* dialog = qobject_cast<frmSaveAs*>(modal);
            QVERIFY(dialog);
            QTest::keyClicks(dialog->txtName, QStringLiteral("RaceName"));
            // The window opens again on the name, as if it had stayed open.
            whenModal([&](QWidget* next) {
                auto* reopened = qobject_cast<frmSaveAs*>(next);
                QVERIFY(reopened);
                QCOMPARE(f.boxes.count(), 1);
                QCOMPARE(f.boxes.last().text, QStringLiteral("T4091"));
                QCOMPARE(f.boxes.last().style, 48);
                QCOMPARE(f.boxes.last().title, QStringLiteral("T4092"));
                QCOMPARE(reopened->txtName->text(), QStringLiteral("RaceName"));
                QVERIFY(reopened->cmdSave->isEnabled());
                reopened->txtName->selectAll();
                QTest::keyClicks(reopened->txtName, QStringLiteral("RaceName 2"));
                click(reopened->cmdSave);
                again = true;
            });
            click(dialog->cmdSave);
        });
        click(f.panel.cmdSaveAs);
        QVERIFY(again);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.store->calls.filter(QStringLiteral("SaveReport")),
                 QStringList({QStringLiteral("SaveReport RaceName tab=0 n=2"),
                              QStringLiteral("SaveReport RaceName 2 tab=0 n=2")}));
        QCOMPARE(f.panel.cboReports[0]->currentText(), QStringLiteral("RaceName 2"));
        QCOMPARE(f.panel.cboReports[0]->findText(QStringLiteral("RaceName")), -1);
        QVERIFY(!f.host.loading);
    }

    void saveAsErrorOfTheStoreIsShown()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->failOn = QStringLiteral("SaveReport");
        answerSaveAs(QStringLiteral("PF Copy"));
        click(f.panel.cmdSaveAs);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in SaveReport"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(f.panel.cboReports[0]->count(), 3);
        QVERIFY(!f.host.loading);
    }

    void saveAsNeedsAVariableRow()
    {
        PanelFixture f;
        showPanel(f, 1);
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
        click(f.panel.cmdNew);
        QVERIFY(!f.panel.cmdSaveAs->isEnabled());
        addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("HR (bpm)"), true, false);
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
        click(f.panel.cmdVarRemove[1]);
        QVERIFY(!f.panel.cmdSaveAs->isEnabled());
    }

    // Delete

    void deleteAsksWithTheNameAndStartsANewDefinition()
    {
        PanelFixture f;
        showPanel(f, 0);
        QVERIFY(f.panel.cmdDelete->isEnabled());
        f.boxes.queueAnswer(MsgAnswer::Yes);
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdDelete);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4057 \"Spirometry QC\"?"));
        QCOMPARE(f.boxes.last().style, 36);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4058"));
        QCOMPARE(callsSince(f, from), QStringList({QStringLiteral("DeleteReport 1")}));
        QCOMPARE(ComboItemTexts(f.panel.cboReports[0]),
                 QStringList({QStringLiteral("(T4114)"), QStringLiteral("Flow QC")}));
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 0);
        QCOMPARE(f.grid(0).Rows(), 2);
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        QVERIFY(f.host.actions.contains(QStringLiteral("ResetDateRange")));
    }

    void deleteAnsweredNoKeepsEverything()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.boxes.queueAnswer(MsgAnswer::No);
        const qsizetype from = f.store->calls.size();
        click(f.panel.cmdDelete);
        QCOMPARE(callsSince(f, from), QStringList());
        QCOMPARE(f.panel.cboReports[0]->count(), 3);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QVERIFY(f.panel.cmdDelete->isEnabled());
    }

    void deletingTheOnlyDefinitionOfATabLeavesThePlaceholder()
    {
        PanelFixture f;
        showPanel(f, 1);
        f.boxes.queueAnswer(MsgAnswer::Yes);
        click(f.panel.cmdDelete);
        QCOMPARE(ComboItemTexts(f.panel.cboReports[1]), QStringList({QStringLiteral("(T4114)")}));
        QCOMPARE(f.panel.cboReports[1]->currentIndex(), 0);
        // New ran for the tab.
        QCOMPARE(f.grid(1).Rows(), 2);
        QVERIFY(f.host.actions.contains(QStringLiteral("ResetDateRange")));
    }

    void deletingAModifiedDefinitionAsksAboutTheChangesToo()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        f.boxes.queueAnswer(MsgAnswer::Yes);
        f.boxes.queueAnswer(MsgAnswer::Yes);
        click(f.panel.cmdDelete);
        QCOMPARE(f.boxes.count(), 2);
        QCOMPARE(f.boxes.boxes().at(1).text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.boxes().at(1).title, QStringLiteral("T4063"));
        QCOMPARE(f.grid(0).Rows(), 2);
        QVERIFY(!f.host.modified[0]);
    }

    void aFailingDeleteKeepsTheItem()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->failOn = QStringLiteral("DeleteReport");
        f.boxes.queueAnswer(MsgAnswer::Yes);
        click(f.panel.cmdDelete);
        QCOMPARE(f.boxes.count(), 2);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in DeleteReport"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(f.panel.cboReports[0]->count(), 3);
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(f.grid(0).Rows(), 4);
        QVERIFY(!f.host.loading);
    }

    // Leaving a definition

    void answeringNoRestoresTheList()
    {
        PanelFixture f;
        showPanel(f, 0);
        changeFirstTab(f);
        f.boxes.queueAnswer(MsgAnswer::No);
        choose(f.panel.cboReports[0], QStringLiteral("Flow QC"));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4054"));
        QCOMPARE(f.panel.cboReports[0]->currentText(), QStringLiteral("Spirometry QC"));
        QCOMPARE(f.grid(0).TextMatrix(1, 1), QStringLiteral("FVC"));
        QVERIFY(!f.panel.chkShowIn[1]->isChecked()); // the editor as the user left it
        QVERIFY(f.host.modified[0]);
    }

    void theTabSwitchAfterNewReopensTheSavedDefinition()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdNew);
        addVariable(f.panel, 0, QStringLiteral("Pre"), QStringLiteral("PEF (L/s)"), true, false);
        QVERIFY(f.host.modified[0]);
        clickTab(f.panel, 1);
        QCOMPARE(f.panel.cboReports[1]->currentIndex(), 1);
        QCOMPARE(f.boxes.count(), 0);

        // Back on the first tab, the list follows the grid's Tag to the saved
        // definition, which replaces the unsaved new one after the question.
        f.boxes.queueAnswer(MsgAnswer::Yes);
        clickTab(f.panel, 0);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4082"));
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4054"));
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(f.grid(0).Rows(), 4);
        QCOMPARE(f.grid(0).TextMatrix(1, 1), QStringLiteral("FVC"));
        QVERIFY(!f.host.modified[0]);
    }

    void afterSaveTheTabSwitchFindsNoItemForTheOldId()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdSave);
        const qsizetype from = f.store->calls.size();
        clickTab(f.panel, 1);
        clickTab(f.panel, 0);
        QCOMPARE(callsSince(f, from), QStringList());
        QCOMPARE(f.panel.cboReports[0]->currentIndex(), 1);
        QCOMPARE(f.grid(0).Tag(), QStringLiteral("1"));
    }

    // Button rules

    void buttonsFollowTheEditRight()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.host.state.blnCanEditReports = false;
        f.panel.UpdateReportButtons();
        for (QPushButton* button : {f.panel.cmdNew, f.panel.cmdSave, f.panel.cmdSaveAs, f.panel.cmdDelete})
            QVERIFY2(!button->isEnabled(), qPrintable(button->objectName()));
        f.panel.EnableNewButton();
        QVERIFY(!f.panel.cmdNew->isEnabled());

        f.host.state.blnCanEditReports = true;
        const qsizetype from = f.store->calls.size();
        f.panel.UpdateReportButtons();
        QVERIFY(f.panel.cmdNew->isEnabled());
        QVERIFY(f.panel.cmdSaveAs->isEnabled());
        QVERIFY(f.panel.cmdDelete->isEnabled());
        QCOMPARE(callsSince(f, from), QStringList({QStringLiteral("CanDeleteReport 1")}));
        // Save is left as it is: the edit right alone disables it.
        QVERIFY(!f.panel.cmdSave->isEnabled());
    }

    void deleteButtonAsksTheStoreOnlyForASavedDefinition()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.store->canDelete = false;
        f.panel.UpdateDeleteButton();
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        f.store->canDelete = true;
        f.panel.UpdateDeleteButton();
        QVERIFY(f.panel.cmdDelete->isEnabled());

        click(f.panel.cmdNew);
        const qsizetype from = f.store->calls.size();
        f.panel.UpdateDeleteButton();
        QVERIFY(!f.panel.cmdDelete->isEnabled());
        QCOMPARE(callsSince(f, from), QStringList());
    }

    void newDisabledWithoutTheEditRight()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.host.state.blnCanEditReports = false;
        f.panel.EnableNewButton();
        QVERIFY(!f.panel.cmdNew->isEnabled());
        f.host.state.blnCanEditReports = true;
        f.panel.EnableNewButton();
        QVERIFY(f.panel.cmdNew->isEnabled());
    }
};

CALVEX_TEST(TestReportCommands)
#include "TestReportCommands.moc"
