#include "suite/SuiteUser.h"

#include "components/CalcEngine.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteText.h"

#include <QSqlQuery>

#ifdef Q_OS_UNIX
#include <pwd.h>
#include <unistd.h>
#endif

QString SuiteUser::currentName()
{
    for (const char* variable : {"USER", "USERNAME"})
    {
        const QString name = qEnvironmentVariable(variable).trimmed();
        if (!name.isEmpty())
            return name;
    }
#ifdef Q_OS_UNIX
    // A service or a scheduled job may run without the variables: the
    // account the process runs as is the user then.
    if (const passwd* account = getpwuid(geteuid()); account && account->pw_name && *account->pw_name)
        return QString::fromLocal8Bit(account->pw_name);
#endif
    return QStringLiteral("unknown");
}

QString SuiteUser::signedInName(SuiteDatabase& db)
{
    return db.isPostgres() ? db.sessionUser() : currentName();
}

SuiteUser SuiteUser::defaults(const SuiteSettings& settings, const QString& name)
{
    SuiteUser user;
    user.name = name;
    user.rights = settings.defaultRightList();
    user.autoLogoutMinutes = settings.defaultAutoLogoutMinutes;
    return user;
}

SuiteUser SuiteUser::signedIn(SuiteDatabase& db)
{
    SuiteUser user = load(db, signedInName(db));
    if (db.isPostgres())
        user.rights = serverRights(db);
    return user;
}

SuiteUser SuiteUser::load(SuiteDatabase& db, const QString& name)
{
    QSqlQuery row = db.exec(QStringLiteral("SELECT user_name, disabled, auto_logout_minutes FROM users "
                                           "WHERE user_key = ?"),
                            {SuiteText::searchKey(name)});
    if (!row.next())
        return defaults(db.settings(), name);

    SuiteUser user;
    user.name = row.value(0).toString();
    user.listed = true;
    user.disabled = row.value(1).toInt() != 0;
    user.autoLogoutMinutes = row.value(2).toInt();
    QSqlQuery rights = db.exec(QStringLiteral("SELECT right_number FROM user_rights WHERE user_name = ? "
                                              "ORDER BY right_number"),
                               {user.name});
    while (rights.next())
        user.rights.append(rights.value(0).toInt());
    return user;
}

QList<qint32> SuiteUser::serverRights(SuiteDatabase& db)
{
    // The privileges of the connection's role on the tables as the server
    // checks them for every statement.
    QSqlQuery query = db.exec(QStringLiteral(
        "SELECT has_table_privilege('patients', 'SELECT') AND has_table_privilege('visits', 'SELECT') "
        "AND has_table_privilege('results', 'SELECT') AND has_table_privilege('test_tables', 'SELECT') "
        "AND has_table_privilege('variables', 'SELECT') AND has_table_privilege('qc_reports', 'SELECT') "
        "AND has_table_privilege('qc_report_params', 'SELECT'), "
        "has_table_privilege('qc_reports', 'INSERT') AND has_table_privilege('qc_reports', 'DELETE') "
        "AND has_table_privilege('qc_report_params', 'INSERT') AND has_table_privilege('qc_report_params', 'DELETE')"));
    QList<qint32> rights;
    if (!query.next())
        return rights;
    if (query.value(0).toBool())
        rights.append(CalcEngine::RightRunReports);
    if (query.value(0).toBool() && query.value(1).toBool())
        rights.append(CalcEngine::RightEditReports);
    return rights;
}
