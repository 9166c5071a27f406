#include "suite/NorrixPatientQuery.h"

#include "suite/QueryRecordset.h"
#include "suite/SuiteText.h"

#include <QSqlQuery>

#include <algorithm>

namespace
{
using Field = QueryRecordset::Field;
using Kind = QueryRecordset::Kind;

const QList<Field>& patientFields()
{
    static const QList<Field> fields{{QStringLiteral("PatientIDNum"), Kind::Text},
                                     {QStringLiteral("PatientLastName"), Kind::Text},
                                     {QStringLiteral("PatientFirstName"), Kind::Text},
                                     {QStringLiteral("PatientMidName"), Kind::Text},
                                     {QStringLiteral("Birthday"), Kind::Date}};
    return fields;
}

// The fields read from the database: the patient's, then the row's key, which
// orders patients whose names and IDs compare equal as the table holds them.
const QList<Field>& queriedFields()
{
    static const QList<Field> fields = patientFields() + QList<Field>{{QStringLiteral("patient_id"), Kind::Integer}};
    return fields;
}

// A prefix match on a key column. The range of keys that start with the
// pattern's literal prefix is what the column's index serves (the keys compare
// by code point: SQLite's BINARY collation, "C" on PostgreSQL); the LIKE keeps
// the match exactly what the pattern says.
void addPrefixCondition(NorrixPatientQuery::Statement& statement, const QString& keyColumn, const QString& pattern)
{
    if (!statement.sql.isEmpty())
        statement.sql += QStringLiteral(" AND ");
    const QString prefix = SuiteText::likeLiteralPrefix(pattern);
    if (!prefix.isEmpty())
    {
        statement.sql += keyColumn + QStringLiteral(" >= ? AND ");
        statement.params.append(prefix);
        const QString successor = SuiteText::prefixSuccessor(prefix);
        if (!successor.isNull())
        {
            statement.sql += keyColumn + QStringLiteral(" < ? AND ");
            statement.params.append(successor);
        }
    }
    statement.sql += keyColumn + QStringLiteral(" LIKE ? ESCAPE '") + SuiteText::LikeEscape + u'\'';
    statement.params.append(pattern);
}

QString patternOf(const QString& text)
{
    return SuiteText::likePrefix(SuiteText::searchKey(text.trimmed()));
}

NorrixPatientQuery::Statement selectWhere(NorrixPatientQuery::Statement conditions)
{
    conditions.sql = QStringLiteral("SELECT id_num, last_name, first_name, mid_name, birthday, patient_id "
                                    "FROM patients WHERE ") +
                     conditions.sql;
    return conditions;
}
} // namespace

NorrixPatientQuery::NorrixPatientQuery()
    : NorrixPatientQuery(SuiteSettings::fromRegistry())
{}

NorrixPatientQuery::NorrixPatientQuery(SuiteSettings settings)
    : m_db(std::move(settings))
{}

NorrixPatientQuery::Statement NorrixPatientQuery::idSearch(const QString& idNum)
{
    Statement conditions;
    addPrefixCondition(conditions, QStringLiteral("id_key"), patternOf(idNum));
    return selectWhere(std::move(conditions));
}

NorrixPatientQuery::Statement NorrixPatientQuery::nameSearch(const QString& lastName, const QString& firstName,
                                                             const QString& midName)
{
    Statement conditions;
    addPrefixCondition(conditions, QStringLiteral("last_key"), patternOf(lastName));
    if (!firstName.trimmed().isEmpty())
        addPrefixCondition(conditions, QStringLiteral("first_key"), patternOf(firstName));
    if (!midName.trimmed().isEmpty())
        addPrefixCondition(conditions, QStringLiteral("mid_key"), patternOf(midName));
    return selectWhere(std::move(conditions));
}

RecordsetPtr NorrixPatientQuery::FindByIdNum(const QString& idNum)
{
    if (idNum.trimmed().isEmpty())
        return QueryRecordset::make(patientFields(), {});
    return find(idSearch(idNum));
}

RecordsetPtr NorrixPatientQuery::FindByName(const QString& lastName, const QString& firstName, const QString& midName)
{
    if (lastName.trimmed().isEmpty())
        return QueryRecordset::make(patientFields(), {});
    return find(nameSearch(lastName, firstName, midName));
}

RecordsetPtr NorrixPatientQuery::find(const Statement& statement)
{
    QSqlQuery query = m_db.exec(statement.sql, statement.params);
    std::vector<QVariantList> rows = QueryRecordset::rows(query, queriedFields());
    const qsizetype keyColumn = patientFields().size();
    std::sort(rows.begin(), rows.end(), [keyColumn](const QVariantList& a, const QVariantList& b) {
        for (const int column : {1, 2, 3, 0})
        {
            const int order = QString::compare(a.at(column).toString(), b.at(column).toString(), Qt::CaseInsensitive);
            if (order != 0)
                return order < 0;
        }
        return a.at(keyColumn).toInt() < b.at(keyColumn).toInt();
    });
    for (QVariantList& row : rows)
        row.removeLast();
    return QueryRecordset::make(patientFields(), std::move(rows));
}
