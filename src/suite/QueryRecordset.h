#pragma once

#include "platform/Recordset.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <vector>

class QSqlQuery;

// Turns the rows of a query into a Recordset with the field names and value
// types the program reads, whatever the database returned: SQLite hands back
// dates as text and PostgreSQL counts as 64-bit numbers, the record set
// carries QDate, qint32, double, bool and QString. A database null stays a
// null QVariant.
class QueryRecordset
{
public:
    enum class Kind
    {
        Text,
        Integer,
        Double,
        Date,
        Boolean
    };

    struct Field
    {
        QString name;
        Kind kind;
    };

    // Column i of the query becomes field i.
    static RecordsetPtr read(QSqlQuery& query, const QList<Field>& fields);
    // The converted rows alone, for callers that reorder or extend them first.
    static std::vector<QVariantList> rows(QSqlQuery& query, const QList<Field>& fields);
    static RecordsetPtr make(const QList<Field>& fields, std::vector<QVariantList> rows);
    static QVariant convert(const QVariant& value, Kind kind);
};
