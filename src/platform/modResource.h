#pragma once

#include <QString>

// The text of message or caption number id from the string server. The server
// is created on first use (by one thread, when several ask at once) and kept
// for the rest of the run. An unknown number
// shows "ResourceID is not found,  " and the number, and gives "".
// A server that cannot be created raises RuntimeError into the caller.
QString GetResourceText(qint16 id);

// Forgets the string server, so that the next lookup creates it again
// (tests that register another server call this).
void ResetResourceServer();
