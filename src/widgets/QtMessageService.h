#pragma once

#include "platform/MessageService.h"

// Message boxes of the window toolkit: the style number chooses the icon
// (16 critical, 32 question, 48 exclamation, 64 information) and, in its low
// bits, the buttons (0 OK, 1 OK/Cancel, 2 Abort/Retry/Ignore, 3 Yes/No/Cancel,
// 4 Yes/No, 5 Retry/Cancel); the answer is the pressed button's number
// (1 OK, 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes, 7 No). An empty title
// is the application's display name. A detail is the box's detailed text,
// behind its "Show Details..." button. The box is modal over the active window.
class QtMessageService final : public MessageService
{
public:
    int show(const QString& text, int style, const QString& title, const QString& detail) override;

    // Makes these boxes the program's default ones (kept for the rest of the run).
    static void installAsDefault();
};
