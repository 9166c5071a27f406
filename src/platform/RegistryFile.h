#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>

// The registry on platforms that have none: a key tree kept in a text file in
// the registry editor's export format ("Windows Registry Editor Version 5.00"
// or "REGEDIT4" on the first line, [HKEY_LOCAL_MACHINE\...] sections,
// "name"="text", "name"=dword:0000002a, "name"=hex:01,02 and hex(N):... for
// other types, @ for the default value, "\" at the end of a line continuing a
// hex list, ";" starting a comment line). The file is UTF-8 or, with a byte
// order mark, UTF-16LE. A file without the header line is not a registry file
// and holds no keys.
//
// Where the file is: the environment variable NORRIX_REGISTRY, else the system
// file /etc/norrix/registry.reg, else the default key file norrix-default.reg
// installed in the program's data folder (ProgramDataFolder(): share/calvex-qc
// beside the programs' bin folder). String values of the default file may name
// the program's folder as ${APPDIR} and the user's data folder as ${DATADIR},
// so that a fresh machine runs on the demo database with no set-up at all.
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
    static constexpr qint32 MoreData = 234;

    // Parses the file's text; unreadable lines are ignored.
    static RegistryFile fromText(const QString& text, bool expandDefaults = false);
    // Reads and parses a file; a missing or unreadable file gives an empty registry.
    static RegistryFile load(const QString& path, bool expandDefaults = false);
    // The file the program reads (activePath()), ${...} expanded when it is the default file.
    static RegistryFile loadActive();

    // The file the program reads, by the rules above (empty when none exists).
    // A NORRIX_REGISTRY that names a missing file still wins: the site chose it.
    static QString activePath();
    static QString systemPath();
    static QString defaultPath();
    // The choice itself, apart from the environment and the file system's fixed places.
    static QString choosePath(const QString& fromEnvironment, const QString& systemFile, const QString& defaultFile);

    // keyPath is "HKEY_LOCAL_MACHINE\SOFTWARE\..." (case-insensitive, trailing "\" ignored).
    // The parents of every key in the file exist too, as they do in the registry.
    bool hasKey(const QString& keyPath) const;
    // Success, or FileNotFound when the key or the value is missing.
    qint32 query(const QString& keyPath, const QString& valueName, Value& out) const;

    // "HKEY_LOCAL_MACHINE" for RegistryRoot::LocalMachine and so on; empty for an unknown root.
    static QString rootName(quint32 root);

private:
    static QString normaliseKey(const QString& keyPath);
    void addKey(const QString& normalisedKey);
    void removeKey(const QString& normalisedKey);

    QSet<QString> m_existingKeys;                 // every key of the file and all their parents
    QHash<QString, QHash<QString, Value>> m_keys; // normalised key -> lower-cased value name -> value
};
