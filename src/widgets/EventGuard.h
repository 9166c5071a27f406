#pragma once

#include "platform/MessageService.h"
#include "platform/RuntimeError.h"

#include <QString>

// Runs an event handler that has no error handling of its own. A run-time
// error it raises ends the handler and is shown with its description and the
// critical icon, so that no exception crosses the event loop.
template <class Handler> void RunGuarded(Handler&& handler, const QString& title = QString())
{
    try
    {
        handler();
    }
    catch (const RuntimeError& error)
    {
        MsgBox(error.description(), MsgStyle::Critical, title);
    }
}
