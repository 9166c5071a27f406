#include "app/ActivityFilter.h"

#include <QEvent>
#include <QMouseEvent>

ActivityFilter::ActivityFilter(ProgramState& state, QObject* parent)
    : QObject(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("ActivityFilter"));
}

bool ActivityFilter::IsActivity(const QEvent& event)
{
    switch (event.type())
    {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        return static_cast<const QMouseEvent&>(event).button() == Qt::LeftButton;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return true;
    default:
        return false;
    }
}

bool ActivityFilter::eventFilter(QObject* watched, QEvent* event)
{
    // One click reaches the window and then each widget it propagates to; resetting
    // the count again is harmless.
    if (IsActivity(*event))
        m_state.intIdleSeconds = 0;
    return QObject::eventFilter(watched, event);
}
