#pragma once

#include <QDate>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <vector>

class SuiteDatabase;

// Writes patients, visits with their results and users straight into the
// suite's database, in bulk: the demo data and the
// benchmarks load their data sets through it. Each call is one transaction
// (or part of the caller's).
class SuiteDataLoader
{
public:
    struct Patient
    {
        QString idNum;
        QString lastName;
        QString firstName; // empty = none
        QString midName;   // empty = none
        QDate birthday;    // invalid = unknown
    };

    struct Result
    {
        qint32 tableId;
        qint32 varId;
        QVariant value; // in the conventional unit; null = no reading
    };

    // A reading of a visit that is stored already.
    struct VisitResult
    {
        qint32 visitId;
        Result result;
    };

    struct Visit
    {
        QDate date;
        qint16 tab; // 0 = PF, 1 = GX
        QList<Result> results;
    };

    explicit SuiteDataLoader(SuiteDatabase& db);

    // Returns the new patient's key (for addVisits).
    qint32 addPatient(const Patient& patient);
    void addPatients(const QList<Patient>& patients);
    void addVisits(qint32 patientKey, const std::vector<Visit>& visits);
    // Readings the stored visits do not have yet; new values for readings they have.
    void addResults(const std::vector<VisitResult>& results);
    void replaceResults(const std::vector<VisitResult>& results);
    void addUser(const QString& name, const QString& fullName, const QList<qint32>& rights, qint32 autoLogoutMinutes,
                 bool disabled);

    // Catalogue IDs by name; RuntimeError when the catalogue has no such entry.
    qint32 tableId(qint16 tab, const QString& name);
    qint32 variableId(qint16 tab, const QString& name);

private:
    static QVariantList patientRow(const Patient& patient);
    qint32 lookup(QHash<QString, qint32>& cache, const QString& sql, qint16 tab, const QString& name);

    SuiteDatabase& m_db;
    QHash<QString, qint32> m_tableIds;
    QHash<QString, qint32> m_variableIds;
};
