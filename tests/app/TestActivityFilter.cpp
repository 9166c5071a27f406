#include "AutoLogoutFixture.h"

#include "common/ModalDriver.h"
#include "common/TestMain.h"
#include "platform/MessageService.h"
#include "widgets/QtMessageService.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScopeGuard>
#include <QVBoxLayout>
#include <QWheelEvent>

// The watching of the user's input: which events count as activity, and in
// which windows. Each check starts from an idle count of 42 and looks whether
// the input reset it.
class TestActivityFilter : public QObject
{
    Q_OBJECT

    template <class Input> static bool resets(ProgramState& state, Input&& input)
    {
        state.intIdleSeconds = 42;
        input();
        return state.intIdleSeconds == 0;
    }

    static void key(QWidget* widget, QEvent::Type type, int key)
    {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }

private slots:
    void leftPressesAndDoubleClicksCount()
    {
        AutoLogoutFixture f(1);
        f.start();
        QLineEdit* patient = f.window().SubjectSearch()->txtPatient;
        QWidget* panel = f.window().ReportTabs();
        QVERIFY(resets(f.state(), [&] { QTest::mousePress(patient, Qt::LeftButton); }));
        QTest::mouseRelease(patient, Qt::LeftButton);
        QVERIFY(resets(f.state(), [&] { QTest::mouseClick(patient, Qt::LeftButton); }));
        QVERIFY(resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseButtonPress); }));
        QVERIFY(resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseButtonDblClick); }));
        QVERIFY(resets(f.state(), [&] { AutoLogoutFixture::mouse(&f.window(), QEvent::MouseButtonDblClick); }));
    }

    void movesReleasesOtherButtonsAndTheWheelDoNotCount()
    {
        AutoLogoutFixture f(1);
        f.start();
        QLineEdit* patient = f.window().SubjectSearch()->txtPatient;
        QWidget* panel = f.window().ReportTabs();
        QVERIFY(!resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseMove, Qt::NoButton); }));
        QVERIFY(!resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseButtonRelease); }));
        for (Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton, Qt::BackButton})
        {
            QVERIFY(!resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseButtonPress, button); }));
            QVERIFY(!resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseButtonDblClick, button); }));
            QVERIFY(!resets(f.state(), [&] { AutoLogoutFixture::mouse(panel, QEvent::MouseButtonRelease, button); }));
        }
        QVERIFY(!resets(f.state(), [&] { QTest::mouseClick(patient, Qt::RightButton); }));
        QVERIFY(!resets(f.state(), [&] {
            const QPointF pos = QRectF(panel->rect()).center();
            QWheelEvent wheel(pos, panel->mapToGlobal(pos), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(panel, &wheel);
        }));
    }

    void keysCountGoingDownAndComingUp()
    {
        AutoLogoutFixture f(1);
        f.start();
        QLineEdit* patient = f.window().SubjectSearch()->txtPatient;
        QVERIFY(resets(f.state(), [&] { key(patient, QEvent::KeyPress, Qt::Key_B); }));
        QVERIFY(resets(f.state(), [&] { key(patient, QEvent::KeyRelease, Qt::Key_B); }));
        QVERIFY(resets(f.state(), [&] { key(&f.window(), QEvent::KeyPress, Qt::Key_Shift); }));
        QVERIFY(resets(f.state(), [&] { QTest::keyClick(patient, Qt::Key_Tab); }));
    }

    void inputPassesOnToTheProgram()
    {
        AutoLogoutFixture f(1);
        f.start();
        QLineEdit* patient = f.window().SubjectSearch()->txtPatient;
        patient->clear();
        QVERIFY(resets(f.state(), [&] { QTest::keyClicks(patient, QStringLiteral("Smi")); }));
        QCOMPARE(patient->text(), QStringLiteral("Smi"));
    }

    void inputInAModalDialogCounts()
    {
        AutoLogoutFixture f(1);
        f.start();
        QDialog dialog(&f.window());
        auto* name = new QLineEdit(&dialog);
        auto* ok = new QPushButton(QStringLiteral("OK"), &dialog);
        auto* layout = new QVBoxLayout(&dialog);
        layout->addWidget(name);
        layout->addWidget(ok);
        QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);

        bool inside = false;
        ModalDriver::whenModal([&](QWidget* modal) {
            QCOMPARE(modal, &dialog);
            inside = true;
            QVERIFY(resets(f.state(), [&] { QTest::keyClicks(name, QStringLiteral("QC")); }));
            QVERIFY(!resets(f.state(), [&] { QTest::mouseClick(name, Qt::RightButton); }));
            QVERIFY(resets(f.state(), [&] { QTest::mouseClick(name, Qt::LeftButton); }));
            QVERIFY(resets(f.state(), [&] { QTest::mouseClick(ok, Qt::LeftButton); }));
        });
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QVERIFY(inside);
        QCOMPARE(name->text(), QStringLiteral("QC"));
    }

    void inputInAMessageBoxCounts()
    {
        AutoLogoutFixture f(1);
        f.start();
        QtMessageService boxes;
        MessageService* previous = MessageService::installed();
        MessageService::install(&boxes);
        const auto restore = qScopeGuard([previous] { MessageService::install(previous); });

        bool inside = false;
        ModalDriver::whenModal([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            QVERIFY(box);
            inside = true;
            QVERIFY(resets(f.state(), [&] { key(box, QEvent::KeyPress, Qt::Key_Shift); }));
            QVERIFY(
                !resets(f.state(), [&] { AutoLogoutFixture::mouse(box, QEvent::MouseButtonPress, Qt::RightButton); }));
            QVERIFY(resets(f.state(), [&] { QTest::mouseClick(box->button(QMessageBox::No), Qt::LeftButton); }));
        });
        QCOMPARE(MsgBox(QStringLiteral("Discard the changes?"), MsgStyle::YesNo + MsgStyle::Question), MsgAnswer::No);
        QVERIFY(inside);
    }

    void inputInAnotherWindowCounts()
    {
        AutoLogoutFixture f(1);
        f.start();
        QWidget other;
        auto* text = new QLineEdit(&other);
        other.show();
        QVERIFY(resets(f.state(), [&] { QTest::keyClick(text, Qt::Key_X); }));
        QVERIFY(resets(f.state(), [&] { QTest::mouseClick(text, Qt::LeftButton); }));
        QVERIFY(!resets(f.state(), [&] { QTest::mouseClick(text, Qt::RightButton); }));
    }
};

CALVEX_TEST(TestActivityFilter)
#include "TestActivityFilter.moc"
