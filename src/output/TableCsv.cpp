#include "output/TableCsv.h"

#include "platform/CsvWriter.h"
#include "platform/VbConversions.h"

#include <QStringList>

QString TableCsvHeading(const TableColumn& column)
{
    QStringList parts;
    if (!column.TableName.isEmpty())
        parts.append(column.TableName);
    if (!column.Heading.isEmpty())
        parts.append(column.Heading);
    const QString unit = column.Unit.trimmed();
    if (!unit.isEmpty())
        parts.append(QLatin1Char('(') + unit + QLatin1Char(')'));
    return parts.join(QLatin1Char(' '));
}

QString TableCsvCell(const QVariant& value, const TableColumn& column)
{
    if (IsDate(value))
        return ToDate(value).toString(Qt::ISODate);
    if (IsNumeric(value))
    {
        // Zero readings stay empty, as the table and the charts leave them out.
        const double number = ToDouble(value);
        return number != 0 ? FormatPlainNumber(number, column.DecimalPlaces) : QString();
    }
    return TextOf(value);
}

QByteArray TableCsv(const TableData& table)
{
    if (!table.Data)
        return {};
    CsvWriter csv;
    QStringList fields;
    for (const TableColumn& column : table.Columns)
        fields.append(TableCsvHeading(column));
    csv.addRecord(fields);

    Recordset& data = *table.Data;
    if (data.RecordCount() == 0)
        return csv.text();
    QVariant bookmark;
    if (!data.IsBOF() && !data.IsEOF())
        bookmark = data.Bookmark();
    for (data.MoveFirst(); !data.IsEOF(); data.MoveNext())
    {
        fields.clear();
        for (qsizetype c = 0; c < table.Columns.size(); ++c)
            fields.append(TableCsvCell(data.Value(int(c)), table.Columns.at(c)));
        csv.addRecord(fields);
    }
    if (bookmark.isValid())
        data.SetBookmark(bookmark);
    return csv.text();
}
