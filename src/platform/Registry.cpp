#include "platform/Registry.h"

#include "platform/SystemError.h"

#include <QtEndian>

#include <algorithm>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include "platform/RegistryFile.h"
#include "platform/RegistryReadBatch.h"
#endif

namespace
{
#ifdef Q_OS_WIN
HKEY rootHandle(RegistryRoot root)
{
    // The predefined handles are sign-extended on 64-bit Windows, so they are
    // taken from the system's own definitions, never cast from the number.
    switch (root)
    {
    case RegistryRoot::ClassesRoot:
        return HKEY_CLASSES_ROOT;
    case RegistryRoot::CurrentUser:
        return HKEY_CURRENT_USER;
    case RegistryRoot::LocalMachine:
        return HKEY_LOCAL_MACHINE;
    case RegistryRoot::Users:
        return HKEY_USERS;
    }
    return HKEY_LOCAL_MACHINE;
}

// One open key of the system registry, read through its narrow (ANSI) interface.
class OpenKey
{
public:
    OpenKey() = default;
    ~OpenKey() { close(); }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    qint32 open(RegistryRoot root, const QString& subKey)
    {
        const LONG result = RegOpenKeyA(rootHandle(root), subKey.toLocal8Bit().constData(), &m_key);
        if (result != ERROR_SUCCESS)
            m_key = nullptr; // nothing to close
        return qint32(result);
    }

    qint32 queryType(const QString& valueName, quint32& type, quint32& size)
    {
        DWORD valueType = 0;
        DWORD valueSize = 254;
        const LONG result =
            RegQueryValueExA(m_key, valueName.toLocal8Bit().constData(), nullptr, &valueType, nullptr, &valueSize);
        type = valueType;
        size = valueSize;
        return qint32(result);
    }

    // Reads the value into buffer (at most its size); the bytes not written stay as they were.
    qint32 read(const QString& valueName, QByteArray& buffer)
    {
        DWORD size = DWORD(buffer.size());
        return qint32(RegQueryValueExA(m_key, valueName.toLocal8Bit().constData(), nullptr, nullptr,
                                       reinterpret_cast<LPBYTE>(buffer.data()), &size));
    }

    void close()
    {
        if (m_key)
            RegCloseKey(m_key);
        m_key = nullptr;
    }

    static QString decodeText(const QByteArray& bytes) { return QString::fromLocal8Bit(bytes); }

private:
    HKEY m_key = nullptr;
};
#else
// One key of the registry file, with the same status codes as the system registry.
class OpenKey
{
public:
    qint32 open(RegistryRoot root, const QString& subKey)
    {
        const RegistryReadBatch* batch = RegistryReadBatch::current();
        m_file = batch ? batch->file() : RegistryFile::loadActive();
        m_keyPath = RegistryFile::rootName(quint32(root)) + u'\\' + subKey;
        return m_file.hasKey(m_keyPath) ? RegistryFile::Success : RegistryFile::FileNotFound;
    }

    qint32 queryType(const QString& valueName, quint32& type, quint32& size)
    {
        RegistryFile::Value value;
        const qint32 result = m_file.query(m_keyPath, valueName, value);
        type = value.type;
        size = quint32(value.data.size());
        return result;
    }

    qint32 read(const QString& valueName, QByteArray& buffer)
    {
        RegistryFile::Value value;
        const qint32 result = m_file.query(m_keyPath, valueName, value);
        if (result != RegistryFile::Success)
            return result;
        if (value.data.size() > buffer.size())
            return RegistryFile::MoreData;
        std::copy(value.data.cbegin(), value.data.cend(), buffer.begin());
        return RegistryFile::Success;
    }

    void close() { m_file = RegistryFile(); }

    static QString decodeText(const QByteArray& bytes) { return QString::fromUtf8(bytes); }

private:
    RegistryFile m_file;
    QString m_keyPath;
};
#endif
} // namespace

QVariant ReadRegistryValue(RegistryRoot root, const QString& subKey, const QString& valueName, bool show)
{
    OpenKey key;
    qint32 result = key.open(root, subKey);
    if (result != 0)
    {
        ShowSystemError(result, show);
        return QVariant();
    }

    quint32 type = 0;
    quint32 size = 0;
    result = key.queryType(valueName, type, size);
    if (result != 0)
    {
        // Closed before the error is raised, so that a raised error leaves no key open.
        key.close();
        ShowSystemError(result, show);
        return QVariant();
    }

    QVariant value;
    if (type == RegType::String)
    {
        QByteArray buffer(qsizetype(size), '\0');
        // The stored terminating NUL is dropped: the first size - 1 bytes are the text.
        if (key.read(valueName, buffer) == 0)
            value = size == 0 ? QString() : OpenKey::decodeText(buffer.left(qsizetype(size) - 1));
    }
    else if (type == RegType::DWord)
    {
        QByteArray buffer(4, '\0');
        if (key.read(valueName, buffer) == 0)
            value = qFromLittleEndian<qint32>(buffer.constData());
    }
    key.close();
    return value;
}

QVariant ReadCommonValue(const QString& valueName, bool show)
{
    return ReadRegistryValue(RegistryRoot::LocalMachine, kNorrixCommonKey, valueName, show);
}
