#pragma once

#include <QString>

// Turns a system error code into a message. Code 0 takes the thread's last
// error (errno; GetLastError on Windows); when that is 0 too, returns false
// and does nothing. Otherwise with show true the text is shown with the
// exclamation icon under text 4001 and the result is true; with show false a
// RuntimeError (number = code, source = text 4001, description = the text) is
// raised instead.
bool ShowSystemError(qint32 code, bool show);

// The system's own message for a code (FormatMessage on Windows, the C
// library's text elsewhere), or text 4000 & " (#" & code & ")." when the system
// has none.
QString SystemErrorText(qint32 code);

// The system's own message for a code, empty when it has none.
QString SystemMessage(qint32 code);
