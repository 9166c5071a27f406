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

    // A moment as the suite stores it: "yyyy-MM-dd HH:mm:ss", local time.
    static QString timestamp(const QDateTime& moment);
};
