#include "suite/QueryRecordset.h"

#include <QDate>
#include <QSqlQuery>

RecordsetPtr QueryRecordset::read(QSqlQuery& query, const QList<Field>& fields)
{
    return make(fields, rows(query, fields));
}

RecordsetPtr QueryRecordset::make(const QList<Field>& fields, std::vector<QVariantList> rows)
{
    QStringList names;
    for (const Field& field : fields)
        names.append(field.name);
    return std::make_shared<Recordset>(names, std::move(rows));
}

std::vector<QVariantList> QueryRecordset::rows(QSqlQuery& query, const QList<Field>& fields)
{
    std::vector<QVariantList> rows;
    while (query.next())
    {
        QVariantList row;
        row.reserve(fields.size());
        for (qsizetype i = 0; i < fields.size(); ++i)
            row.append(convert(query.value(int(i)), fields.at(i).kind));
        rows.push_back(std::move(row));
    }
    return rows;
}

QVariant QueryRecordset::convert(const QVariant& value, Kind kind)
{
    if (value.isNull())
        return QVariant();
    switch (kind)
    {
    case Kind::Text:
        return value.toString();
    case Kind::Integer:
        return QVariant(qint32(value.toLongLong()));
    case Kind::Double:
        return QVariant(value.toDouble());
    case Kind::Boolean:
        return QVariant(value.toLongLong() != 0);
    case Kind::Date:
        if (value.typeId() == QMetaType::QDate)
            return value;
        if (value.typeId() == QMetaType::QDateTime)
            return QVariant(value.toDateTime().date());
        return QVariant(QDate::fromString(value.toString().left(10), Qt::ISODate));
    }
    return value;
}
