#include "suite/SuiteDatabase.h"

#include "platform/RuntimeError.h"
#include "suite/ServerAnswerWatch.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSqlError>

#include <functional>
#include <utility>

namespace
{
const QString kConnectionPrefix = QStringLiteral("norrix-suite:");

// What the program keeps per connection: how many transaction begins are
// open, whether an inner part rolled back so that the outermost commit must
// not write, and what was set up when it was opened.
struct ConnectionState
{
    int depth = 0;
    bool rollbackOnly = false;
    // Statements that failed inside the transaction. PostgreSQL refuses every
    // command, even releasing a statement, until the transaction has ended,
    // so they are released after it.
    std::vector<QSqlQuery> failed;
    // Checks of what the whole transaction leaves, run before it commits.
    std::vector<std::function<void()>> beforeCommit;
    // Opened read-only (SQLite), or a server that takes no writes.
    bool readOnly = false;
    // The server's login of the connection.
    QString sessionUser;
    // The bound applied to the connection's waits.
    qint32 timeoutSeconds = 0;
    // How long a statement may run on the server (its statement_timeout).
    qint64 statementMilliseconds = 0;
};

QHash<QString, ConnectionState>& states()
{
    static QHash<QString, ConnectionState> all;
    return all;
}

// The state of a connection, read in place (it holds the failed queries and
// the checks before commit, which a copy would copy at every statement); a
// connection not opened yet has the state of a new one.
const ConnectionState& stateOf(const QString& name)
{
    static const ConnectionState none;
    const auto found = states().constFind(name);
    return found == states().cend() ? none : *found;
}

// Rows per statement: SQLite of older builds takes at most 999 parameters.
int rowsPerStatement(qsizetype columns)
{
    return int(qMax<qsizetype>(1, 900 / qMax<qsizetype>(1, columns)));
}

QString insertStatement(const QString& table, const QStringList& columns, int rows)
{
    QString row = QStringLiteral("(");
    for (qsizetype c = 0; c < columns.size(); ++c)
        row += (c == 0 ? QStringLiteral("?") : QStringLiteral(",?"));
    row += u')';
    QString sql = QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + columns.join(u',') +
                  QStringLiteral(") VALUES ");
    for (int r = 0; r < rows; ++r)
        sql += (r == 0 ? row : u',' + row);
    return sql;
}

QString errorText(const QSqlError& error)
{
    QString text = error.databaseText().trimmed();
    if (text.isEmpty())
        text = error.driverText().trimmed();
    if (text.isEmpty())
        text = QStringLiteral("unknown error");
    return text;
}

bool bindAndRun(QSqlQuery& query, const QVariantList& params)
{
    for (qsizetype i = 0; i < params.size(); ++i)
        query.bindValue(int(i), params.at(i));
    return query.exec();
}

// A server that cannot enforce its statement timeout (a backend that is
// stopped or stalled) is given this long beyond it before the program's own
// watch breaks the connection off.
constexpr qint64 kAnswerGraceMilliseconds = 2000;

// SQLite's result codes (the low byte of an extended code).
constexpr int kSqliteBusy = 5;
constexpr int kSqliteLocked = 6;
constexpr int kSqliteReadOnly = 8;
constexpr int kSqliteConstraint = 19;
constexpr int kSqliteAuth = 23;
constexpr int kSqliteConstraintPrimaryKey = 1555;
constexpr int kSqliteConstraintUnique = 2067;
} // namespace

SuiteDatabase::SuiteDatabase(SuiteSettings settings, OpenMode mode)
    : m_settings(std::move(settings))
    , m_mode(mode)
{}

QString SuiteDatabase::connectionName() const
{
    if (isPostgres())
        return kConnectionPrefix + m_settings.describe();
    return kConnectionPrefix + m_settings.driver + u':' + QFileInfo(m_settings.databaseName).absoluteFilePath();
}

bool SuiteDatabase::sqliteWritable() const
{
    // Asked of the system each time (access(2) on Unix): a read-only file,
    // folder (the journal is written beside the file) or mount says no, for
    // root as well, who may write any file of a writable mount.
    const QFileInfo file(m_settings.databaseName);
    if (!QFileInfo(file.absolutePath()).isWritable())
        return false;
    return !file.exists() || file.isWritable();
}

