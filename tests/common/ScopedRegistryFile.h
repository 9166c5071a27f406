#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QVariant>

// The suite's common key for one test: a key file in a temporary folder that
// NORRIX_REGISTRY names for the scope (put back as it was afterwards). Text
// values are written as strings, numbers as dwords.
class ScopedRegistryFile
{
public:
    explicit ScopedRegistryFile(QMap<QString, QVariant> values = {})
        : m_dir(QDir::tempPath() + QStringLiteral("/calvex-test-XXXXXX"))
        , m_values(std::move(values))
        , m_hadPrevious(qEnvironmentVariableIsSet("NORRIX_REGISTRY"))
        , m_previous(qgetenv("NORRIX_REGISTRY"))
    {
        qputenv("NORRIX_REGISTRY", QFile::encodeName(path()));
        write();
    }
    ~ScopedRegistryFile()
    {
        if (m_hadPrevious)
            qputenv("NORRIX_REGISTRY", m_previous);
        else
            qunsetenv("NORRIX_REGISTRY");
    }
    ScopedRegistryFile(const ScopedRegistryFile&) = delete;
    ScopedRegistryFile& operator=(const ScopedRegistryFile&) = delete;

    // An invalid value removes the name.
    void setValue(const QString& name, const QVariant& value)
    {
        if (value.isValid())
            m_values[name] = value;
        else
            m_values.remove(name);
        write();
    }

    // The suite's key for an embedded demo database (by default in this key's
    // folder), with the folder of the running program as the suite's
    // executable path, where the database tool is built; the database's path.
    QString useDemoDatabase(QString database = QString())
    {
        if (database.isEmpty())
            database = m_dir.filePath(QStringLiteral("norrix-demo.sqlite"));
        m_values[QStringLiteral("Executable Path")] = QCoreApplication::applicationDirPath();
        m_values[QStringLiteral("SI Unit")] = QStringLiteral("0");
        m_values[QStringLiteral("Database Driver")] = QStringLiteral("QSQLITE");
        m_values[QStringLiteral("Database Name")] = database;
        m_values[QStringLiteral("Demo Database")] = 1;
        m_values[QStringLiteral("Default Rights")] = QStringLiteral("500,501");
        m_values[QStringLiteral("Default Auto Logout Minutes")] = 0;
        write();
        return database;
    }

    QString path() const { return m_dir.filePath(QStringLiteral("registry.reg")); }
    // A folder of the test's own beside the key file (its path has no blanks).
    QString folder() const { return m_dir.path(); }

private:
    static QString quoted(QString text)
    {
        text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
        return QLatin1Char('"') + text + QLatin1Char('"');
    }

    void write() const
    {
        QString text = QStringLiteral("Windows Registry Editor Version 5.00\n\n"
                                      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n");
        for (auto it = m_values.cbegin(); it != m_values.cend(); ++it)
        {
            const QString value = it.value().typeId() == QMetaType::QString
                                      ? quoted(it.value().toString())
                                      : QStringLiteral("dword:%1").arg(it.value().toUInt(), 8, 16, QLatin1Char('0'));
            text += quoted(it.key()) + QLatin1Char('=') + value + QLatin1Char('\n');
        }
        QFile file(path());
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write(text.toUtf8());
    }

    QTemporaryDir m_dir;
    QMap<QString, QVariant> m_values;
    bool m_hadPrevious;
    QByteArray m_previous;
};
