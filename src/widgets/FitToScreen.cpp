#include "widgets/FitToScreen.h"

#include <QRect>
#include <QScreen>
#include <QWidget>

namespace
{
// A window manager's title bar and borders, in logical pixels.
constexpr QSize kFrameAllowance(16, 40);
} // namespace

QRect AvailableScreenArea(const QWidget& window)
{
    const QWidget* owner = window.parentWidget() ? window.parentWidget()->window() : &window;
    QScreen* screen = owner->screen();
    return screen ? screen->availableGeometry() : QRect();
}

void FitToScreen(QWidget& window, QSize wanted)
{
    const QRect available = AvailableScreenArea(window);
    if (available.isEmpty())
    {
        window.resize(wanted);
        return;
    }
    // The frame is known once the window has been shown; before, room is
    // left for a usual title bar and border.
    QSize frame = window.frameGeometry().size() - window.geometry().size();
    if (frame.isNull())
        frame = kFrameAllowance;
    window.resize(wanted.boundedTo((available.size() - frame).expandedTo(QSize(1, 1))));
}
