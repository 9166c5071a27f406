#pragma once

#include "MainWindowFixture.h"
#include "app/ActivityFilter.h"
#include "app/frmAutoLogout.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTimer>

#include <functional>

// The main window started over an engine whose auto-logout limit the test
// chooses, with its ActivityTimer stopped so that the test drives every tick,
// and every beep recorded with the seconds the countdown showed at that moment.
struct AutoLogoutFixture
{
    explicit AutoLogoutFixture(qint32 logoutMinutes)
    {
        main.engine->logoutMinutes = logoutMinutes;
        state().beepSound = [this] {
            const frmAutoLogout* countdown = window().findChild<frmAutoLogout*>();
            beeps.append(countdown ? countdown->txtSeconds->text() : QStringLiteral("no countdown"));
        };
    }

    ~AutoLogoutFixture()
    {
        // The beeps are recorded into this fixture, which goes before the
        // window; the watching the test left installed goes with the state.
        state().beepSound = {};
    }

    // Runs the start-up; the test drives the ticks itself.
    void start()
    {
        window().Form_Load();
        window().ActivityTimer->stop();
    }

    frmMain& window() { return *main.window; }
    ProgramState& state() { return main.state; }

    // The filters watching the user's activity.
    static int installedFilters()
    {
        return int(qApp->findChildren<ActivityFilter*>(Qt::FindDirectChildrenOnly).size());
    }

    // A mouse event of the given button sent to widget, as the window system
    // delivers it (through the application, so every filter sees it).
    static void mouse(QWidget* widget, QEvent::Type type, Qt::MouseButton button = Qt::LeftButton)
    {
        const QPointF pos = QRectF(widget->rect()).center();
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button);
        QMouseEvent event(type, pos, widget->mapToGlobal(pos), button, held, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
    static void leftClick(QWidget* widget)
    {
        mouse(widget, QEvent::MouseButtonPress);
        mouse(widget, QEvent::MouseButtonRelease);
    }

    // One ActivityTimer tick. When it shows the countdown, inside runs in the
    // countdown's modal loop with the countdown, its StopTimer stopped so that
    // the test drives those ticks too; inside must close it (a countdown it
    // leaves open is closed and the test fails). True when the countdown was shown.
    bool tick(const std::function<void(frmAutoLogout&)>& inside = {})
    {
        bool shown = false;
        QTimer probe;
        probe.setSingleShot(true);
        QObject::connect(&probe, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            auto* countdown = qobject_cast<frmAutoLogout*>(modal);
            if (!countdown)
            {
                QTest::qFail("the tick opened a modal window that is no countdown", __FILE__, __LINE__);
                if (auto* dialog = qobject_cast<QDialog*>(modal))
                    dialog->done(0);
                return;
            }
            shown = true;
            countdown->StopTimer->stop();
            if (inside)
                inside(*countdown);
            if (countdown->isVisible())
            {
                QTest::qFail("the countdown was left open", __FILE__, __LINE__);
                countdown->done(0);
            }
        });
        probe.start(0);
        window().ActivityTimer_Timer();
        return shown;
    }

    // n ticks without a countdown; false when one of them showed it.
    bool quietTicks(int n)
    {
        for (int i = 0; i < n; ++i)
        {
            if (tick())
                return false;
        }
        return true;
    }

    // Runs the countdown's StopTimer n times.
    static void stopTimerTicks(frmAutoLogout& countdown, int n)
    {
        for (int i = 0; i < n; ++i)
            countdown.StopTimer_Timer();
    }

    MainWindowFixture main;
    QStringList beeps;
};
