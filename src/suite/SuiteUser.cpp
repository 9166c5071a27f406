#include "suite/SuiteUser.h"

#include "suite/SuiteDatabase.h"
#include "suite/SuiteText.h"

#include <QSqlQuery>

QString SuiteUser::currentName()
{
    for (const char* variable : {"USER", "USERNAME"})
    {
        const QString name = qEnvironmentVariable(variable).trimmed();
        if (!name.isEmpty())
            return name;
    }
    return QStringLiteral("unknown");
}

SuiteUser SuiteUser::defaults(const SuiteSettings& settings, const QString& name)
{
    SuiteUser user;
    user.name = name;
    user.rights = settings.defaultRightList();
    user.autoLogoutMinutes = settings.defaultAutoLogoutMinutes;
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
