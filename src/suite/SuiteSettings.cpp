#include "suite/SuiteSettings.h"

#include "platform/Registry.h"
#include "platform/RegistryReadBatch.h"
#include "platform/RuntimeError.h"

#include <QStandardPaths>
#include <QVariant>

namespace
{
// A value of the common key; missing or unreadable values read as empty.
QVariant commonValue(const char* name)
{
    try
    {
        return ReadCommonValue(QString::fromLatin1(name), false);
    }
    catch (const RuntimeError&)
    {
        return QVariant();
    }
}

QString textValue(const char* name)
{
    return commonValue(name).toString().trimmed();
}

// A dword, or a text holding a whole number; anything else reads as 0.
qint32 numberValue(const char* name)
{
    const QVariant value = commonValue(name);
    if (value.typeId() == QMetaType::Int)
        return value.toInt();
    bool ok = false;
    const qint32 number = value.toString().trimmed().toInt(&ok);
    return ok ? number : 0;
}

qint32 timeoutSecondsValue()
{
    const qint32 seconds = numberValue("Database Timeout Seconds");
    if (seconds < 1 || seconds > SuiteSettings::MaxTimeoutSeconds)
        return SuiteSettings::DefaultTimeoutSeconds;
    return seconds;
}
} // namespace

SuiteSettings SuiteSettings::fromRegistry()
{
    // One consistent set of settings, from one reading of the key file.
    const RegistryReadBatch batch;
    SuiteSettings settings;
    const QString driver = textValue("Database Driver").toUpper();
    if (!driver.isEmpty())
        settings.driver = driver;
    settings.databaseName = textValue("Database Name");
    settings.host = textValue("Database Host");
    settings.port = numberValue("Database Port");
    settings.user = textValue("Database User");
    settings.password = commonValue("Database Password").toString();
    settings.demo = numberValue("Demo Database") == 1;
    settings.defaultRights = textValue("Default Rights");
    settings.defaultAutoLogoutMinutes = numberValue("Default Auto Logout Minutes");
    settings.databaseTimeoutSeconds = timeoutSecondsValue();
    if (settings.databaseName.isEmpty() && !settings.isPostgres())
    {
        settings.databaseName = defaultDemoPath();
        settings.demo = true;
    }
    return settings;
}

QString SuiteSettings::defaultDemoPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Norrix/norrix-demo.sqlite");
}

QList<qint32> SuiteSettings::defaultRightList() const
{
    QList<qint32> rights;
    const QStringList parts = defaultRights.split(u',', Qt::SkipEmptyParts);
    for (const QString& part : parts)
    {
        bool ok = false;
        const qint32 right = part.trimmed().toInt(&ok);
        if (ok)
            rights.append(right);
    }
    return rights;
}

QString SuiteSettings::describe() const
{
    if (!isPostgres())
        return driver + u':' + databaseName;
    return driver + u':' + user + u'@' + host + u':' + QString::number(port) + u'/' + databaseName;
}
