#pragma once

#include "components/PatientQuery.h"
#include "suite/SuiteDatabase.h"

// The suite's patient query on its database. Both searches match the start
// of the stored text without regard to case; the search texts are trimmed,
// and an empty one finds nobody. Every character matches only itself ('%' and
// '_' included). Results are ordered by last, first and middle name, then by
// identification number.
class NorrixPatientQuery final : public PatientQuery
{
public:
    NorrixPatientQuery(); // the database of the registry settings
    explicit NorrixPatientQuery(SuiteSettings settings);

    RecordsetPtr FindByIdNum(const QString& idNum) override;
    // The last name must be given; first and middle name narrow the search when given.
    RecordsetPtr FindByName(const QString& lastName, const QString& firstName, const QString& midName) override;

private:
    RecordsetPtr find(const QString& where, const QVariantList& params);

    SuiteDatabase m_db;
};
