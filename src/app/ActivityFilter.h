#pragma once

#include "components/ProgramState.h"

#include <QObject>

// Watches every event of the program, in every window and modal dialog, for
// the user's activity: a left-button press or double click, or a key going
// down or up, sets the state's intIdleSeconds to 0. Moves, the other buttons and the
// wheel are no activity. Events pass on untouched.
class ActivityFilter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ActivityFilter)

public:
    explicit ActivityFilter(ProgramState& state, QObject* parent = nullptr);

    // Whether event counts as the user's activity.
    static bool IsActivity(const QEvent& event);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ProgramState& m_state;
};
