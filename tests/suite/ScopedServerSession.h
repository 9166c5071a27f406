#pragma once

#include "suite/SuiteSettings.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

// A session of the test's own on the database, beside the program's
// connections and outside the suite's code, as psql or another program holds
// one: to lock tables, end the program's server connection, or try a
// statement as another login. Closed when the object goes.
class ScopedServerSession
{
public:
    ScopedServerSession(const SuiteSettings& settings, const QString& name)
        : m_name(QStringLiteral("test-session:") + name)
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(settings.driver, m_name);
        if (settings.isPostgres())
        {
            db.setHostName(settings.host);
            db.setPort(settings.port);
            db.setUserName(settings.user);
            db.setPassword(settings.password);
        }
        db.setDatabaseName(settings.databaseName);
        m_open = db.open();
        if (!m_open)
            m_error = db.lastError().text();
    }
    ~ScopedServerSession()
    {
        QSqlDatabase::database(m_name, false).close();
        QSqlDatabase::removeDatabase(m_name);
    }
    ScopedServerSession(const ScopedServerSession&) = delete;
    ScopedServerSession& operator=(const ScopedServerSession&) = delete;

    bool isOpen() const { return m_open; }
    // Runs sql; true when it succeeded, else error() says why.
    bool exec(const QString& sql)
    {
        QSqlQuery query(QSqlDatabase::database(m_name, false));
        if (query.exec(sql))
            return true;
        m_error = query.lastError().databaseText();
        return false;
    }
    // The first column of the first row of sql; invalid when it failed.
    QVariant scalar(const QString& sql)
    {
        QSqlQuery query(QSqlDatabase::database(m_name, false));
        if (query.exec(sql) && query.next())
            return query.value(0);
        m_error = query.lastError().databaseText();
        return QVariant();
    }
    QString error() const { return m_error; }

private:
    QString m_name;
    bool m_open = false;
    QString m_error;
};