QSqlDatabase SuiteDatabase::connection()
{
    const QString name = connectionName();
    if (QSqlDatabase::contains(name))
    {
        // A server connection that was lost reads as closed and is opened afresh.
        QSqlDatabase db = QSqlDatabase::database(name, false);
        ConnectionState& state = states()[name];
        if (db.isOpen())
        {
            // A SQLite file that became writable, or stopped being so, is
            // opened again in its new mode, between transactions only.
            const bool modeChanged = !isPostgres() && state.depth == 0 && state.readOnly == sqliteWritable();
            if (!modeChanged)
            {
                if (state.timeoutSeconds != m_settings.timeoutSeconds)
                    applyTimeout(db);
                return db;
            }
        }
        else if (state.depth > 0)
        {
            // The server dropped the open transaction with the connection; what
            // follows must not run outside it on a new one.
            throw RuntimeError(ErrorConnectionLost, ErrorSource,
                               QStringLiteral("The connection to the QC database was lost before the request was "
                                              "done. Try again: the program connects anew."));
        }
        db.close();
    }
    return openConnection(name);
}

QSqlDatabase SuiteDatabase::openConnection(const QString& name)
{
    if (m_settings.driver != SuiteSettings::SqliteDriver && m_settings.driver != SuiteSettings::PostgresDriver)
        failOpen(QStringLiteral("the database driver \"%1\" is not supported").arg(m_settings.driver));
    if (!QSqlDatabase::isDriverAvailable(m_settings.driver))
        failOpen(QStringLiteral("the database driver \"%1\" is not installed").arg(m_settings.driver));
    if (m_settings.databaseName.isEmpty())
        failOpen(QStringLiteral("no database name is configured"));

    QSqlDatabase db = QSqlDatabase::contains(name) ? QSqlDatabase::database(name, false)
                                                   : QSqlDatabase::addDatabase(m_settings.driver, name);
    const qint32 seconds = m_settings.timeoutSeconds;
    ConnectionState opened;
    opened.timeoutSeconds = seconds;
    opened.statementMilliseconds = qint64(seconds) * 1000;
    if (isPostgres())
    {
        db.setHostName(m_settings.host);
        if (m_settings.port > 0)
            db.setPort(m_settings.port);
        db.setUserName(m_settings.user);
        db.setPassword(m_settings.password);
        db.setDatabaseName(m_settings.databaseName);
        // The connection attempt gives up after the timeout (libpq takes at
        // least 2 s); keep-alives find a connection whose server or network
        // went away between actions, and unacknowledged data ends one within
        // the timeout, so that the next action connects anew.
        db.setConnectOptions(QStringLiteral("connect_timeout=%1;keepalives=1;keepalives_idle=%2;"
                                            "keepalives_interval=%3;keepalives_count=3;tcp_user_timeout=%4")
                                 .arg(qMax(2, seconds))
                                 .arg(seconds)
                                 .arg(qMax(1, seconds / 3))
                                 .arg(qint64(seconds) * 1000));
    }
    else
    {
        const QFileInfo file(m_settings.databaseName);
        if (m_mode == OpenMode::CreateIfMissing)
        {
            if (!QDir().mkpath(file.absolutePath()))
                failOpen(QStringLiteral("the folder \"%1\" cannot be created").arg(file.absolutePath()));
        }
        else if (!file.exists())
        {
            failOpen(QStringLiteral("the file \"%1\" does not exist").arg(file.absoluteFilePath()));
        }
        opened.readOnly = !sqliteWritable();
        db.setDatabaseName(file.absoluteFilePath());
        QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(qint64(seconds) * 1000);
        if (opened.readOnly)
            options += QStringLiteral(";QSQLITE_OPEN_READONLY");
        db.setConnectOptions(options);
    }
    if (!db.open())
    {
        const QString detail = errorText(db.lastError());
        failOpen(isPostgres() ? QStringLiteral("the database server cannot be reached, or it did not accept the "
                                               "sign-in")
                              : QStringLiteral("the file cannot be opened"),
                 detail);
    }
    states()[name] = std::move(opened);
    if (isPostgres())
    {
        // The waits of every statement are bounded on the server: a statement
        // that runs or waits for a lock longer is cancelled. The login and
        // whether the server takes writes (a standby does not) are read once.
        const QString milliseconds = QString::number(qint64(seconds) * 1000);
        QSqlQuery setup(db);
        setup.setForwardOnly(true);
        bool brokeOff = false;
        const bool answered = watched(db, brokeOff, [&] {
            return setup.exec(QStringLiteral("SELECT set_config('statement_timeout', '%1', false), "
                                             "set_config('lock_timeout', '%1', false), session_user, "
                                             "current_setting('transaction_read_only'), current_schema()")
                                  .arg(milliseconds)) &&
                   setup.next();
        });
        if (!answered)
        {
            const QString detail = brokeOff ? QStringLiteral("no answer") : errorText(setup.lastError());
            setup.finish();
            db.close();
            failOpen(QStringLiteral("the database server did not answer"), detail);
        }
        // Without the right to use the schema the tables would read as missing.
        if (setup.value(4).isNull())
        {
            const QString login = setup.value(2).toString();
            db.close();
            failOpen(QStringLiteral("the login \"%1\" may not use the database's schema").arg(login),
                     QStringLiteral("current_schema() is null: no schema of the search path may be used"));
        }
        ConnectionState& state = states()[name];
        state.sessionUser = setup.value(2).toString();
        state.readOnly = setup.value(3).toString() == QLatin1String("on");
    }
    else
    {
        // References are checked on SQLite only when asked for, per connection.
        // The page cache is kept to 500 KiB, a quarter of SQLite's usual
        // 2 MB: the system's file cache keeps a report's pages between its
        // calls just as well (a render takes as long either way), while a
        // larger cache holds every page a report touched for the rest of the
        // run (on a laboratory's database a subject's readings lie on
        // hundreds of pages among everyone else's).
        QSqlQuery pragma(db);
        for (const QString& setting :
             {QStringLiteral("PRAGMA foreign_keys = ON"), QStringLiteral("PRAGMA cache_size = -500")})
        {
            if (!pragma.exec(setting))
            {
                const QSqlError error = pragma.lastError();
                pragma.finish();
                db.close();
                // Another program holding the file is a wait that ran out.
                if (classify(error, false) == Failure::TimedOut)
                    failQuery(error);
                failOpen(QStringLiteral("the file cannot be read"), errorText(error));
            }
        }
    }
    return db;
}

