#pragma once

#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

// Every row of every table of the schema as text, in a fixed order: two
// dumps are equal exactly when the database holds the same rows.
inline QString DumpDatabase(SuiteDatabase& db)
{
    QString dump;
    for (const QString& table : SuiteSchema::tableNames())
    {
        if (!db.tableExists(table))
            continue;
        const QSqlRecord record = db.connection().record(table);
        QStringList columns;
        for (int c = 0; c < record.count(); ++c)
            columns.append(record.fieldName(c));
        dump += QStringLiteral("[%1] %2\n").arg(table, columns.join(u','));
        QSqlQuery rows =
            db.exec(QStringLiteral("SELECT * FROM ") + table + QStringLiteral(" ORDER BY ") + columns.join(u','));
        while (rows.next())
        {
            QStringList values;
            for (int c = 0; c < record.count(); ++c)
            {
                const QVariant value = rows.value(c);
                values.append(value.isNull()                        ? QStringLiteral("NULL")
                              : value.typeId() == QMetaType::Double ? QString::number(value.toDouble(), 'g', 17)
                                                                    : value.toString());
            }
            dump += values.join(u'|') + u'\n';
        }
    }
    return dump;
}
