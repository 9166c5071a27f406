#pragma once

#include <QList>
#include <QString>

// Where the suite's database lives and the site's defaults for users the
// database does not list, as the suite's common registry key holds them:
// "Database Driver" ("QSQLITE" or "QPSQL"), "Database Name" (the SQLite file
// or the PostgreSQL database), "Database Host", "Database Port",
// "Database User", "Database Password", "Demo Database" (1 = the embedded
// demo database), "Default Rights" ("500,501"),
// "Default Auto Logout Minutes" and "Database Timeout Seconds". A missing
// value reads as empty.
struct SuiteSettings
{
    QString driver = SqliteDriver;
    QString databaseName;
    QString host;
    qint32 port = 0;
    QString user;
    QString password;
    bool demo = false;
    QString defaultRights;
    qint32 defaultAutoLogoutMinutes = 0;
    // How long one wait for the database may last (another workstation's
    // lock, a busy file): "Database Timeout Seconds", 15 when missing or not a
    // number from 1 to 3600.
    qint32 databaseTimeoutSeconds = DefaultTimeoutSeconds;

    static constexpr qint32 DefaultTimeoutSeconds = 15;
    static constexpr qint32 MaxTimeoutSeconds = 3600;

    static inline const QString SqliteDriver = QStringLiteral("QSQLITE");
    static inline const QString PostgresDriver = QStringLiteral("QPSQL");

    // Reads the values afresh. Without a database name the embedded demo file
    // in the user's data folder is meant.
    static SuiteSettings fromRegistry();
    static QString defaultDemoPath();

    bool isPostgres() const { return driver == PostgresDriver; }
    // The rights of "Default Rights"; numbers that do not read as such are left out.
    QList<qint32> defaultRightList() const;
    // Names the database (driver, place and user) for messages and for
    // keeping one connection per database.
    QString describe() const;
};