void SuiteDatabase::applyTimeout(QSqlDatabase& db)
{
    const qint64 milliseconds = qint64(m_settings.timeoutSeconds) * 1000;
    QSqlQuery query(db);
    const QString sql = isPostgres() ? QStringLiteral("SELECT set_config('statement_timeout', '%1', false), "
                                                      "set_config('lock_timeout', '%1', false)")
                                           .arg(milliseconds)
                                     : QStringLiteral("PRAGMA busy_timeout = %1").arg(milliseconds);
    bool brokeOff = false;
    if (!watched(db, brokeOff, [&] { return query.exec(sql); }))
        failQuery(query, brokeOff);
    ConnectionState& state = states()[connectionName()];
    state.timeoutSeconds = m_settings.timeoutSeconds;
    state.statementMilliseconds = milliseconds;
}

bool SuiteDatabase::watched(const QSqlDatabase& db, bool& brokeOff, const std::function<bool()>& request)
{
    const ServerAnswerWatch watch(
        db, std::chrono::milliseconds(stateOf(connectionName()).statementMilliseconds + kAnswerGraceMilliseconds));
    const bool done = request();
    brokeOff = !done && watch.brokeOff();
    return done;
}

void SuiteDatabase::allowLongStatements(qint32 seconds)
{
    if (!isPostgres())
        return;
    const qint64 milliseconds = qint64(seconds) * 1000;
    exec(QStringLiteral("SELECT set_config('statement_timeout', '%1', false)").arg(milliseconds));
    states()[connectionName()].statementMilliseconds = milliseconds;
}

bool SuiteDatabase::isReadOnly()
{
    connection();
    return stateOf(connectionName()).readOnly;
}

QString SuiteDatabase::sessionUser()
{
    connection();
    return stateOf(connectionName()).sessionUser;
}

bool SuiteDatabase::mayRunAgain(const QSqlError& error)
{
    if (!isPostgres())
        return false;
    const QString name = connectionName();
    if (stateOf(name).depth > 0)
        return false;
    QSqlDatabase db = QSqlDatabase::database(name, false);
    if (!db.isOpen())
        return true;
    // The server said it ended the connection (a shutdown, a terminated
    // backend) before the driver noticed: it is closed here too.
    if (classify(error, false) != Failure::ConnectionLost)
        return false;
    db.close();
    return true;
}

