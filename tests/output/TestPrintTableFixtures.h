#pragma once

#include "common/FakeReportStore.h"
#include "components/ReportInfo.h"
#include "output/TableData.h"
#include "output/modPrintTable.h"
#include "platform/Recordset.h"
#include "platform/ScopedComponentRegistration.h"

#include <QDate>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <vector>

// Report requests, visit data sets and built tables for the QC table tests.
namespace PrintTableFixtures
{
inline ReportVariable variable(const QString& tableName, const QString& varName, const QString& unit, qint32 decimals)
{
    ReportVariable v;
    v.TableName = tableName;
    v.VarName = varName;
    v.Unit = unit;
    v.DecimalPlaces = decimals;
    v.ShowInTable = true;
    return v;
}

inline ReportInfo reportInfo(QList<ReportVariable> variables)
{
    ReportInfo info;
    info.PatientName = QStringLiteral("Control, Quality");
    info.PatientID = QStringLiteral("QC-0001");
    info.FromDate = QStringLiteral("01/01/2024");
    info.ToDate = QStringLiteral("12/31/2024");
    info.Variables = std::move(variables);
    return info;
}

// The date of visit n (1-based): one visit a day from January 1, 2024.
inline QDate visitDate(int n)
{
    return QDate(2024, 1, 1).addDays(n - 1);
}

// A data set of `visits` rows: field 0 "VisitDate", then one field per name;
// value(n, f) gives visit n's value of value field f (0-based).
inline RecordsetPtr visitSet(const QStringList& valueFields, int visits, const std::function<QVariant(int, int)>& value)
{
    QStringList fields{QStringLiteral("VisitDate")};
    fields += valueFields;
    std::vector<QVariantList> rows;
    for (int n = 1; n <= visits; ++n)
    {
        QVariantList row{QVariant(visitDate(n))};
        for (int f = 0; f < valueFields.size(); ++f)
            row.append(value(n, f));
        rows.push_back(row);
    }
    return std::make_shared<Recordset>(fields, rows);
}

// The field names of a data set for info: one per variable, named by VarName.
inline QStringList fieldsOf(const ReportInfo& info)
{
    QStringList names;
    for (const ReportVariable& v : info.Variables)
        names.append(v.VarName);
    return names;
}

// BuildTableData over a scripted store that answers with data.
inline TableData buildTable(const ReportInfo& info, const RecordsetPtr& data, bool siUnits = false)
{
    auto script = std::make_shared<FakeReportStore::Script>();
    script->table = data;
    ScopedComponentRegistration registration(QCReportStore::ClassId, FakeReportStore::creator(script));
    TableData table;
    TablePageList unused;
    if (!BuildTableData(nullptr, info, table, unused, siUnits))
        qFatal("BuildTableData refused a data set");
    return table;
}
} // namespace PrintTableFixtures
