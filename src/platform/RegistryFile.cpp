#include "platform/RegistryFile.h"

#include "platform/ProgramFolders.h"
#include "platform/Registry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>
#include <QtEndian>

#include <optional>

namespace
{
const QString kWideHeader = QStringLiteral("Windows Registry Editor Version 5.00");
const QString kNarrowHeader = QStringLiteral("REGEDIT4");

// Reads a quoted text starting at text[pos] == '"', undoing the \\ and \"
// escapes; any other backslash stays as written. pos ends after the closing quote.
std::optional<QString> readQuoted(const QString& text, qsizetype& pos)
{
    QString result;
    for (++pos; pos < text.size(); ++pos)
    {
        const QChar c = text.at(pos);
        if (c == u'"')
        {
            ++pos;
            return result;
        }
        if (c == u'\\' && pos + 1 < text.size() && (text.at(pos + 1) == u'\\' || text.at(pos + 1) == u'"'))
            ++pos;
        result.append(text.at(pos));
    }
    return std::nullopt; // no closing quote
}

// "01,ff, 2a" -> bytes; an empty list is an empty value.
std::optional<QByteArray> readHexList(const QString& list)
{
    QByteArray bytes;
    const QString trimmed = list.trimmed();
    if (trimmed.isEmpty())
        return bytes;
    for (const QString& item : trimmed.split(u','))
    {
        const QString digits = item.trimmed();
        bool ok = false;
        const uint byte = digits.toUInt(&ok, 16);
        if (!ok || digits.size() > 2)
            return std::nullopt;
        bytes.append(char(byte));
    }
    return bytes;
}

// Text after a number or hex list may carry a comment.
QString withoutComment(const QString& text)
{
    const qsizetype semicolon = text.indexOf(u';');
    return (semicolon < 0 ? text : text.left(semicolon)).trimmed();
}

// UTF-16LE bytes as text; an odd last byte is dropped.
QString fromUtf16Le(const QByteArray& wide)
{
    QString text;
    text.reserve(wide.size() / 2);
    for (qsizetype i = 0; i + 1 < wide.size(); i += 2)
        text.append(QChar(char16_t(quint8(wide.at(i)) | (quint8(wide.at(i + 1)) << 8))));
    return text;
}

bool isTextType(quint32 type)
{
    return type == RegType::String || type == RegType::ExpandString || type == RegType::MultiString;
}

QString expandDefaultFolders(QString text)
{
    if (text.contains(QLatin1String("${APPDIR}")))
        text.replace(QLatin1String("${APPDIR}"), QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
    if (text.contains(QLatin1String("${DATADIR}")))
        text.replace(QLatin1String("${DATADIR}"),
                     QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                                              QStringLiteral("/Norrix")));
    return text;
}

// The data of one value as written after "=": a quoted text, dword:, hex: or hex(N):.
std::optional<RegistryFile::Value> readValueData(const QString& written, bool wideText, bool expandDefaults)
{
    RegistryFile::Value value;
    if (written.startsWith(u'"'))
    {
        qsizetype pos = 0;
        const std::optional<QString> text = readQuoted(written, pos);
        if (!text)
            return std::nullopt;
        value.type = RegType::String;
        value.data = (expandDefaults ? expandDefaultFolders(*text) : *text).toUtf8();
        value.data.append('\0');
        return value;
    }
    if (written.startsWith(QLatin1String("dword:"), Qt::CaseInsensitive))
    {
        const QString digits = withoutComment(written.mid(6));
        bool ok = false;
        const quint32 number = digits.toUInt(&ok, 16);
        if (!ok || digits.size() > 8)
            return std::nullopt;
        value.type = RegType::DWord;
        value.data.resize(4);
        qToLittleEndian(number, value.data.data());
        return value;
    }
    if (!written.startsWith(QLatin1String("hex"), Qt::CaseInsensitive))
        return std::nullopt;
    const qsizetype colon = written.indexOf(u':');
    if (colon < 0)
        return std::nullopt;
    const QString kind = written.left(colon).trimmed().toLower();
    if (kind == QLatin1String("hex"))
    {
        value.type = RegType::Binary;
    }
    else if (kind.startsWith(QLatin1String("hex(")) && kind.endsWith(u')'))
    {
        bool ok = false;
        value.type = kind.mid(4, kind.size() - 5).toUInt(&ok, 16);
        if (!ok)
            return std::nullopt;
    }
    else
    {
        return std::nullopt;
    }
    const std::optional<QByteArray> bytes = readHexList(withoutComment(written.mid(colon + 1)));
    if (!bytes)
        return std::nullopt;
    // Text-typed data of a "Version 5.00" file is UTF-16LE; the program reads the
    // registry's narrow (8-bit) view, which for us is UTF-8.
    value.data = wideText && isTextType(value.type) ? fromUtf16Le(*bytes).toUtf8() : *bytes;
    return value;
}

// Physical lines with "\" continuations joined.
QStringList logicalLines(const QString& text)
{
    QStringList lines;
    QString pending;
    bool continuing = false;
    for (QString line : text.split(u'\n'))
    {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (continuing)
            line = line.trimmed();
        const QString trimmedEnd = line.trimmed();
        continuing = trimmedEnd.endsWith(u'\\') && !trimmedEnd.startsWith(u';');
        pending += continuing ? trimmedEnd.left(trimmedEnd.size() - 1) : line;
        if (!continuing)
        {
            lines.append(pending);
            pending.clear();
        }
    }
    if (!pending.isEmpty())
        lines.append(pending);
    return lines;
}

const char* const kRootNames[][2] = {
    {"HKLM", "HKEY_LOCAL_MACHINE"}, {"HKCU", "HKEY_CURRENT_USER"},   {"HKCR", "HKEY_CLASSES_ROOT"},
    {"HKU", "HKEY_USERS"},          {"HKCC", "HKEY_CURRENT_CONFIG"},
};
} // namespace

