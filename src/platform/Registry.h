#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// Predefined root keys, by their Windows handle values.
enum class RegistryRoot : quint32
{
    ClassesRoot = 0x80000000u,
    CurrentUser = 0x80000001u,
    LocalMachine = 0x80000002u,
    Users = 0x80000003u
};

// Value types as the registry numbers them.
namespace RegType
{
constexpr quint32 None = 0;
constexpr quint32 String = 1;       // REG_SZ
constexpr quint32 ExpandString = 2; // REG_EXPAND_SZ
constexpr quint32 Binary = 3;       // REG_BINARY
constexpr quint32 DWord = 4;        // REG_DWORD
constexpr quint32 MultiString = 7;  // REG_MULTI_SZ
} // namespace RegType

// The common key of the suite: every setting the program reads lives here.
inline const QString kNorrixCommonKey = QStringLiteral("SOFTWARE\\Norrix\\Common\\");

// Reads one value: an empty QVariant, a QString (REG_SZ, without its stored
// terminating NUL) or a qint32 (REG_DWORD). A missing key or value goes to
// ShowSystemError(result, show); any other type gives empty without a message.
QVariant ReadRegistryValue(RegistryRoot root, const QString& subKey, const QString& valueName, bool show);

// Shorthand for a value under HKEY_LOCAL_MACHINE\SOFTWARE\Norrix\Common\.
QVariant ReadCommonValue(const QString& valueName, bool show);
