#pragma once

#include "platform/ComponentFactory.h"
#include "platform/Recordset.h"

#include <QString>

// The suite's patient query: finds patients by identification number or by
// name. Results have PatientIDNum, PatientLastName, PatientFirstName,
// PatientMidName and Birthday, ordered by last and first name.
class PatientQuery : public Component
{
public:
    static inline const QString ClassId = QStringLiteral("NorrixPatients.PatientQuery");

    virtual RecordsetPtr FindByIdNum(const QString& idNum) = 0;
    virtual RecordsetPtr FindByName(const QString& lastName, const QString& firstName, const QString& midName) = 0;
};
