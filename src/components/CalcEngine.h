#pragma once

#include "platform/ComponentFactory.h"

#include <QString>

// The suite's calculation engine: the application session, the user's rights
// and auto-logout limit, the start check and the subject notifications.
class CalcEngine : public Component
{
public:
    static inline const QString ClassId = QStringLiteral("NorrixExCalcLib.NorrixExCalc.1");

    static constexpr qint32 ApplicationNumber = 6;
    static constexpr qint32 RightRunReports = 500;
    static constexpr qint32 RightEditReports = 501;
    static constexpr qint32 EventPatientTaken = 9;
    static constexpr qint32 EventPatientReleased = 10;

    // 0 = the session is open.
    virtual qint32 OpenApplication(qint32 applicationNumber) = 0;
    virtual bool HasRight(qint32 right) = 0;
    // Why HasRight(right) is false, in one sentence for the user: who the
    // user is and where the rights were read from.
    virtual QString MissingRightReason(qint32 right) = 0;
    virtual qint32 AutoLogoutMinutes() = 0;
    // 0 = the program may start; otherwise StartCheckReason() says why not.
    virtual qint32 StartCheck() = 0;
    virtual QString StartCheckReason() = 0;
    // Why right 501, which the user holds, is withheld now: the database takes
    // no changes (a read-only file or server). For the user; empty when the
    // database takes them or the user does not hold the right.
    virtual QString ReadOnlyReason() = 0;
    virtual void PatientNotify(qint32 eventCode, qint32 applicationNumber, qint32 reserved,
                               const QString& patientId) = 0;
    virtual void CloseApplication(qint32 applicationNumber, bool autoLogout) = 0;
};
