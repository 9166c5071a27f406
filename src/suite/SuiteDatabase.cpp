#include "suite/SuiteDatabase.h"

#include "platform/RuntimeError.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSqlError>

#include <functional>
#include <utility>

namespace
{
const QString kConnectionPrefix = QStringLiteral("norrix-suite:");

// Transaction state per connection: how many begins are open, and whether an
// inner part rolled back so that the outermost commit must not write.
struct TransactionState
{
    int depth = 0;
    bool rollbackOnly = false;
    // Statements that failed inside the transaction. PostgreSQL refuses every
    // command, even releasing a statement, until the transaction has ended,
    // so they are released after it.
    std::vector<QSqlQuery> failed;
    // Checks of what the whole transaction leaves, run before it commits.
    std::vector<std::function<void()>> beforeCommit;
};

QHash<QString, TransactionState>& transactions()
{
    static QHash<QString, TransactionState> states;
    return states;
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

QSqlDatabase SuiteDatabase::connection()
{
    const QString name = connectionName();
    if (QSqlDatabase::contains(name))
    {
        // A server connection that was lost reads as closed and is opened afresh.
        QSqlDatabase db = QSqlDatabase::database(name, false);
        if (db.isOpen())
            return db;
    }
    if (m_settings.driver != SuiteSettings::SqliteDriver && m_settings.driver != SuiteSettings::PostgresDriver)
        failOpen(QStringLiteral("the database driver \"%1\" is not supported").arg(m_settings.driver));
    if (!QSqlDatabase::isDriverAvailable(m_settings.driver))
        failOpen(QStringLiteral("the database driver \"%1\" is not installed").arg(m_settings.driver));
    if (m_settings.databaseName.isEmpty())
        failOpen(QStringLiteral("no database name is configured"));

    QSqlDatabase db = QSqlDatabase::contains(name) ? QSqlDatabase::database(name, false)
                                                   : QSqlDatabase::addDatabase(m_settings.driver, name);
    if (isPostgres())
    {
        db.setHostName(m_settings.host);
        if (m_settings.port > 0)
            db.setPort(m_settings.port);
        db.setUserName(m_settings.user);
        db.setPassword(m_settings.password);
        db.setDatabaseName(m_settings.databaseName);
        db.setConnectOptions(QStringLiteral("connect_timeout=5"));
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
        db.setDatabaseName(file.absoluteFilePath());
        // Another workstation's or program's lock is waited for as long as
        // the site's timeout allows, then the statement fails ("database is locked").
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(m_settings.databaseTimeoutSeconds * 1000));
    }
    if (!db.open())
        failOpen(errorText(db.lastError()));
    transactions().remove(name);
    if (!isPostgres())
    {
        // References are checked on SQLite only when asked for, per connection.
        // The page cache stays at SQLite's usual 2 MB: the system's file cache
        // keeps a report's pages between its calls just as well, while a
        // larger cache holds every page a report touched for the rest of the
        // run (on a laboratory's database a subject's readings lie on
        // hundreds of pages among everyone else's).
        QSqlQuery pragma(db);
        for (const QString& setting :
             {QStringLiteral("PRAGMA foreign_keys = ON"), QStringLiteral("PRAGMA cache_size = -2000")})
        {
            if (!pragma.exec(setting))
                failOpen(errorText(pragma.lastError()));
        }
    }
    return db;
}

QSqlQuery SuiteDatabase::exec(const QString& sql, const QVariantList& params)
{
    if (params.isEmpty())
    {
        // A statement without values runs as it is: PostgreSQL prepares only
        // queries and data changes, not the schema's statements.
        QSqlQuery query(connection());
        query.setForwardOnly(true);
        if (!query.exec(sql))
            failQuery(query);
        return query;
    }
    QSqlQuery query = prepare(sql);
    run(query, params);
    return query;
}

QSqlQuery SuiteDatabase::prepare(const QString& sql)
{
    QSqlQuery query(connection());
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        failQuery(query);
    return query;
}

void SuiteDatabase::run(QSqlQuery& query, const QVariantList& params)
{
    for (qsizetype i = 0; i < params.size(); ++i)
        query.bindValue(int(i), params.at(i));
    if (!query.exec())
        failQuery(query);
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
    QSqlQuery query(connection());
    int prepared = 0;
    for (size_t first = 0; first < rows.size(); first += size_t(batch))
    {
        const int count = int(qMin(size_t(batch), rows.size() - first));
        if (count != prepared)
        {
            const QString sql = insertStatement(table, columns, count);
            if (!query.prepare(sql))
                failQuery(query);
            prepared = count;
        }
        int position = 0;
        for (int r = 0; r < count; ++r)
        {
            for (const QVariant& value : rows[first + size_t(r)])
                query.bindValue(position++, value);
        }
        if (!query.exec())
            failQuery(query);
    }
}

bool SuiteDatabase::tableExists(const QString& table)
{
    // SQLite is asked with a statement of its own: the driver's list of tables
    // is empty, not an error, for a file that is no database or that another
    // program holds locked, and the file would pass for an empty database.
    if (!isPostgres())
        return scalar(
                   QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND lower(name) = lower(?)"),
                   {table})
                   .toInt() > 0;
    return connection().tables(QSql::Tables).contains(table, Qt::CaseInsensitive);
}

void SuiteDatabase::begin()
{
    QSqlDatabase db = connection();
    TransactionState& state = transactions()[connectionName()];
    if (state.depth == 0)
    {
        state.rollbackOnly = false;
        if (isPostgres())
        {
            if (!db.transaction())
                failQuery(db.lastError());
        }
        else
        {
            // Take the write lock at once: every transaction of the suite
            // writes, and a reader upgrading later could deadlock with
            // another workstation's writer.
            exec(QStringLiteral("BEGIN IMMEDIATE"));
        }
    }
    ++state.depth;
}

void SuiteDatabase::commit()
{
    TransactionState& state = transactions()[connectionName()];
    if (state.depth == 0)
        throw RuntimeError(ErrorQueryFailed, ErrorSource, QStringLiteral("There is no open transaction to commit."));
    if (--state.depth > 0)
        return;
    QSqlDatabase db = connection();
    if (state.rollbackOnly)
    {
        state.rollbackOnly = false;
        state.beforeCommit.clear();
        db.rollback();
        state.failed.clear();
        throw RuntimeError(ErrorQueryFailed, ErrorSource,
                           QStringLiteral("The changes were not saved because part of them failed."));
    }
    const std::vector<std::function<void()>> checks = std::exchange(state.beforeCommit, {});
    try
    {
        for (const std::function<void()>& check : checks)
            check();
    }
    catch (...)
    {
        db.rollback();
        transactions()[connectionName()].failed.clear();
        throw;
    }
    if (!db.commit())
    {
        const QSqlError error = db.lastError();
        db.rollback();
        failQuery(error);
    }
}

void SuiteDatabase::rollback()
{
    TransactionState& state = transactions()[connectionName()];
    if (state.depth == 0)
        return;
    if (--state.depth > 0)
    {
        state.rollbackOnly = true;
        return;
    }
    state.rollbackOnly = false;
    state.beforeCommit.clear();
    connection().rollback();
    state.failed.clear();
}

void SuiteDatabase::checkBeforeCommit(std::function<void()> check)
{
    TransactionState& state = transactions()[connectionName()];
    if (state.depth == 0)
        check();
    else
        state.beforeCommit.push_back(std::move(check));
}

bool SuiteDatabase::inTransaction()
{
    return transactions().value(connectionName()).depth > 0;
}

void SuiteDatabase::closeAllConnections()
{
    const QStringList names = QSqlDatabase::connectionNames();
    for (const QString& name : names)
    {
        if (!name.startsWith(kConnectionPrefix))
            continue;
        transactions().remove(name);
        QSqlDatabase::database(name, false).close();
        QSqlDatabase::removeDatabase(name);
    }
}

void SuiteDatabase::failOpen(const QString& reason) const
{
    throw RuntimeError(ErrorCannotOpen, ErrorSource,
                       QStringLiteral("The QC database cannot be opened: %1 (%2).").arg(reason, m_settings.describe()));
}

void SuiteDatabase::failQuery(QSqlQuery& query) const
{
    const QSqlError error = query.lastError();
    TransactionState& state = transactions()[connectionName()];
    if (state.depth > 0)
        state.failed.push_back(std::move(query));
    failQuery(error);
}

void SuiteDatabase::failQuery(const QSqlError& error) const
{
    throw RuntimeError(ErrorQueryFailed, ErrorSource,
                       QStringLiteral("The QC database could not carry out a request: %1").arg(errorText(error)));
}
