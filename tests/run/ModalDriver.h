#pragma once

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTimer>

#include <functional>

// Acts on the next modal window once it is open, from inside its own event
// loop; stops looking when the test ends first.
class ModalDriver
{
public:
    ModalDriver()
    {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || modal == m_skip)
                return;
            m_timer.stop();
            ++m_handled;
            auto action = std::move(m_action);
            QPointer<QDialog> dialog = qobject_cast<QDialog*>(modal);
            action(dialog);
            // A window the test failed to close would hold the test forever.
            if (dialog && dialog->isVisible())
            {
                qWarning("The test left %s open.", qPrintable(dialog->objectName()));
                ++m_leftOpen;
                dialog->reject();
            }
        });
    }
    ~ModalDriver() { m_timer.stop(); }
    ModalDriver(const ModalDriver&) = delete;
    ModalDriver& operator=(const ModalDriver&) = delete;

    void onNextModal(std::function<void(QDialog*)> action)
    {
        m_skip = QApplication::activeModalWidget();
        m_action = std::move(action);
        m_timer.start();
    }
    int handled() const { return m_handled; }
    // Windows the test's action left open (the driver closed them).
    int leftOpen() const { return m_leftOpen; }

private:
    QTimer m_timer;
    QPointer<QWidget> m_skip;
    std::function<void(QDialog*)> m_action;
    int m_handled = 0;
    int m_leftOpen = 0;
};
