#pragma once

#include "ScopedServerSession.h"

#include "suite/SuiteSettings.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QThread>

// Another program in the middle of a write to the suite's SQLite file: the
// sqlite3 shell begins an IMMEDIATE transaction and adds a row to audit_log,
// so it holds the file's write lock while readers go on. writing() is true
// once a session of the test's own that does not wait is refused the write
// lock (within 10 seconds); whyNot() says what went wrong otherwise.
// commit() ends the write; without it the shell is ended with the object and
// its row is not kept.
class OtherSqliteWriter
{
public:
    static bool shellInstalled() { return !shell().isEmpty(); }

    explicit OtherSqliteWriter(const SuiteSettings& settings)
    {
        m_shell.start(shell(), {settings.databaseName});
        if (!m_shell.waitForStarted())
        {
            m_whyNot = QStringLiteral("sqlite3 does not start: ") + m_shell.errorString();
            return;
        }
        m_shell.write("BEGIN IMMEDIATE;\nINSERT INTO audit_log (logged_at, user_name, application, event_kind) "
                      "VALUES ('2025-01-01 00:00:00', 'other', 1, 'writing');\n");
        m_shell.waitForBytesWritten(10000);
        ScopedServerSession probe(settings, QStringLiteral("probe"));
        if (!probe.exec(QStringLiteral("PRAGMA busy_timeout = 0")))
        {
            m_whyNot = QStringLiteral("the probe session does not open: ") + probe.error();
            return;
        }
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < 10000)
        {
            if (!probe.exec(QStringLiteral("BEGIN IMMEDIATE")))
            {
                m_writing = true;
                return;
            }
            probe.exec(QStringLiteral("ROLLBACK"));
            QThread::msleep(20);
        }
        m_whyNot = QStringLiteral("sqlite3 did not take the write lock: ") +
                   QString::fromLocal8Bit(m_shell.readAllStandardError());
    }

    ~OtherSqliteWriter()
    {
        if (m_shell.state() == QProcess::NotRunning)
            return;
        m_shell.kill();
        m_shell.waitForFinished();
    }

    OtherSqliteWriter(const OtherSqliteWriter&) = delete;
    OtherSqliteWriter& operator=(const OtherSqliteWriter&) = delete;

    bool writing() const { return m_writing; }
    const QString& whyNot() const { return m_whyNot; }

    // Commits the write and ends the shell; false when it did not end.
    bool commit()
    {
        m_shell.write("COMMIT;\n.quit\n");
        m_shell.closeWriteChannel();
        return m_shell.waitForFinished();
    }

    int exitCode() const { return m_shell.exitCode(); }

private:
    static QString shell() { return QStandardPaths::findExecutable(QStringLiteral("sqlite3")); }

    QProcess m_shell;
    bool m_writing = false;
    QString m_whyNot;
};
