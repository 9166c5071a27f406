#include "SuiteTestDatabase.h"

#include "suite/DemoData.h"
#include "suite/SuiteSchema.h"

#include <QFile>
#include <QtGlobal>

#include <optional>

namespace
{
const char* const kRegistryVariable = "NORRIX_REGISTRY";
bool s_alive = false;

// The test server named by the key file the tests were started with, if any.
const std::optional<SuiteSettings>& testServer()
{
    static const std::optional<SuiteSettings> server = []() -> std::optional<SuiteSettings> {
        if (qEnvironmentVariableIsEmpty(kRegistryVariable))
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

QString quoted(const QString& text)
{
    QString escaped = text;
    escaped.replace(u'\\', QStringLiteral("\\\\"));
    escaped.replace(u'"', QStringLiteral("\\\""));
    return u'"' + escaped + u'"';
}
} // namespace

QString SuiteRegistryText(const QMap<QString, QVariant>& values)
{
    QString text = QStringLiteral("Windows Registry Editor Version 5.00\n\n"
                                  "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n");
    for (auto it = values.cbegin(); it != values.cend(); ++it)
    {
        if (it.value().typeId() == QMetaType::Int)
            text += quoted(it.key()) + QStringLiteral("=dword:") +
                    QStringLiteral("%1").arg(quint32(it.value().toInt()), 8, 16, QLatin1Char('0')) + u'\n';
        else
            text += quoted(it.key()) + u'=' + quoted(it.value().toString()) + u'\n';
    }
    return text;
}

SuiteTestDatabase::SuiteTestDatabase()
{
    // Each test database replaces the one before (on a test server, the same database is emptied).
    if (s_alive)
        qFatal("Only one SuiteTestDatabase may exist at a time.");
    s_alive = true;
    testServer(); // read before this test's key file replaces it
    m_hadRegistry = qEnvironmentVariableIsSet(kRegistryVariable);
    m_previousRegistry = qgetenv(kRegistryVariable);
    SuiteDatabase::closeAllConnections();

    if (const std::optional<SuiteSettings>& server = testServer())
    {
        m_values.insert(QStringLiteral("Database Driver"), server->driver);
        m_values.insert(QStringLiteral("Database Host"), server->host);
        m_values.insert(QStringLiteral("Database Port"), server->port);
        m_values.insert(QStringLiteral("Database Name"), server->databaseName);
        m_values.insert(QStringLiteral("Database User"), server->user);
        m_values.insert(QStringLiteral("Database Password"), server->password);
    }
    else
    {
        m_values.insert(QStringLiteral("Database Driver"), SuiteSettings::SqliteDriver);
        m_values.insert(QStringLiteral("Database Name"), tempPath(QStringLiteral("qc.sqlite")));
    }
    writeRegistry();

    if (onPostgres())
    {
        db().exec(QStringLiteral("SET client_min_messages TO WARNING")); // no notice per dropped table
        db().exec(QStringLiteral("DROP SCHEMA public CASCADE"));
        db().exec(QStringLiteral("CREATE SCHEMA public"));
    }
}

SuiteTestDatabase::~SuiteTestDatabase()
{
    m_db.reset();
    SuiteDatabase::closeAllConnections();
    if (m_hadRegistry)
        qputenv(kRegistryVariable, m_previousRegistry);
    else
        qunsetenv(kRegistryVariable);
    s_alive = false;
}

bool SuiteTestDatabase::onPostgres()
{
    return testServer().has_value();
}

void SuiteTestDatabase::setValue(const QString& name, const QVariant& value)
{
    if (value.isValid())
        m_values.insert(name, value);
    else
        m_values.remove(name);
    writeRegistry();
}

QString SuiteTestDatabase::registryPath() const
{
    return tempPath(QStringLiteral("suite.reg"));
}

QString SuiteTestDatabase::tempPath(const QString& fileName) const
{
    return m_dir.filePath(fileName);
}

void SuiteTestDatabase::writeRegistry()
{
    QFile file(registryPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("Cannot write the test key file %s", qPrintable(registryPath()));
    file.write(SuiteRegistryText(m_values).toUtf8());
    file.close();
    qputenv(kRegistryVariable, QFile::encodeName(registryPath()));
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
