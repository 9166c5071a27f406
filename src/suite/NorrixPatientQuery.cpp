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

// "<column> LIKE ? ESCAPE '!'" for a prefix search on a key column.
QString prefixCondition(const QString& keyColumn)
{
    return keyColumn + QStringLiteral(" LIKE ? ESCAPE '") + SuiteText::LikeEscape + u'\'';
}

QString patternOf(const QString& text)
{
    return SuiteText::likePrefix(SuiteText::searchKey(text.trimmed()));
}
} // namespace

NorrixPatientQuery::NorrixPatientQuery()
    : NorrixPatientQuery(SuiteSettings::fromRegistry())
{}

NorrixPatientQuery::NorrixPatientQuery(SuiteSettings settings)
    : m_db(std::move(settings))
{}

RecordsetPtr NorrixPatientQuery::FindByIdNum(const QString& idNum)
{
    if (idNum.trimmed().isEmpty())
        return QueryRecordset::make(patientFields(), {});
    return find(prefixCondition(QStringLiteral("id_key")), {patternOf(idNum)});
}

RecordsetPtr NorrixPatientQuery::FindByName(const QString& lastName, const QString& firstName, const QString& midName)
{
    if (lastName.trimmed().isEmpty())
        return QueryRecordset::make(patientFields(), {});
    QString where = prefixCondition(QStringLiteral("last_key"));
    QVariantList params{patternOf(lastName)};
    if (!firstName.trimmed().isEmpty())
    {
        where += QStringLiteral(" AND ") + prefixCondition(QStringLiteral("first_key"));
        params.append(patternOf(firstName));
    }
    if (!midName.trimmed().isEmpty())
    {
        where += QStringLiteral(" AND ") + prefixCondition(QStringLiteral("mid_key"));
        params.append(patternOf(midName));
    }
    return find(where, params);
}

RecordsetPtr NorrixPatientQuery::find(const QString& where, const QVariantList& params)
{
    QSqlQuery query = m_db.exec(QStringLiteral("SELECT id_num, last_name, first_name, mid_name, birthday "
                                               "FROM patients WHERE ") +
                                    where,
                                params);
    std::vector<QVariantList> rows = QueryRecordset::rows(query, patientFields());
    std::stable_sort(rows.begin(), rows.end(), [](const QVariantList& a, const QVariantList& b) {
        for (const int column : {1, 2, 3, 0})
        {
            const int order = QString::compare(a.at(column).toString(), b.at(column).toString(), Qt::CaseInsensitive);
            if (order != 0)
                return order < 0;
        }
        return false;
    });
    return QueryRecordset::make(patientFields(), std::move(rows));
}
