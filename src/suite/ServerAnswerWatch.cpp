#include "suite/ServerAnswerWatch.h"

#include <QLibrary>
#include <QSqlDriver>
#include <QVariant>

#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace
{
using Clock = std::chrono::steady_clock;

// Ends every wait on the socket: the driver's next read finds it closed.
void shutDown(int socket)
{
#ifdef Q_OS_WIN
    ::shutdown(SOCKET(socket), SD_BOTH);
#else
    ::shutdown(socket, SHUT_RDWR);
#endif
}

struct Watched
{
    int socket = -1;
    Clock::time_point deadline;
    bool brokeOff = false;
};

// The watcher's state, made on first use and kept for the rest of the run:
// the thread waits on it until the process ends.
struct Watcher
{
    std::mutex lock;
    std::condition_variable changed;
    std::map<quint64, Watched> watched;
    quint64 lastId = 0;

    Watcher()
    {
        std::thread([this] { run(); }).detach();
    }

    void run()
    {
        std::unique_lock<std::mutex> held(lock);
        for (;;)
        {
            Clock::time_point next = Clock::time_point::max();
            for (auto& [id, entry] : watched)
            {
                if (entry.brokeOff)
                    continue;
                if (entry.deadline <= Clock::now())
                {
                    // The requester still waits: its socket is still the connection's.
                    shutDown(entry.socket);
                    entry.brokeOff = true;
                    continue;
                }
                next = std::min(next, entry.deadline);
            }
            if (next == Clock::time_point::max())
                changed.wait(held);
            else
                changed.wait_until(held, next);
        }
    }
};

Watcher& watcher()
{
    static Watcher* const instance = new Watcher;
    return *instance;
}

// libpq's connection, as Qt's PostgreSQL driver hands it out.
struct pg_conn;

// PQsocket of libpq. The program does not link libpq: Qt's PostgreSQL driver
// loads it with the driver, only where a server is used, so the function is
// looked up in the library the driver has loaded (nullptr when it cannot be
// had). A program on a SQLite file never maps libpq and the libraries it
// brings (TLS, Kerberos, LDAP).
int (*libpqSocketFunction())(const pg_conn*)
{
    using SocketFunction = int (*)(const pg_conn*);
    static const SocketFunction function = [] {
#ifdef Q_OS_WIN
        QLibrary libpq(QStringLiteral("libpq"));
#else
        QLibrary libpq(QStringLiteral("pq"), 5);
#endif
        return reinterpret_cast<SocketFunction>(libpq.resolve("PQsocket"));
    }();
    return function;
}

// The socket of a PostgreSQL connection; -1 for any other.
int socketOf(const QSqlDatabase& db)
{
    if (!db.isOpen() || !db.driver())
        return -1;
    // Qt's PostgreSQL driver hands its libpq connection out under the
    // structure's name (PGconn is a name of struct pg_conn).
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() ||
        (qstrcmp(handle.typeName(), "PGconn*") != 0 && qstrcmp(handle.typeName(), "pg_conn*") != 0))
        return -1;
    const pg_conn* connection = *static_cast<pg_conn* const*>(handle.constData());
    const auto socketFunction = libpqSocketFunction();
    return connection && socketFunction ? socketFunction(connection) : -1;
}
} // namespace

ServerAnswerWatch::ServerAnswerWatch(const QSqlDatabase& db, std::chrono::milliseconds limit)
{
    const int socket = socketOf(db);
    if (socket < 0)
        return;
    Watcher& w = watcher();
    const std::lock_guard<std::mutex> held(w.lock);
    m_id = ++w.lastId;
    w.watched[m_id] = Watched{socket, Clock::now() + limit, false};
    w.changed.notify_all();
}

ServerAnswerWatch::~ServerAnswerWatch()
{
    if (m_id == 0)
        return;
    Watcher& w = watcher();
    const std::lock_guard<std::mutex> held(w.lock);
    w.watched.erase(m_id);
}

bool ServerAnswerWatch::brokeOff() const
{
    if (m_id == 0)
        return false;
    Watcher& w = watcher();
    const std::lock_guard<std::mutex> held(w.lock);
    const auto it = w.watched.find(m_id);
    return it != w.watched.end() && it->second.brokeOff;
}