QSqlQuery SuiteDatabase::exec(const QString& sql, const QVariantList& params)
{
    for (bool firstRun = true;; firstRun = false)
    {
        QSqlDatabase db = connection();
        QSqlQuery query(db);
        query.setForwardOnly(true);
        // A statement without values runs as it is: PostgreSQL prepares only
        // queries and data changes, not the schema's statements.
        bool brokeOff = false;
        const bool done = watched(db, brokeOff, [&] {
            return params.isEmpty() ? query.exec(sql) : query.prepare(sql) && bindAndRun(query, params);
        });
        if (done)
            return query;
        if (firstRun && !brokeOff && mayRunAgain(query.lastError()))
            continue;
        failQuery(query, brokeOff);
    }
}

QSqlQuery SuiteDatabase::prepare(const QString& sql)
{
    for (bool firstRun = true;; firstRun = false)
    {
        QSqlDatabase db = connection();
        QSqlQuery query(db);
        query.setForwardOnly(true);
        bool brokeOff = false;
        if (watched(db, brokeOff, [&] { return query.prepare(sql); }))
            return query;
        if (firstRun && !brokeOff && mayRunAgain(query.lastError()))
            continue;
        failQuery(query, brokeOff);
    }
}

void SuiteDatabase::run(QSqlQuery& query, const QVariantList& params)
{
    bool brokeOff = false;
    if (watched(connection(), brokeOff, [&] { return bindAndRun(query, params); }))
        return;
    if (!brokeOff && mayRunAgain(query.lastError()))
    {
        // Prepared on the connection that was lost: prepared anew on the new one.
        query = prepare(query.lastQuery());
        if (watched(connection(), brokeOff, [&] { return bindAndRun(query, params); }))
            return;
    }
    failQuery(query, brokeOff);
}

QVariant SuiteDatabase::scalar(const QString& sql, const QVariantList& params)
{
    QSqlQuery query = exec(sql, params);
    if (!query.next())
        return QVariant();
    return query.value(0);
}

void SuiteDatabase::insertRows(const QString& table, const QStringList& columns, const std::vector<QVariantList>& rows)
{
    if (rows.empty())
        return;
    const int batch = rowsPerStatement(columns.size());
    QSqlDatabase db = connection();
    QSqlQuery query(db);
    int prepared = 0;
    bool brokeOff = false;
    for (size_t first = 0; first < rows.size(); first += size_t(batch))
    {
        const int count = int(qMin(size_t(batch), rows.size() - first));
        if (count != prepared)
        {
            const QString sql = insertStatement(table, columns, count);
            if (!watched(db, brokeOff, [&] { return query.prepare(sql); }))
                failQuery(query, brokeOff);
            prepared = count;
        }
        int position = 0;
        for (int r = 0; r < count; ++r)
        {
            for (const QVariant& value : rows[first + size_t(r)])
                query.bindValue(position++, value);
        }
        if (!watched(db, brokeOff, [&] { return query.exec(); }))
            failQuery(query, brokeOff);
    }
}

bool SuiteDatabase::tableExists(const QString& table)
{
    // Asked with a statement, not the driver's table list: a list that could
    // not be read would be an empty one.
    const QString sql = isPostgres() ? QStringLiteral("SELECT 1 FROM pg_catalog.pg_tables "
                                                      "WHERE schemaname = current_schema() AND lower(tablename) = ?")
                                     : QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'table' "
                                                      "AND lower(name) = ?");
    return !scalar(sql, {table.toLower()}).isNull();
}

void SuiteDatabase::begin()
{
    const QString name = connectionName();
    if (states()[name].depth == 0)
    {
        if (isPostgres())
        {
            QSqlDatabase db = connection();
            bool brokeOff = false;
            if (!watched(db, brokeOff, [&] { return db.transaction(); }))
            {
                // A connection found lost at the start of a transaction is
                // opened anew: nothing of it has run yet.
                const QSqlError error = db.lastError();
                if (brokeOff || !mayRunAgain(error))
                    failRequest(db, error, brokeOff);
                db = connection();
                if (!watched(db, brokeOff, [&] { return db.transaction(); }))
                    failRequest(db, db.lastError(), brokeOff);
            }
        }
        else
        {
            // Take the write lock at once: every transaction of the suite
            // writes, and a reader upgrading later could deadlock with
            // another workstation's writer.
            exec(QStringLiteral("BEGIN IMMEDIATE"));
        }
        states()[name].rollbackOnly = false;
    }
    ++states()[name].depth;
}