RegistryFile RegistryFile::fromText(const QString& text, bool expandDefaults)
{
    RegistryFile file;
    const QStringList lines = logicalLines(text.startsWith(QChar(0xFEFF)) ? text.mid(1) : text);

    qsizetype first = 0;
    while (first < lines.size() && lines.at(first).trimmed().isEmpty())
        ++first;
    if (first == lines.size())
        return file;
    const QString header = lines.at(first).trimmed();
    if (header != kWideHeader && header != kNarrowHeader)
        return file;
    const bool wideText = header == kWideHeader;

    QString currentKey; // empty outside a section, and inside a deleting one
    for (qsizetype i = first + 1; i < lines.size(); ++i)
    {
        const QString line = lines.at(i).trimmed();
        if (line.isEmpty() || line.startsWith(u';'))
            continue;
        if (line.startsWith(u'['))
        {
            const qsizetype close = line.lastIndexOf(u']');
            currentKey.clear();
            if (close < 0)
                continue;
            if (line.startsWith(QLatin1String("[-")))
            {
                file.removeKey(normaliseKey(line.mid(2, close - 2)));
                continue;
            }
            currentKey = normaliseKey(line.mid(1, close - 1));
            file.addKey(currentKey);
            continue;
        }
        if (currentKey.isEmpty())
            continue;

        QString name;
        qsizetype pos = 0;
        if (line.startsWith(u'@'))
        {
            pos = 1;
        }
        else if (line.startsWith(u'"'))
        {
            const std::optional<QString> quoted = readQuoted(line, pos);
            if (!quoted)
                continue;
            name = *quoted;
        }
        else
        {
            continue;
        }
        const QString rest = line.mid(pos).trimmed();
        if (!rest.startsWith(u'='))
            continue;
        const QString written = rest.mid(1).trimmed();
        if (withoutComment(written) == QLatin1String("-"))
        {
            file.m_keys[currentKey].remove(name.toLower());
            continue;
        }
        if (const std::optional<Value> value = readValueData(written, wideText, expandDefaults))
            file.m_keys[currentKey].insert(name.toLower(), *value);
    }
    return file;
}

