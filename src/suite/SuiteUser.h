#pragma once

#include <QList>
#include <QString>

class SuiteDatabase;
struct SuiteSettings;

// The signed-in user as the suite sees them.
//
// Who signs in depends on the database:
// - SQLite, one workstation's file: the operating system's user name.
// - PostgreSQL, a laboratory's server: the server's login of the connection
//   (session_user), which the server authenticated; the USER variable, which
//   anyone can set, counts for nothing there.
// The name is looked up (without regard to case) in the users table for the
// disabled flag and the auto-logout limit; a user the table does not list
// gets the site's "Default Auto Logout Minutes".
//
// The rights:
// - SQLite: the user's rows of user_rights; the site's "Default Rights" for a
//   user the table does not list.
// - PostgreSQL: what the server lets the login do, so that the program never
//   offers what the server refuses: right 500 when the login may read the
//   tables a report reads, right 501 when it may also add and delete report
//   definitions and their rows. The lab grants them (README).
struct SuiteUser
{
    QString name;
    bool listed = false;
    bool disabled = false;
    QList<qint32> rights;
    qint32 autoLogoutMinutes = 0;

    bool hasRight(qint32 right) const { return rights.contains(right); }

    // USER, else USERNAME, else (on Unix) the name of the account the process
    // runs as, else "unknown": the operating system's user.
    static QString currentName();
    // The name the database knows the user by: the server's login on
    // PostgreSQL, the operating system's user on SQLite.
    static QString signedInName(SuiteDatabase& db);
    // The site's defaults for name.
    static SuiteUser defaults(const SuiteSettings& settings, const QString& name);
    // The signed-in user with their rights, as above. Raises RuntimeError when
    // the database cannot be read.
    static SuiteUser signedIn(SuiteDatabase& db);
    // The users table's entry of name with its stored rights (the site's
    // defaults when it has none). Raises RuntimeError when the database
    // cannot be read.
    static SuiteUser load(SuiteDatabase& db, const QString& name);

private:
    // The rights the server grants the connection's login.
    static QList<qint32> serverRights(SuiteDatabase& db);
};
