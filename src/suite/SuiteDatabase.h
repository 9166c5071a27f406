#pragma once

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
// parameters. Any failure raises RuntimeError with a readable description.
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
    static inline const QString ErrorSource = QStringLiteral("Norrix QC database");

    explicit SuiteDatabase(SuiteSettings settings, OpenMode mode = OpenMode::ExistingOnly);

    const SuiteSettings& settings() const { return m_settings; }
    bool isPostgres() const { return m_settings.isPostgres(); }

    // The open connection; opens it when needed.
    QSqlDatabase connection();
    void open() { connection(); }

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

    // Closes every connection the program holds (a later use reopens).
    static void closeAllConnections();

private:
    QString connectionName() const;
    [[noreturn]] void failOpen(const QString& reason) const;
    [[noreturn]] void failQuery(QSqlQuery& query) const;
    [[noreturn]] void failQuery(const QSqlError& error) const;

    SuiteSettings m_settings;
    OpenMode m_mode;
};
