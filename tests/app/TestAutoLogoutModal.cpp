#include "AutoLogoutFixture.h"

#include "common/TestMain.h"
#include "platform/MessageService.h"
#include "widgets/QtMessageService.h"

#include <QCloseEvent>
#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <QScopeGuard>

namespace
{
void expire(frmAutoLogout& countdown)
{
    AutoLogoutFixture::stopTimerTicks(countdown, 16);
}

// A window shown modally without a loop of its own that will not close.
class StubbornWindow final : public QWidget
{
protected:
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};
} // namespace

// Windows left open when the countdown runs out: a dialog the user left open (the
// calendar, Save As, the preview) and a question over it. They close from the
// top down, their loops return, and only then does the main window close and
// tell the engine.
class TestAutoLogoutModal : public QObject
{
    Q_OBJECT

private slots:
    void openDialogAndMessageBoxCloseBeforeTheMainWindow()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.window().show();
        QtMessageService qtBoxes;
        MessageService* previous = MessageService::installed();
        MessageService::install(&qtBoxes);
        const auto restore = qScopeGuard([previous] { MessageService::install(previous); });

        QStringList events;
        f.main.engine->calls.clear();
        f.main.engine->onCall = [&](const QString& call) { events.append(QStringLiteral("engine ") + call); };
        const auto stopListening = qScopeGuard([&] { f.main.engine->onCall = nullptr; });
        f.main.store->calls.clear();

        QDialog dialog(&f.window());
        dialog.setObjectName(QStringLiteral("dialog"));
        QObject::connect(&dialog, &QDialog::finished, [&] { events.append(QStringLiteral("dialog closed")); });
        int answer = 0;
        bool reachedTheBox = false;

        // In the dialog's loop: a question.
        QTimer::singleShot(0, &dialog, [&] {
            // In the question's loop: the countdown, then the ticks after it.
            QTimer::singleShot(0, &dialog, [&] {
                // Should a check fail, the windows still close, so that the test ends.
                const auto closeAll = qScopeGuard([] {
                    while (auto* open = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                        open->done(0);
                });
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QVERIFY(box);
                reachedTheBox = true;
                QObject::connect(box, &QDialog::finished, [&] { events.append(QStringLiteral("question closed")); });
                f.state().intIdleSeconds = 60;
                QVERIFY(f.tick(expire));
                QCOMPARE(QApplication::activeModalWidget(), box);
                QVERIFY(!f.window().IsUnloaded());

                // The tick after the countdown closes the open windows, not yet the main window.
                f.window().ActivityTimer_Timer();
                QVERIFY(QApplication::activeModalWidget() == nullptr);
                QVERIFY(!dialog.isVisible());
                QVERIFY(!f.window().IsUnloaded());
                QVERIFY(f.window().isVisible());
                events.append(QStringLiteral("tick returned"));
            });
            answer = MsgBox(GetResourceText(4082), MsgStyle::YesNo + MsgStyle::Question, f.window().MsgTitle());
            events.append(QStringLiteral("question returned"));
        });
        const int result = dialog.exec();
        events.append(QStringLiteral("dialog returned"));

        QVERIFY(reachedTheBox);
        // Both were cancelled: the question answers No, the window gives no choice.
        QCOMPARE(answer, MsgAnswer::No);
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(!f.window().IsUnloaded());

        // Back in the main window's own loop, the next tick closes it.
        QVERIFY(f.quietTicks(1));
        QVERIFY(f.window().IsUnloaded());
        QVERIFY(!f.window().isVisible());
        QCOMPARE(events,
                 QStringList({QStringLiteral("question closed"), QStringLiteral("dialog closed"),
                              QStringLiteral("tick returned"), QStringLiteral("question returned"),
                              QStringLiteral("dialog returned"), QStringLiteral("engine CloseApplication 6 true"),
                              QStringLiteral("engine released")}));
        // Nothing was read or written on the way out.
        QVERIFY(f.main.store->calls.isEmpty());
        QCOMPARE(f.beeps.size(), 16);
        QVERIFY(!f.state().exitRequested);
        QVERIFY(f.quietTicks(2));
        QCOMPARE(f.main.engine->calls.size(), 2);
    }

    void modalWindowsWithoutALoopCloseToo()
    {
        AutoLogoutFixture f(1);
        f.start();
        f.main.engine->calls.clear();
        QWidget preview;
        preview.setWindowModality(Qt::ApplicationModal);
        preview.show();
        StubbornWindow stubborn;
        stubborn.setWindowModality(Qt::ApplicationModal);
        stubborn.show();
        QCOMPARE(QApplication::activeModalWidget(), &stubborn);

        f.state().intIdleSeconds = 60;
        QVERIFY(f.tick(expire));
        QVERIFY(f.quietTicks(1));
        // The one that refuses to close is hidden.
        QVERIFY(!stubborn.isVisible());
        QVERIFY(!preview.isVisible());
        QVERIFY(!f.window().IsUnloaded());
        QVERIFY(f.main.engine->calls.isEmpty());

        QVERIFY(f.quietTicks(1));
        QVERIFY(f.window().IsUnloaded());
        QCOMPARE(f.main.engine->calls,
                 QStringList({QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
    }
};

CALVEX_TEST(TestAutoLogoutModal)
#include "TestAutoLogoutModal.moc"
