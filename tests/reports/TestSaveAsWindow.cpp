#include "PanelDriving.h"

#include "common/FakeReportStore.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"
#include "reports/frmSaveAs.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
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

    void theNameTakesAtMostTheStoredLength()
    {
        SaveAsFixture f;
        QCOMPARE(QCReportStore::MaxNameLength, 100);
        const QString name = f.run([](frmSaveAs& dialog) {
            // Typed: the 101st character goes nowhere.
            QTest::keyClicks(dialog.txtName, QString(101, QLatin1Char('x')));
            QCOMPARE(dialog.txtName->text(), QString(100, QLatin1Char('x')));
            // Pasted: the start of the text, as much as fits.
            dialog.txtName->clear();
            QString pasted;
            for (int i = 0; i < 15; ++i)
                pasted += QStringLiteral("Spiro %1 ").arg(i, 2, 10, QLatin1Char('0'));
            QCOMPARE(pasted.size(), 135);
            QGuiApplication::clipboard()->setText(pasted);
            QTest::keyClick(dialog.txtName, Qt::Key_V, Qt::ControlModifier);
            QCOMPARE(dialog.txtName->text(), pasted.left(100));
            // Into a full box nothing more goes, wherever the cursor is.
            dialog.txtName->setCursorPosition(3);
            dialog.txtName->insert(QStringLiteral("more"));
            QCOMPARE(dialog.txtName->text(), pasted.left(100));
            click(dialog.cmdSave);
        });
        QCOMPARE(name, QString(QStringLiteral("Spiro 00 Spiro 01 Spiro 02 Spiro 03 Spiro 04 Spiro 05 Spiro 06 Spiro 07 "
                                              "Spiro 08 Spiro 09 Spiro 10 S")));
        QCOMPARE(name.size(), 100);
    }

    void controlCharactersCannotBeTyped()
    {
        SaveAsFixture f;
        const QString name = f.run([](frmSaveAs& dialog) {
            QTest::keyClicks(dialog.txtName, QStringLiteral("PF"));
            // Keys whose text is a control character (an escape, a C1 code).
            for (const QString& text : {QStringLiteral("\x1b"), QStringLiteral("\u0085"), QStringLiteral("\x07")})
            {
                QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, text);
                QCoreApplication::sendEvent(dialog.txtName, &press);
            }
            // An input method's committed text with a line break and a tab in it.
            QInputMethodEvent composed;
            composed.setCommitString(QStringLiteral(" daily\n\tQC\u2028"));
            QCoreApplication::sendEvent(dialog.txtName, &composed);
            QCOMPARE(dialog.txtName->text(), QStringLiteral("PF dailyQC"));
            QCOMPARE(dialog.txtName->cursorPosition(), 10);
            click(dialog.cmdSave);
        });
        QCOMPARE(name, QStringLiteral("PF dailyQC"));
        QCOMPARE(f.store->calls, QStringList({QStringLiteral("CountReportsNamed PF dailyQC")}));
    }

    void controlCharactersCannotBePasted()
    {
        SaveAsFixture f;
        const QString name = f.run([](frmSaveAs& dialog) {
            // A cell copied from a spreadsheet ends in a line break.
            QGuiApplication::clipboard()->setText(QStringLiteral("DLCO\r\n"));
            QTest::keyClick(dialog.txtName, Qt::Key_V, Qt::ControlModifier);
            QCOMPARE(dialog.txtName->text(), QStringLiteral("DLCO"));
            // Pasted into the middle: the rest of the pasted text arrives, the cursor after it.
            dialog.txtName->setCursorPosition(2);
            QGuiApplication::clipboard()->setText(QStringLiteral("\t-\x01x\x1f-\x7f"));
            dialog.txtName->paste();
            QCOMPARE(dialog.txtName->text(), QStringLiteral("DL-x-CO"));
            QCOMPARE(dialog.txtName->cursorPosition(), 5);
            // Inserted by the program's own hand, the same.
            dialog.txtName->end(false);
            dialog.txtName->insert(QStringLiteral("\u2029 weekly\v"));
            QCOMPARE(dialog.txtName->text(), QStringLiteral("DL-x-CO weekly"));
            click(dialog.cmdSave);
        });
        QCOMPARE(name, QStringLiteral("DL-x-CO weekly"));
    }

    void onlyControlCharactersLeaveTheNameEmpty()
    {
        SaveAsFixture f;
        f.run([](frmSaveAs& dialog) {
            QGuiApplication::clipboard()->setText(QStringLiteral("\r\n\t"));
            dialog.txtName->paste();
            QCOMPARE(dialog.txtName->text(), QString());
            QVERIFY(!dialog.cmdSave->isEnabled());
            click(dialog.cmdCancel);
        });
        QVERIFY(f.store->calls.isEmpty());
    }

    void spacesAndOtherCharactersStayAsTheyAre()
    {
        SaveAsFixture f;
        const QString typed = QStringLiteral("  Lungenfunktion – Woche ½ (Ärzte) 肺功能 ");
        const QString name = f.run([&typed](frmSaveAs& dialog) {
            QGuiApplication::clipboard()->setText(typed);
            dialog.txtName->paste();
            click(dialog.cmdSave);
        });
        QCOMPARE(name, typed);
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
