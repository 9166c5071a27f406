#pragma once

#include "platform/RuntimeError.h"
#include "suite/SuiteSettings.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

#include <functional>
#include <vector>

class QSqlError;

// The suite's database on SQLite or PostgreSQL, as the settings name it.
//
// One connection per database is opened on first use and kept for the run,
// so that the components created for a single operation do not reconnect
// each time. Every statement is prepared and takes its values as bound
// parameters. Any failure raises RuntimeError with a readable description;
// the driver's own text goes with it as the error's detail.
//
// Every wait is bounded by the settings' timeoutSeconds: on PostgreSQL the
// connection's statement_timeout and lock_timeout, its connect_timeout and
// TCP keep-alives; on SQLite the busy timeout. A wait that runs out raises
// ErrorTimedOut, which names the seconds.
//
// A server connection found lost (a restart, a terminated backend) outside a
// transaction is opened anew and the statement runs once more; a server that
// stays away raises ErrorCannotOpen. Inside a transaction the loss raises
// ErrorConnectionLost: the server has dropped the transaction, and only its
// whole can run again.
//
// A SQLite file that the program may not write (a read-only file, folder or
// mount) is opened read-only; isReadOnly() tells. Each use looks again, so a
// file that becomes writable is opened read-write for the next action.
//
// Transactions nest: an inner begin joins the transaction already open on the
// connection, and only the outermost commit writes. When an inner part rolls
// back, the whole transaction can no longer commit.
class SuiteDatabase
{
public:
    enum class OpenMode
    {
        ExistingOnly,    // the components: a missing SQLite file is an unreachable database
        CreateIfMissing, // the database tool: creates the SQLite file and its folder
    };

    static constexpr qint32 ErrorCannotOpen = 3051;
    static constexpr qint32 ErrorQueryFailed = 3146;
    // A wait for a lock or for the server's answer ran out.
    static constexpr qint32 ErrorTimedOut = 3260;
    // The server connection was lost inside a transaction.
    static constexpr qint32 ErrorConnectionLost = 3151;
    // The database cannot be written (a read-only SQLite file, a standby server).
    static constexpr qint32 ErrorReadOnly = 3027;
    // The server refused the signed-in login the statement.
    static constexpr qint32 ErrorPermissionDenied = 3033;
    // A row would break a unique key.
    static constexpr qint32 ErrorDuplicateKey = 3022;
    static inline const QString ErrorSource = QStringLiteral("Norrix QC database");

    explicit SuiteDatabase(SuiteSettings settings, OpenMode mode = OpenMode::ExistingOnly);

    const SuiteSettings& settings() const { return m_settings; }
    bool isPostgres() const { return m_settings.isPostgres(); }

    // The open connection; opens it when needed.
    QSqlDatabase connection();
    void open() { connection(); }

    // True when the database cannot be written: a SQLite file opened
    // read-only, a PostgreSQL server that takes no writes (a standby).
    bool isReadOnly();
    // The server's login of the connection (PostgreSQL's session_user); empty on SQLite.
    QString sessionUser();
    // Lets each statement of the connection run up to seconds on PostgreSQL,
    // for the administrative work of the database tool (migrations, checks,
    // statistics), whose statements read whole tables. Waits for locks stay
    // bounded by the settings' timeout. A new connection has the usual bound.
    void allowLongStatements(qint32 seconds);

    // Runs one statement with its positional ("?") parameters; the query is
    // forward-only and positioned before its first row. Every value goes in
    // as a parameter; a statement without any runs unprepared.
    QSqlQuery exec(const QString& sql, const QVariantList& params = {});
    // The same in two steps, for a statement run many times.
    QSqlQuery prepare(const QString& sql);
    void run(QSqlQuery& query, const QVariantList& params);
    // The first column of the first row (a null value when there is no row).
    QVariant scalar(const QString& sql, const QVariantList& params = {});
    // Inserts rows into table in as few statements as the drivers allow.
    void insertRows(const QString& table, const QStringList& columns, const std::vector<QVariantList>& rows);

    // Raises RuntimeError when the database cannot be read (on SQLite a
    // damaged or locked file too).
    bool tableExists(const QString& table);

    void begin();
    void commit();
    void rollback();
    bool inTransaction();
    // Runs check just before the outermost commit of the transaction open on
    // the connection (at once when none is open). When it throws, the
    // transaction is rolled back and the committer gets the error: a rule on
    // what a whole transaction leaves, such as a row deleted and saved anew.
    void checkBeforeCommit(std::function<void()> check);

    // Runs work, one whole request. When the server connection is lost in the
    // middle of it and it is not part of a transaction begun before, it runs
    // once more on a new connection: the server has dropped whatever it had
    // done, for each of the suite's writes is one transaction.
    template <typename Work> auto runWhole(Work&& work) -> decltype(work())
    {
        if (inTransaction())
            return work();
        try
        {
            return work();
        }
        catch (const RuntimeError& error)
        {
            if (error.number() != ErrorConnectionLost)
                throw;
        }
        return work();
    }

    // The error's description followed by the database's own words, when it
    // has them: for a log, the tool's standard error or a message's details.
    static QString fullText(const RuntimeError& error);

    // Closes every connection the program holds (a later use reopens).
    static void closeAllConnections();

private:
    enum class Failure
    {
        Other,
        TimedOut,
        ConnectionLost,
        ReadOnly,
        PermissionDenied,
        DuplicateKey,
    };

    QString connectionName() const;
    QSqlDatabase openConnection(const QString& name);
    void applyTimeout(QSqlDatabase& db);
    bool sqliteWritable() const;
    // True when the statement failed with error because the server
    // connection is gone and no transaction was open on it: it may run again
    // on a new one.
    bool mayRunAgain(const QSqlError& error);
    Failure classify(const QSqlError& error, bool connectionLost) const;
    [[noreturn]] void failOpen(const QString& reason, const QString& detail = QString()) const;
    // Runs request, a call that waits for the server's answer, under the
    // program's own watch (ServerAnswerWatch); brokeOff tells whether the
    // watch ended the wait.
    bool watched(const QSqlDatabase& db, bool& brokeOff, const std::function<bool()>& request);
    // The query failed; brokeOff: the watch ended its wait.
    [[noreturn]] void failQuery(QSqlQuery& query, bool brokeOff = false);
    // A request on db failed with error: raises it, closing a connection
    // that was lost or broken off.
    [[noreturn]] void failRequest(QSqlDatabase db, const QSqlError& error, bool brokeOff);
    [[noreturn]] void failQuery(const QSqlError& error, bool connectionLost = false) const;

    SuiteSettings m_settings;
    OpenMode m_mode;
};
