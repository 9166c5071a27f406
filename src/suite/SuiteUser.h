#pragma once

#include <QList>
#include <QString>

class SuiteDatabase;
struct SuiteSettings;

// The signed-in user as the suite sees them: the operating system's user
// name, looked up (without regard to case) in the users table. A user the
// table does not list gets the site's "Default Rights" and
// "Default Auto Logout Minutes".
struct SuiteUser
{
    QString name;
    bool listed = false;
    bool disabled = false;
    QList<qint32> rights;
    qint32 autoLogoutMinutes = 0;

    bool hasRight(qint32 right) const { return rights.contains(right); }

    // USER, else USERNAME, else "unknown".
    static QString currentName();
    static SuiteUser defaults(const SuiteSettings& settings, const QString& name);
    // Raises RuntimeError when the database cannot be read.
    static SuiteUser load(SuiteDatabase& db, const QString& name);
};