void SuiteDatabase::commit()
{
    const QString name = connectionName();
    if (states()[name].depth == 0)
        throw RuntimeError(ErrorQueryFailed, ErrorSource, QStringLiteral("There is no open transaction to commit."));
    if (states()[name].depth > 1)
    {
        --states()[name].depth;
        return;
    }
    // The outermost commit. The checks run while the transaction is still
    // counted as open, so their statements run inside it.
    QSqlDatabase db = QSqlDatabase::database(name, false);
    const auto end = [name] {
        ConnectionState& state = states()[name];
        state.depth = 0;
        state.rollbackOnly = false;
        state.beforeCommit.clear();
    };
    const auto release = [name] { states()[name].failed.clear(); };
    if (states()[name].rollbackOnly)
    {
        end();
        if (db.isOpen())
            db.rollback();
        release();
        throw RuntimeError(ErrorQueryFailed, ErrorSource,
                           QStringLiteral("The changes were not saved because part of them failed."));
    }
    const std::vector<std::function<void()>> checks = std::exchange(states()[name].beforeCommit, {});
    try
    {
        for (const std::function<void()>& check : checks)
            check();
    }
    catch (...)
    {
        end();
        if (db.isOpen())
            db.rollback();
        release();
        throw;
    }
    end();
    if (!db.isOpen())
    {
        release();
        failQuery(QSqlError(), true);
    }
    bool brokeOff = false;
    if (!watched(db, brokeOff, [&] { return db.commit(); }))
    {
        const QSqlError error = db.lastError();
        if (db.isOpen() && !brokeOff)
            watched(db, brokeOff, [&] { return db.rollback(); });
        release();
        failRequest(db, error, brokeOff);
    }
    release();
}

void SuiteDatabase::rollback()
{
    const QString name = connectionName();
    ConnectionState& state = states()[name];
    if (state.depth == 0)
        return;
    if (--state.depth > 0)
    {
        state.rollbackOnly = true;
        return;
    }
    state.rollbackOnly = false;
    state.beforeCommit.clear();
    // A lost connection took its transaction with it; nothing is left to undo.
    QSqlDatabase db = QSqlDatabase::database(name, false);
    bool brokeOff = false;
    if (db.isOpen() && !watched(db, brokeOff, [&] { return db.rollback(); }) && brokeOff)
        db.close();
    states()[name].failed.clear();
}

void SuiteDatabase::checkBeforeCommit(std::function<void()> check)
{
    ConnectionState& state = states()[connectionName()];
    if (state.depth == 0)
        check();
    else
        state.beforeCommit.push_back(std::move(check));
}

bool SuiteDatabase::inTransaction()
{
    return stateOf(connectionName()).depth > 0;
}

void SuiteDatabase::closeAllConnections()
{
    const QStringList names = QSqlDatabase::connectionNames();
    for (const QString& name : names)
    {
        if (!name.startsWith(kConnectionPrefix))
            continue;
        states().remove(name);
        QSqlDatabase::database(name, false).close();
        QSqlDatabase::removeDatabase(name);
    }
}

QString SuiteDatabase::fullText(const RuntimeError& error)
{
    if (error.detail().isEmpty() || error.description().contains(error.detail()))
        return error.description();
    return QStringLiteral("%1 The database said: %2").arg(error.description(), error.detail().trimmed());
}

