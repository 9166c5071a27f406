#pragma once

#include <QSqlDatabase>

#include <chrono>

// A bound on the wait for a database server's answer that holds even when
// the server cannot enforce its own: a backend that is stopped or stalled
// never answers, and the server's statement timeout never fires in it.
//
// While the object lives, a watcher thread of the program's keeps the
// PostgreSQL connection's socket and a deadline; when the deadline passes
// before the object goes, the watcher shuts the socket down, so that the
// driver's wait ends with a failed request. brokeOff() then tells the caller
// that the failure is the watch's. A connection of another driver is not
// watched.
//
// The watcher acts under one lock with the registration: once the object is
// gone, the socket (which the connection may close and the system give to
// another file) is never touched.
class ServerAnswerWatch
{
public:
    ServerAnswerWatch(const QSqlDatabase& db, std::chrono::milliseconds limit);
    ~ServerAnswerWatch();
    ServerAnswerWatch(const ServerAnswerWatch&) = delete;
    ServerAnswerWatch& operator=(const ServerAnswerWatch&) = delete;

    // True when the deadline passed and the connection was broken off.
    bool brokeOff() const;

private:
    quint64 m_id = 0; // 0: nothing is watched
};
