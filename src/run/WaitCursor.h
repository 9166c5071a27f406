#pragma once

#include <QApplication>
#include <QCursor>

// The hourglass pointer over a long step: shown when the guard is made, the
// default pointer back when restore() is called or, at the latest, when the
// guard goes, so that an error which ends the step never leaves the
// hourglass up.
class WaitCursor final
{
public:
    WaitCursor() { QApplication::setOverrideCursor(QCursor(Qt::WaitCursor)); }
    ~WaitCursor() { restore(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

    void restore()
    {
        if (!m_shown)
            return;
        m_shown = false;
        QApplication::restoreOverrideCursor();
    }

private:
    bool m_shown = true;
};
