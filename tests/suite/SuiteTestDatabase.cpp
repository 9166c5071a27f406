#include "SuiteTestDatabase.h"

#include "suite/DemoData.h"
#include "suite/SuiteSchema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtGlobal>

#include <optional>

namespace
{
bool s_alive = false;

// The test server named by the key file the tests were started with, if any.
const std::optional<SuiteSettings>& testServer()
{
    static const std::optional<SuiteSettings> server = []() -> std::optional<SuiteSettings> {
        if (qEnvironmentVariableIsEmpty("NORRIX_REGISTRY"))
            return std::nullopt;
        const SuiteSettings settings = SuiteSettings::fromRegistry();
        if (!settings.isPostgres())
            return std::nullopt;
        if (!settings.databaseName.startsWith(QLatin1String("calvex_test")))
            qFatal("The key file in NORRIX_REGISTRY names the PostgreSQL database \"%s\"; the tests empty their "
                   "database and use only one whose name starts with calvex_test.",
                   qPrintable(settings.databaseName));
        return settings;
    }();
    return server;
}
} // namespace

// Runs before the test's key file replaces the one the tests were started with.
QMap<QString, QVariant> SuiteTestDatabase::claimDatabase()
{
    // Each test database replaces the one before (on a test server, the same database is emptied).
    if (s_alive)
        qFatal("Only one SuiteTestDatabase may exist at a time.");
    s_alive = true;
    SuiteDatabase::closeAllConnections();
    const std::optional<SuiteSettings>& server = testServer();
    // A user the users table does not list may edit, as on a new workstation.
    const QString rights = QStringLiteral("500,501");
    if (!server)
        return {{QStringLiteral("Database Driver"), SuiteSettings::SqliteDriver},
                {QStringLiteral("Default Rights"), rights}};
    return {
        {QStringLiteral("Database Driver"), server->driver}, {QStringLiteral("Database Host"), server->host},
        {QStringLiteral("Database Port"), server->port},     {QStringLiteral("Database Name"), server->databaseName},
        {QStringLiteral("Database User"), server->user},     {QStringLiteral("Database Password"), server->password},
        {QStringLiteral("Default Rights"), rights}};
}

SuiteTestDatabase::SuiteTestDatabase()
    : m_registry(claimDatabase())
{
    if (onPostgres())
    {
        db().exec(QStringLiteral("SET client_min_messages TO WARNING")); // no notice per dropped table
        db().exec(QStringLiteral("DROP SCHEMA public CASCADE"));
        db().exec(QStringLiteral("CREATE SCHEMA public"));
    }
    else
    {
        setValue(QStringLiteral("Database Name"), tempPath(QStringLiteral("qc.sqlite")));
    }
}

SuiteTestDatabase::~SuiteTestDatabase()
{
    m_db.reset();
    SuiteDatabase::closeAllConnections();
    s_alive = false;
}

bool SuiteTestDatabase::onPostgres()
{
    return testServer().has_value();
}

QString SuiteTestDatabase::tempPath(const QString& fileName) const
{
    return QDir(m_registry.folder()).filePath(fileName);
}

SuiteDatabase& SuiteTestDatabase::db()
{
    if (!m_db)
        m_db = std::make_unique<SuiteDatabase>(settings(), SuiteDatabase::OpenMode::CreateIfMissing);
    return *m_db;
}

void SuiteTestDatabase::createSchema()
{
    SuiteSchema::migrate(db());
}

void SuiteTestDatabase::grantServerRights(const QString& login, const QList<qint32>& rights)
{
    if (!onPostgres())
        qFatal("Rights are granted by a database server only.");
    SuiteDatabase& admin = db();
    QString role = login;
    role = u'"' + role.replace(u'"', QStringLiteral("\"\"")) + u'"';
    if (admin.scalar(QStringLiteral("SELECT 1 FROM pg_roles WHERE rolname = ?"), {login}).isNull())
        admin.exec(QStringLiteral("CREATE ROLE ") + role + QStringLiteral(" LOGIN"));
    admin.exec(QStringLiteral("REVOKE ALL ON ALL TABLES IN SCHEMA public FROM ") + role);
    admin.exec(QStringLiteral("GRANT USAGE ON SCHEMA public TO ") + role);
    if (rights.contains(500))
    {
        admin.exec(QStringLiteral("GRANT SELECT ON ALL TABLES IN SCHEMA public TO ") + role);
        admin.exec(QStringLiteral("GRANT INSERT ON audit_log TO ") + role);
    }
    if (rights.contains(501))
        admin.exec(QStringLiteral("GRANT INSERT, UPDATE, DELETE ON qc_reports, qc_report_params TO ") + role);
}

SuiteSettings SuiteTestDatabase::secondWorkstation()
{
    SuiteSettings second = settings();
    if (onPostgres())
    {
        const QString login = QStringLiteral("calvex_second_workstation");
        grantServerRights(login, {500, 501});
        second.user = login;
        second.password.clear();
        return second;
    }
    const QFileInfo file(second.databaseName);
    const QString link = tempPath(QStringLiteral("second-workstation"));
    if (!QFileInfo::exists(link) && !QFile::link(file.absolutePath(), link))
        qFatal("The link to the database's folder cannot be made.");
    second.databaseName = QDir(link).filePath(file.fileName());
    return second;
}

void SuiteTestDatabase::fillDemo()
{
    createSchema();
    DemoData::fill(db());
}
