#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QString>
#include <QThread>

// Another process holding an exclusive transaction on an SQLite file, as a
// workstation in the middle of a long write does: the sqlite3 shell runs
// BEGIN EXCLUSIVE and keeps the transaction open until the object goes (its
// input closes, it rolls back and ends). held() is true once the lock is
// seen from here; whyNot() says what went wrong otherwise.
class ExclusiveSqliteLock
{
public:
    explicit ExclusiveSqliteLock(const QString& databaseFile)
    {
        const QString shell = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
        if (shell.isEmpty())
        {
            m_whyNot = QStringLiteral("the sqlite3 shell is not installed (scripts/install-deps.sh installs it)");
            return;
        }
        m_shell.start(shell, {databaseFile});
        if (!m_shell.waitForStarted(10000))
        {
            m_whyNot = QStringLiteral("sqlite3 does not start: ") + m_shell.errorString();
            return;
        }
        m_shell.write("BEGIN EXCLUSIVE;\n");
        m_shell.waitForBytesWritten(10000);
        // The shell answers nothing to BEGIN: the lock is taken once a reader
        // that does not wait is refused.
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < 10000)
        {
            if (lockedFromHere(databaseFile))
            {
                m_held = true;
                return;
            }
            QThread::msleep(20);
        }
        m_whyNot =
            QStringLiteral("sqlite3 did not take the lock: ") + QString::fromLocal8Bit(m_shell.readAllStandardError());
    }

    ~ExclusiveSqliteLock()
    {
        if (m_shell.state() == QProcess::NotRunning)
            return;
        m_shell.closeWriteChannel();
        if (!m_shell.waitForFinished(10000))
        {
            m_shell.kill();
            m_shell.waitForFinished();
        }
    }

    ExclusiveSqliteLock(const ExclusiveSqliteLock&) = delete;
    ExclusiveSqliteLock& operator=(const ExclusiveSqliteLock&) = delete;

    bool held() const { return m_held; }
    const QString& whyNot() const { return m_whyNot; }

private:
    static bool lockedFromHere(const QString& databaseFile)
    {
        const QString name = QStringLiteral("exclusive-lock-probe");
        bool locked = false;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            db.setDatabaseName(databaseFile);
            db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=0"));
            if (db.open())
            {
                QSqlQuery query(db);
                locked = !query.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master")) &&
                         query.lastError().text().contains(QLatin1String("locked"));
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(name);
        return locked;
    }

    QProcess m_shell;
    bool m_held = false;
    QString m_whyNot;
};
