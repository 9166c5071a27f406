#include "PanelDriving.h"

#include "common/FakeReportStore.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"
#include "reports/frmSaveAs.h"

#include <QTest>

using namespace PanelDriving;

namespace
{
// The window over a scripted store, with the test strings and the message recorder.
struct SaveAsFixture
{
    ScopedTestStrings strings;
    RecordingMessageService boxes;
    std::shared_ptr<FakeReportStore::Script> store = std::make_shared<FakeReportStore::Script>();
    ScopedComponentRegistration storeRegistration{QCReportStore::ClassId, FakeReportStore::creator(store)};
    frmSaveAs dialog{QStringLiteral("Main title")};

    // Opens the window modally, lets `handle` work in it and returns the accepted name.
    QString run(std::function<void(frmSaveAs&)> handle)
    {
        whenModal([this, handle = std::move(handle)](QWidget* modal) {
            QCOMPARE(modal, &dialog);
            handle(dialog);
        });
        dialog.exec();
        return dialog.m_strName;
    }
};
} // namespace

class TestSaveAsWindow : public QObject
{
    Q_OBJECT

private slots:
    void captionsComeFromTheStringServer()
    {
        SaveAsFixture f;
        QCOMPARE(f.dialog.windowTitle(), QStringLiteral("T4089"));
        QCOMPARE(f.dialog.Label1->text(), QStringLiteral("T4090"));
        QCOMPARE(f.dialog.cmdSave->text(), QStringLiteral("T4048"));
        QCOMPARE(f.dialog.cmdCancel->text(), QStringLiteral("T4008"));
        QVERIFY(!f.dialog.cmdSave->isEnabled());
        QVERIFY(f.dialog.txtName->text().isEmpty());
    }

    void saveIsEnabledOnlyWithTextAndThenTheDefault()
    {
        SaveAsFixture f;
        f.run([](frmSaveAs& dialog) {
            QVERIFY(!dialog.cmdSave->isEnabled());
            QVERIFY(!dialog.cmdSave->isDefault());
            QTest::keyClick(dialog.txtName, Qt::Key_A);
            QVERIFY(dialog.cmdSave->isEnabled());
            QVERIFY(dialog.cmdSave->isDefault());
            QTest::keyClick(dialog.txtName, Qt::Key_Backspace);
            QVERIFY(!dialog.cmdSave->isEnabled());
            // Enter with no text saves nothing.
            QTest::keyClick(dialog.txtName, Qt::Key_Return);
            QVERIFY(dialog.isVisible());
            click(dialog.cmdCancel);
        });
        QCOMPARE(f.dialog.result(), int(QDialog::Rejected));
        QVERIFY(f.store->calls.isEmpty());
    }

    void enterSavesThroughTheDefaultButton()
    {
        SaveAsFixture f;
        const QString name = f.run([](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("GX weekly"));
            QTest::keyClick(dialog.txtName, Qt::Key_Return);
        });
        QCOMPARE(name, QStringLiteral("GX weekly"));
        QCOMPARE(f.store->calls, QStringList({QStringLiteral("CountReportsNamed GX weekly")}));
        QCOMPARE(f.dialog.result(), int(QDialog::Accepted));
        QVERIFY(!f.dialog.isVisible());
    }

    void theWholeTextIsSelectedOnFocus()
    {
        SaveAsFixture f;
        f.run([](frmSaveAs& dialog) {
            dialog.txtName->setText(QStringLiteral("Old name"));
            dialog.cmdCancel->setFocus();
            dialog.txtName->deselect();
            dialog.txtName->setFocus(Qt::OtherFocusReason);
            QVERIFY(dialog.txtName->hasFocus());
            QCOMPARE(dialog.txtName->selectedText(), QStringLiteral("Old name"));
            // Typing replaces it.
            QTest::keyClicks(dialog.txtName, QStringLiteral("New"));
            QCOMPARE(dialog.txtName->text(), QStringLiteral("New"));
            click(dialog.cmdCancel);
        });
    }

    void aUsedNameIsRefusedAndTheWindowStaysOpen()
    {
        SaveAsFixture f;
        f.store->countReportsNamed = [](const QString& name) {
            return name == QStringLiteral("Spirometry QC") ? 2 : 0;
        };
        const QString name = f.run([&f](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("Spirometry QC"));
            click(dialog.cmdSave);
            QCOMPARE(f.boxes.count(), 1);
            QCOMPARE(f.boxes.last().text, QStringLiteral("T4091"));
            QCOMPARE(f.boxes.last().style, 48);
            QCOMPARE(f.boxes.last().title, QStringLiteral("T4092"));
            QVERIFY(dialog.isVisible());
            QCOMPARE(dialog.focusWidget(), dialog.txtName);
            QVERIFY(dialog.m_strName.isEmpty());
            click(dialog.cmdCancel);
        });
        QVERIFY(name.isEmpty());
    }

    void namesAreTakenAsTyped()
    {
        SaveAsFixture f;
        const QString name = f.run([](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("  PF daily "));
            click(dialog.cmdSave);
        });
        QCOMPARE(name, QStringLiteral("  PF daily "));
        QCOMPARE(f.store->calls, QStringList({QStringLiteral("CountReportsNamed   PF daily ")}));
    }

    void cancelGivesNoName()
    {
        SaveAsFixture f;
        const QString name = f.run([](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("Unwanted"));
            click(dialog.cmdCancel);
        });
        QVERIFY(name.isEmpty());
        QVERIFY(f.store->calls.isEmpty());
    }

    void escapeGivesNoName()
    {
        SaveAsFixture f;
        const QString name = f.run([](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("Unwanted"));
            QTest::keyClick(dialog.txtName, Qt::Key_Escape);
        });
        QVERIFY(name.isEmpty());
    }

    void aStoreErrorInTheNameCheckIsShown()
    {
        SaveAsFixture f;
        f.store->failOn = QStringLiteral("CountReportsNamed");
        const QString name = f.run([&f](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("Any"));
            click(dialog.cmdSave);
            QCOMPARE(f.boxes.count(), 1);
            QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in CountReportsNamed"));
            QCOMPARE(f.boxes.last().style, 48);
            QCOMPARE(f.boxes.last().title, QStringLiteral("Main title"));
            QVERIFY(dialog.isVisible());
            click(dialog.cmdCancel);
        });
        QVERIFY(name.isEmpty());
        QCOMPARE(f.store->created, 1);
    }
};

CALVEX_TEST(TestSaveAsWindow)
#include "TestSaveAsWindow.moc"
