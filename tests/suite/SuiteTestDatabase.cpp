#include "SuiteTestDatabase.h"

#include "suite/DemoData.h"
#include "suite/SuiteSchema.h"

#include <QDir>
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
    if (!server)
        return {{QStringLiteral("Database Driver"), SuiteSettings::SqliteDriver}};
    return {
        {QStringLiteral("Database Driver"), server->driver}, {QStringLiteral("Database Host"), server->host},
        {QStringLiteral("Database Port"), server->port},     {QStringLiteral("Database Name"), server->databaseName},
        {QStringLiteral("Database User"), server->user},     {QStringLiteral("Database Password"), server->password}};
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

void SuiteTestDatabase::fillDemo()
{
    createSchema();
    DemoData::fill(db());
}
