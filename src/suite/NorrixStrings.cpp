#include "suite/NorrixStrings.h"

#include "platform/Registry.h"
#include "platform/RuntimeError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QStringList>
#include <QtDebug>

// The table lives in a static library, whose resource object the linker keeps
// only when something refers to it; this call is that reference. The macro may
// not stand inside a namespace.
static void initTableResource()
{
    Q_INIT_RESOURCE(suite_strings);
}

namespace
{
// A translation file's faults are the program's own warnings: programs
// that keep Qt's messages out (the batch renderer) still pass these on.
Q_LOGGING_CATEGORY(lcStringTable, "calvex.strings")

// A registry read that fails raises an error whose source is one of our own
// texts, and fetching that text creates a string server in turn. While one
// server reads the registry, the ones made meanwhile do not read it again.
bool readingRegistry = false;

QString registryStringsFile()
{
    if (readingRegistry)
        return QString();
    const QScopedValueRollback<bool> guard(readingRegistry, true);
    try
    {
        return ReadCommonValue(NorrixStrings::RegistryValueName, false).toString().trimmed();
    }
    catch (const RuntimeError&)
    {
        // Most sites have no such value: the built-in table then stands alone.
        return QString();
    }
}

QString programDir()
{
    return QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString();
}

QString localeLanguage()
{
    return QLocale().name().section(QLatin1Char('_'), 0, 0);
}

bool isDigits(QStringView text)
{
    for (QChar c : text)
    {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    }
    return !text.isEmpty();
}
} // namespace

NorrixStrings::NorrixStrings()
    : NorrixStrings(overrideFile(programDir(), localeLanguage()))
{}

NorrixStrings::NorrixStrings(const QString& overridePath)
{
    initTableResource();
    loadTable(BuiltInTable);
    if (!overridePath.isEmpty())
        loadTable(overridePath);
}

QString NorrixStrings::GetText(qint16 id)
{
    return m_texts.value(id);
}

QString NorrixStrings::overrideFile(const QString& programDir, const QString& language)
{
    const QString named = QDir::fromNativeSeparators(registryStringsFile());
    if (!named.isEmpty())
        return programDir.isEmpty() ? named : QDir(programDir).filePath(named);

    if (programDir.isEmpty() || language.isEmpty())
        return QString();
    const QString beside = QDir(programDir).filePath(QStringLiteral("strings-%1.txt").arg(language));
    return QFileInfo::exists(beside) ? beside : QString();
}

void NorrixStrings::parseTable(const QString& text, const QString& sourceName, QHash<qint16, QString>& texts)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i)
    {
        const QString line = lines.at(i).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;

        qsizetype gap = 0;
        while (gap < line.size() && line.at(gap) != QLatin1Char('\t') && line.at(gap) != QLatin1Char(' '))
            ++gap;
        const QStringView number = QStringView(line).left(gap);
        const QString entry = line.mid(gap).trimmed();
        const int id = isDigits(number) && number.size() <= 5 ? number.toInt() : -1;
        if (id < 0 || id > 32767 || entry.isEmpty())
        {
            qCWarning(lcStringTable).noquote()
                << QStringLiteral("%1:%2: not \"<number><tab><text>\", line ignored").arg(sourceName).arg(i + 1);
            continue;
        }
        texts.insert(qint16(id), entry);
    }
}

void NorrixStrings::loadTable(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    {
        qCWarning(lcStringTable).noquote()
            << QStringLiteral("%1: text table not read: %2").arg(path, file.errorString());
        return;
    }
    parseTable(QString::fromUtf8(file.readAll()), path, m_texts);
}
