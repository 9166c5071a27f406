#include "suite/SuiteDataLoader.h"

#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteText.h"
#include "suite/SuiteTransaction.h"

#include <QSqlQuery>

namespace
{
const QStringList kPatientColumns{QStringLiteral("id_num"),   QStringLiteral("id_key"),     QStringLiteral("last_name"),
                                  QStringLiteral("last_key"), QStringLiteral("first_name"), QStringLiteral("first_key"),
                                  QStringLiteral("mid_name"), QStringLiteral("mid_key"),    QStringLiteral("birthday")};

// An empty name is stored as null: "no middle name", not "a blank one".
QVariant nameOrNull(const QString& name)
{
    return name.isEmpty() ? QVariant() : QVariant(name);
}

QVariant keyOrNull(const QString& name)
{
    return name.isEmpty() ? QVariant() : QVariant(SuiteText::searchKey(name));
}
} // namespace

SuiteDataLoader::SuiteDataLoader(SuiteDatabase& db)
    : m_db(db)
{}

QVariantList SuiteDataLoader::patientRow(const Patient& patient)
{
    return {patient.idNum,
            SuiteText::searchKey(patient.idNum),
            patient.lastName,
            SuiteText::searchKey(patient.lastName),
            nameOrNull(patient.firstName),
            keyOrNull(patient.firstName),
            nameOrNull(patient.midName),
            keyOrNull(patient.midName),
            patient.birthday.isValid() ? QVariant(patient.birthday) : QVariant()};
}

qint32 SuiteDataLoader::addPatient(const Patient& patient)
{
    SuiteTransaction transaction(m_db);
    const qint32 key = m_db.scalar(QStringLiteral("INSERT INTO patients (") + kPatientColumns.join(u',') +
                                       QStringLiteral(") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING patient_id"),
                                   patientRow(patient))
                           .toInt();
    transaction.commit();
    return key;
}

void SuiteDataLoader::addPatients(const QList<Patient>& patients)
{
    std::vector<QVariantList> rows;
    rows.reserve(size_t(patients.size()));
    for (const Patient& patient : patients)
        rows.push_back(patientRow(patient));
    SuiteTransaction transaction(m_db);
    m_db.insertRows(QStringLiteral("patients"), kPatientColumns, rows);
    transaction.commit();
}

void SuiteDataLoader::addVisits(qint32 patientKey, const std::vector<Visit>& visits)
{
    SuiteTransaction transaction(m_db);
    QSqlQuery insertVisit = m_db.prepare(
        QStringLiteral("INSERT INTO visits (patient_id, visit_date, tab) VALUES (?, ?, ?) RETURNING visit_id"));
    std::vector<QVariantList> results;
    for (const Visit& visit : visits)
    {
        m_db.run(insertVisit, {patientKey, visit.date, qint32(visit.tab)});
        insertVisit.next();
        const qint32 visitId = insertVisit.value(0).toInt();
        insertVisit.finish();
        for (const Result& result : visit.results)
            results.push_back({visitId, result.tableId, result.varId, result.value});
    }
    m_db.insertRows(QStringLiteral("results"),
                    {QStringLiteral("visit_id"), QStringLiteral("table_id"), QStringLiteral("var_id"),
                     QStringLiteral("result_value")},
                    results);
    transaction.commit();
}

void SuiteDataLoader::addResults(const std::vector<VisitResult>& results)
{
    std::vector<QVariantList> rows;
    rows.reserve(results.size());
    for (const VisitResult& row : results)
        rows.push_back({row.visitId, row.result.tableId, row.result.varId, row.result.value});
    SuiteTransaction transaction(m_db);
    m_db.insertRows(QStringLiteral("results"),
                    {QStringLiteral("visit_id"), QStringLiteral("table_id"), QStringLiteral("var_id"),
                     QStringLiteral("result_value")},
                    rows);
    transaction.commit();
}

void SuiteDataLoader::replaceResults(const std::vector<VisitResult>& results)
{
    if (results.empty())
        return;
    SuiteTransaction transaction(m_db);
    QSqlQuery update = m_db.prepare(
        QStringLiteral("UPDATE results SET result_value = ? WHERE visit_id = ? AND table_id = ? AND var_id = ?"));
    for (const VisitResult& row : results)
        m_db.run(update, {row.result.value, row.visitId, row.result.tableId, row.result.varId});
    transaction.commit();
}

void SuiteDataLoader::addUser(const QString& name, const QString& fullName, const QList<qint32>& rights,
                              qint32 autoLogoutMinutes, bool disabled)
{
    SuiteTransaction transaction(m_db);
    m_db.exec(QStringLiteral("INSERT INTO users (user_name, user_key, full_name, auto_logout_minutes, disabled) "
                             "VALUES (?, ?, ?, ?, ?)"),
              {name, SuiteText::searchKey(name), fullName, autoLogoutMinutes, qint32(disabled)});
    std::vector<QVariantList> rows;
    for (const qint32 right : rights)
        rows.push_back({name, right});
    m_db.insertRows(QStringLiteral("user_rights"), {QStringLiteral("user_name"), QStringLiteral("right_number")}, rows);
    transaction.commit();
}

qint32 SuiteDataLoader::tableId(qint16 tab, const QString& name)
{
    return lookup(m_tableIds, QStringLiteral("SELECT table_id FROM test_tables WHERE tab = ? AND name = ?"), tab, name);
}

qint32 SuiteDataLoader::variableId(qint16 tab, const QString& name)
{
    return lookup(m_variableIds, QStringLiteral("SELECT var_id FROM variables WHERE tab = ? AND name = ?"), tab, name);
}

qint32 SuiteDataLoader::lookup(QHash<QString, qint32>& cache, const QString& sql, qint16 tab, const QString& name)
{
    const QString key = QString::number(tab) + u':' + name;
    const auto it = cache.constFind(key);
    if (it != cache.cend())
        return *it;
    const QVariant id = m_db.scalar(sql, {qint32(tab), name});
    if (id.isNull())
        throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                           QStringLiteral("The catalogue has no \"%1\" on tab %2.").arg(name).arg(tab));
    cache.insert(key, id.toInt());
    return id.toInt();
}