SuiteDatabase::Failure SuiteDatabase::classify(const QSqlError& error, bool connectionLost) const
{
    if (connectionLost)
        return Failure::ConnectionLost;
    const QString code = error.nativeErrorCode();
    if (isPostgres())
    {
        // SQLSTATE: 57014 a statement cancelled (statement_timeout), 55P03 a
        // lock not had in time (lock_timeout), 25006 a server that takes no
        // writes, 42501 no privilege, 23505 a unique key, 08... and 57P01-03
        // the connection ended by the server.
        if (code == QLatin1String("57014") || code == QLatin1String("55P03"))
            return Failure::TimedOut;
        if (code == QLatin1String("25006"))
            return Failure::ReadOnly;
        if (code == QLatin1String("42501"))
            return Failure::PermissionDenied;
        if (code == QLatin1String("23505"))
            return Failure::DuplicateKey;
        if (code.startsWith(QLatin1String("08")) || code == QLatin1String("57P01") || code == QLatin1String("57P02") ||
            code == QLatin1String("57P03"))
            return Failure::ConnectionLost;
        return Failure::Other;
    }
    bool isNumber = false;
    const int result = code.toInt(&isNumber);
    if (!isNumber)
        return Failure::Other;
    switch (result & 0xff)
    {
    case kSqliteBusy:
    case kSqliteLocked:
        return Failure::TimedOut;
    case kSqliteReadOnly:
        return Failure::ReadOnly;
    case kSqliteAuth:
        return Failure::PermissionDenied;
    case kSqliteConstraint:
        if (result == kSqliteConstraintUnique || result == kSqliteConstraintPrimaryKey ||
            error.databaseText().contains(QLatin1String("UNIQUE constraint failed")))
            return Failure::DuplicateKey;
        return Failure::Other;
    default:
        return Failure::Other;
    }
}

void SuiteDatabase::failOpen(const QString& reason, const QString& detail) const
{
    throw RuntimeError(ErrorCannotOpen, ErrorSource,
                       QStringLiteral("The QC database cannot be opened: %1 (%2).").arg(reason, m_settings.describe()),
                       detail);
}

void SuiteDatabase::failQuery(QSqlQuery& query, bool brokeOff)
{
    const QSqlError error = query.lastError();
    const QString name = connectionName();
    ConnectionState& state = states()[name];
    if (state.depth > 0)
        state.failed.push_back(std::move(query));
    else
        query.finish();
    failRequest(QSqlDatabase::database(name, false), error, brokeOff);
}

void SuiteDatabase::failRequest(QSqlDatabase db, const QSqlError& error, bool brokeOff)
{
    const bool lost = isPostgres() && !brokeOff && (!db.isOpen() || classify(error, false) == Failure::ConnectionLost);
    // A connection the server ended, or the watch broke off, is closed here
    // too, so that nothing more of its transaction runs and the next action
    // opens a new one.
    if ((lost || brokeOff) && db.isOpen())
        db.close();
    if (brokeOff)
        failQuery(QSqlError(QString(), QStringLiteral("no answer from the server; the connection was broken off"),
                            QSqlError::StatementError, QStringLiteral("57014")));
    failQuery(error, lost);
}

void SuiteDatabase::failQuery(const QSqlError& error, bool connectionLost) const
{
    const QString detail = error.isValid() ? errorText(error) : QString();
    switch (classify(error, connectionLost))
    {
    case Failure::TimedOut: {
        const qint32 seconds = m_settings.timeoutSeconds;
        throw RuntimeError(ErrorTimedOut, ErrorSource,
                           QStringLiteral("The QC database did not answer within %1 %2. Another workstation may be "
                                          "changing the same data, or the server is busy; try again in a moment.")
                               .arg(seconds)
                               .arg(seconds == 1 ? QStringLiteral("second") : QStringLiteral("seconds")),
                           detail);
    }
    case Failure::ConnectionLost:
        throw RuntimeError(ErrorConnectionLost, ErrorSource,
                           QStringLiteral("The connection to the QC database was lost before the request was done. "
                                          "Try again: the program connects anew."),
                           detail);
    case Failure::ReadOnly:
        throw RuntimeError(ErrorReadOnly, ErrorSource,
                           QStringLiteral("The QC database is read-only, so nothing can be changed in it (%1).")
                               .arg(m_settings.describe()),
                           detail);
    case Failure::PermissionDenied:
        throw RuntimeError(ErrorPermissionDenied, ErrorSource,
                           QStringLiteral("The QC database server does not give this login the permission for "
                                          "the request (%1).")
                               .arg(m_settings.describe()),
                           detail);
    case Failure::DuplicateKey:
        throw RuntimeError(ErrorDuplicateKey, ErrorSource,
                           QStringLiteral("The QC database holds such an entry already; nothing was changed."), detail);
    case Failure::Other:
        break;
    }
    throw RuntimeError(ErrorQueryFailed, ErrorSource,
                       QStringLiteral("The QC database could not carry out a request: %1").arg(detail), detail);
}
