#pragma once

#include "components/PatientQuery.h"
#include "suite/SuiteDatabase.h"

// The suite's patient query on its database. Both searches match the start
// of the stored text without regard to case; the search texts are trimmed,
// and an empty one finds nobody. Every character matches only itself ('%' and
// '_' included). Results are ordered by last, first and middle name, then by
// identification number, then as the patients were stored.
//
// The searches are prefix ranges on the stored search keys, so that the
// keys' indexes find the patients without reading the others.
class NorrixPatientQuery final : public PatientQuery
{
public:
    NorrixPatientQuery(); // the database of the registry settings
    explicit NorrixPatientQuery(SuiteSettings settings);

    RecordsetPtr FindByIdNum(const QString& idNum) override;
    // The last name must be given; first and middle name narrow the search when given.
    RecordsetPtr FindByName(const QString& lastName, const QString& firstName, const QString& midName) override;

    // The statement each search runs, with its values (for a look at its plan).
    struct Statement
    {
        QString sql;
        QVariantList params;
    };
    static Statement idSearch(const QString& idNum);
    static Statement nameSearch(const QString& lastName, const QString& firstName, const QString& midName);

private:
    RecordsetPtr find(const Statement& statement);

    SuiteDatabase m_db;
};
