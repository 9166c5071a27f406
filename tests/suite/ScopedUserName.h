#pragma once

#include "SuiteTestDatabase.h"

#include <QByteArray>
#include <QList>
#include <QtGlobal>

// Signs a test in as another user, and back afterwards. On SQLite that is the
// operating-system user (USER, and USERNAME cleared). On the test server it is
// a login of that name, which the suite's key names as its "Database User",
// with the server privileges of serverRights (SuiteTestDatabase::
// grantServerRights); USER is set too, and counts for nothing there.
class ScopedUserName
{
public:
    explicit ScopedUserName(SuiteTestDatabase& test, const QByteArray& name,
                            const QList<qint32>& serverRights = {500, 501})
        : m_test(test)
        , m_user(qgetenv("USER"))
        , m_userName(qgetenv("USERNAME"))
        , m_hadUser(qEnvironmentVariableIsSet("USER"))
        , m_hadUserName(qEnvironmentVariableIsSet("USERNAME"))
    {
        qputenv("USER", name);
        qunsetenv("USERNAME");
        if (SuiteTestDatabase::onPostgres())
        {
            m_login = test.settings().user;
            test.grantServerRights(QString::fromUtf8(name), serverRights);
            test.setValue(QStringLiteral("Database User"), QString::fromUtf8(name));
        }
    }
    ~ScopedUserName()
    {
        restore("USER", m_hadUser, m_user);
        restore("USERNAME", m_hadUserName, m_userName);
        if (SuiteTestDatabase::onPostgres())
            m_test.setValue(QStringLiteral("Database User"), m_login);
    }
    ScopedUserName(const ScopedUserName&) = delete;
    ScopedUserName& operator=(const ScopedUserName&) = delete;

private:
    static void restore(const char* variable, bool had, const QByteArray& value)
    {
        if (had)
            qputenv(variable, value);
        else
            qunsetenv(variable);
    }

    SuiteTestDatabase& m_test;
    QByteArray m_user;
    QByteArray m_userName;
    bool m_hadUser;
    bool m_hadUserName;
    QString m_login;
};
