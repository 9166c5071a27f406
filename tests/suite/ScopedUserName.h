#pragma once

#include <QByteArray>
#include <QtGlobal>

// Signs a test in as another operating-system user (USER, and USERNAME
// cleared) and puts both back afterwards.
class ScopedUserName
{
public:
    explicit ScopedUserName(const QByteArray& name)
        : m_user(qgetenv("USER"))
        , m_userName(qgetenv("USERNAME"))
        , m_hadUser(qEnvironmentVariableIsSet("USER"))
        , m_hadUserName(qEnvironmentVariableIsSet("USERNAME"))
    {
        qputenv("USER", name);
        qunsetenv("USERNAME");
    }
    ~ScopedUserName()
    {
        restore("USER", m_hadUser, m_user);
        restore("USERNAME", m_hadUserName, m_userName);
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

    QByteArray m_user;
    QByteArray m_userName;
    bool m_hadUser;
    bool m_hadUserName;
};
