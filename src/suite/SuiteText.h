#pragma once

#include <QDateTime>
#include <QString>

// How the suite compares and reads texts, the same on every database.
class SuiteText
{
public:
    // The form names are compared in: case-folded, so that "o'brien" finds
    // "O'Brien" and "ÖBERG" finds "Öberg" on SQLite as on PostgreSQL. Stored
    // beside each searchable name.
    static QString searchKey(const QString& text);

    // A LIKE pattern (escape character '!') matching every key that starts
    // with key; '%', '_' and '!' in key match only themselves.
    static QString likePrefix(const QString& key);
    static inline const QString LikeEscape = QStringLiteral("!");

    // The text that every key matching a LIKE pattern (escape character '!')
    // starts with: the pattern's characters up to its first wildcard, with
    // the escapes taken out.
    static QString likeLiteralPrefix(const QString& pattern);

    // The least text that is greater, in the order of code points (the
    // binary order of UTF-8, which SQLite's BINARY and PostgreSQL's "C"
    // collations follow), than every text starting with prefix; a null
    // string when there is none (an empty prefix, or one of U+10FFFF only).
    // "key >= prefix AND key < successor" is the prefix match as a range an
    // index serves.
    static QString prefixSuccessor(const QString& prefix);

    // "name (2)", "name (3)" ...: name with the number, cut (never inside a
    // character) so that the whole keeps within maxLength characters.
    static QString numberedName(QString name, int number, qsizetype maxLength);

    // A moment as the suite stores it: "yyyy-MM-dd HH:mm:ss", local time.
    static QString timestamp(const QDateTime& moment);
};