RegistryFile RegistryFile::load(const QString& path, bool expandDefaults)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return RegistryFile();
    const QByteArray bytes = file.readAll();
    if (bytes.startsWith("\xFF\xFE"))
        return fromText(fromUtf16Le(bytes.mid(2)), expandDefaults);
    return fromText(QString::fromUtf8(bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes), expandDefaults);
}

RegistryFile RegistryFile::loadActive()
{
    const QString path = activePath();
    const QString defaultFile = defaultPath();
    const bool isDefault = !path.isEmpty() && QFileInfo(path) == QFileInfo(defaultFile);
    return load(path, isDefault);
}

QString RegistryFile::activePath()
{
    return choosePath(qEnvironmentVariable("NORRIX_REGISTRY"), systemPath(), defaultPath());
}

QString RegistryFile::systemPath()
{
    return QStringLiteral("/etc/norrix/registry.reg");
}

QString RegistryFile::defaultPath()
{
    return ProgramDataFolder() + QStringLiteral("/norrix-default.reg");
}

QString RegistryFile::choosePath(const QString& fromEnvironment, const QString& systemFile, const QString& defaultFile)
{
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    if (QFileInfo::exists(systemFile))
        return systemFile;
    if (QFileInfo::exists(defaultFile))
        return defaultFile;
    return QString();
}

bool RegistryFile::hasKey(const QString& keyPath) const
{
    const QString key = normaliseKey(keyPath);
    if (m_existingKeys.contains(key))
        return true;
    // A root key is always there, even in an empty file.
    for (const auto& names : kRootNames)
    {
        if (key.compare(QLatin1String(names[1]), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

qint32 RegistryFile::query(const QString& keyPath, const QString& valueName, Value& out) const
{
    const auto key = m_keys.constFind(normaliseKey(keyPath));
    if (key == m_keys.constEnd())
        return FileNotFound;
    const auto value = key->constFind(valueName.toLower());
    if (value == key->constEnd())
        return FileNotFound;
    out = *value;
    return Success;
}

QString RegistryFile::rootName(quint32 root)
{
    switch (root)
    {
    case quint32(RegistryRoot::ClassesRoot):
        return QStringLiteral("HKEY_CLASSES_ROOT");
    case quint32(RegistryRoot::CurrentUser):
        return QStringLiteral("HKEY_CURRENT_USER");
    case quint32(RegistryRoot::LocalMachine):
        return QStringLiteral("HKEY_LOCAL_MACHINE");
    case quint32(RegistryRoot::Users):
        return QStringLiteral("HKEY_USERS");
    case 0x80000005u:
        return QStringLiteral("HKEY_CURRENT_CONFIG");
    default:
        return QString();
    }
}

QString RegistryFile::normaliseKey(const QString& keyPath)
{
    QStringList parts = keyPath.trimmed().split(u'\\', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return QString();
    for (const auto& names : kRootNames)
    {
        if (parts.first().compare(QLatin1String(names[0]), Qt::CaseInsensitive) == 0)
            parts.first() = QLatin1String(names[1]);
    }
    return parts.join(u'\\').toLower();
}

void RegistryFile::addKey(const QString& normalisedKey)
{
    m_keys[normalisedKey];
    QString key = normalisedKey;
    while (!key.isEmpty())
    {
        m_existingKeys.insert(key);
        const qsizetype slash = key.lastIndexOf(u'\\');
        key = slash < 0 ? QString() : key.left(slash);
    }
}

void RegistryFile::removeKey(const QString& normalisedKey)
{
    const QString prefix = normalisedKey + u'\\';
    const auto isGone = [&](const QString& key) { return key == normalisedKey || key.startsWith(prefix); };
    m_keys.removeIf([&](QHash<QString, QHash<QString, Value>>::iterator entry) { return isGone(entry.key()); });
    m_existingKeys.removeIf(isGone);
    // Parents stay: the deleted key's parent still exists.
}
