#pragma once

#include <QRect>
#include <QSize>

class QWidget;

// Sizes a top-level window at wanted (logical pixels), made smaller where the
// available area of the screen it opens on (the task bars and docks left
// out) is smaller. The window's minimum size still applies, so a window whose
// content needs more than the screen has must let that content scroll.
// Nothing is remembered: every window starts from wanted again.
void FitToScreen(QWidget& window, QSize wanted);

// The available area of the screen window opens on: a dialog opens over its
// owner, so on the owner's screen.
QRect AvailableScreenArea(const QWidget& window);
