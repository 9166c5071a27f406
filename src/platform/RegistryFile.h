#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

// The registry on platforms that have none: a key tree kept in a text file in
// the registry editor's export format ("Windows Registry Editor Version 5.00",
// [HKEY_LOCAL_MACHINE\...] sections, "name"="text", "name"=dword:0000002a,
// "name"=hex:01,02 and hex(N):... for other types, @ for the default value).
//
// Where the file is: the environment variable NORRIX_REGISTRY, else the system
// file /etc/norrix/registry.reg, else the default key file norrix-default.reg
// installed beside the program. String values of the default file may name the
// program's folder as ${APPDIR} and the user's data folder as ${DATADIR}, so
// that a fresh machine runs on the demo database with no set-up at all.
class RegistryFile
{
public:
    struct Value
    {
        quint32 type = 0;
        QByteArray data; // as the registry stores it: strings with their terminating NUL
    };

    // Win32 status codes of the lookups.
    static constexpr qint32 Success = 0;
    static constexpr qint32 FileNotFound = 2;

    // Parses the file's text; unreadable lines are ignored.
    static RegistryFile fromText(const QString& text, bool expandDefaults = false);
    static RegistryFile load(const QString& path, bool expandDefaults = false);

    // The file the program reads, by the rules above (empty when none exists).
    static QString activePath();
    static QString systemPath();
    static QString defaultPath();

    // keyPath is "HKEY_LOCAL_MACHINE\SOFTWARE\..." (case-insensitive, trailing "\" ignored).
    bool hasKey(const QString& keyPath) const;
    // Success, or FileNotFound when the key or the value is missing.
    qint32 query(const QString& keyPath, const QString& valueName, Value& out) const;

    static QString rootName(quint32 root);

private:
    static QString normaliseKey(const QString& keyPath);
    QHash<QString, QHash<QString, Value>> m_keys; // normalised key -> lower-cased value name -> value
};
