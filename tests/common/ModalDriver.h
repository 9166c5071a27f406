#pragma once

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <functional>

// Acts on a modal window from inside its own event loop. The test arranges
// the action first, then does what opens the window (which returns only once
// the window has closed). The action runs on the next modal window that is
// open and visible; a window already open when the action is arranged is
// passed over. A dialog that the action leaves open (a failed check) is
// cancelled, so that the test goes on instead of waiting for it forever.
//
// A ModalDriver object counts the windows it handled and those left open, and
// stops looking when it goes (the test ended first); whenModal looks without
// an object and gives up after a number of looks.
class ModalDriver
{
public:
    // How often the window is looked for.
    static constexpr int LookIntervalMs = 10;

    ModalDriver() = default;
    ~ModalDriver() { delete m_watch.data(); }
    ModalDriver(const ModalDriver&) = delete;
    ModalDriver& operator=(const ModalDriver&) = delete;

    // Runs action on the next modal window (null when it is no dialog),
    // for as long as this driver lives.
    void onNextModal(std::function<void(QDialog*)> action)
    {
        delete m_watch.data();
        m_watch = watch(
            [this, action = std::move(action)](QWidget* modal) {
                ++m_handled;
                action(qobject_cast<QDialog*>(modal));
            },
            [this](QDialog* dialog) {
                qWarning("The test left %s open.", qPrintable(dialog->objectName()));
                ++m_leftOpen;
            },
            -1);
    }
    int handled() const { return m_handled; }
    // Windows the test's action left open (the driver closed them).
    int leftOpen() const { return m_leftOpen; }

    // Runs handle on the next modal window; the window is given up after
    // attempts looks (two seconds by default).
    static void whenModal(std::function<void(QWidget*)> handle, int attempts = 200)
    {
        watch(std::move(handle), {}, attempts);
    }
    // The same for a window of type T: another window fails the test.
    template <class T> static void whenModal(std::function<void(T*)> act, int attempts = 200)
    {
        whenModal(
            [act = std::move(act)](QWidget* modal) {
                T* window = qobject_cast<T*>(modal);
                QVERIFY2(window, qPrintable(QStringLiteral("unexpected modal window ") + modal->objectName()));
                act(window);
            },
            attempts);
    }

private:
    // A timer of the application's that looks for the window, acts once and
    // goes; attempts < 0 looks until it is deleted.
    static QTimer* watch(std::function<void(QWidget*)> act, std::function<void(QDialog*)> leftOpen, int attempts)
    {
        auto* timer = new QTimer(qApp);
        timer->setInterval(LookIntervalMs);
        const QPointer<QWidget> skip = QApplication::activeModalWidget();
        QObject::connect(timer, &QTimer::timeout, timer,
                         [timer, skip, act = std::move(act), leftOpen = std::move(leftOpen), attempts]() mutable {
                             QWidget* modal = QApplication::activeModalWidget();
                             if (!modal || !modal->isVisible() || modal == skip)
                             {
                                 if (attempts >= 0 && attempts-- == 0)
                                 {
                                     timer->stop();
                                     timer->deleteLater();
                                 }
                                 return;
                             }
                             timer->stop();
                             // Deleted once this call has returned to the loop that runs it.
                             timer->deleteLater();
                             const QPointer<QWidget> window = modal;
                             act(modal);
                             auto* dialog = qobject_cast<QDialog*>(window.data());
                             if (dialog && dialog->isVisible())
                             {
                                 if (leftOpen)
                                     leftOpen(dialog);
                                 dialog->reject();
                                 // A window whose Cancel does not close it still goes.
                                 if (dialog->isVisible())
                                     dialog->done(QDialog::Rejected);
                             }
                         });
        timer->start();
        return timer;
    }

    QPointer<QTimer> m_watch;
    int m_handled = 0;
    int m_leftOpen = 0;
};
