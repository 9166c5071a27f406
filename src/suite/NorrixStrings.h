#pragma once

#include "platform/StringServer.h"

#include <QHash>
#include <QString>

// The suite's string server: every message and run-time caption of the program
// by its number. The English table is built in (strings/strings-en.txt); a
// translation or a site's own wording overrides it entry by entry from a file
// of the same format. The tables are read once, when the object is made; a
// lookup is one hash lookup.
class NorrixStrings final : public StringServer
{
public:
    // The built-in table, overridden by the file that overrideFile() finds
    // beside the program for the language of the system locale.
    NorrixStrings();
    // The built-in table, overridden by the file at overridePath (nothing is
    // overridden when the path is empty or the file cannot be read).
    explicit NorrixStrings(const QString& overridePath);

    // The text of number id, "" for a number no table knows.
    QString GetText(qint16 id) override;

    // The file that overrides the built-in table: the one the registry value
    // "Strings File" names (a relative name is taken from programDir), else
    // strings-<language>.txt in programDir when it exists; "" when there is none.
    // An empty programDir means the program's folder is unknown.
    static QString overrideFile(const QString& programDir, const QString& language);

    // Adds the entries of a table's text to texts, later lines winning over
    // earlier ones. Comment lines ("#") and blank lines are skipped; any other
    // line that is not "<number><tab or blanks><text>" is ignored with a warning
    // naming sourceName and the line number.
    static void parseTable(const QString& text, const QString& sourceName, QHash<qint16, QString>& texts);

    static inline const QString BuiltInTable = QStringLiteral(":/suite/strings/strings-en.txt");
    static inline const QString RegistryValueName = QStringLiteral("Strings File");

private:
    void loadTable(const QString& path);

    QHash<qint16, QString> m_texts;
};
