#pragma once

#include "components/CalcEngine.h"
#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteUser.h"

#include <optional>

// The suite's calculation engine on its database: the signed-in user's
// rights and auto-logout limit (SuiteUser: the users table, and on
// PostgreSQL the server's login and privileges), the start check, and an
// audit log of the session, of every subject taken and released and of the
// close.
//
// Rights and the logout limit are read once per engine. When the database
// cannot be read for them, the site's defaults stand in and the start check
// reports why the program may not start. A database that did not answer
// within the timeout while the session opened is not waited for again by the
// start's questions: the start check reports it at once.
//
// Right 501 is withheld while the database takes no changes (a read-only
// SQLite file, a standby server), asked afresh each time; ReadOnlyReason
// says why to a user who holds the right. An entry that cannot be written to the audit log (a read-only
// database, a login that may not write it, a database that does not answer)
// is left out with a warning on the standard error: it never stops what the
// user does.
class NorrixCalcEngine final : public CalcEngine
{
public:
    // Results of OpenApplication.
    static constexpr qint32 OpenUnknownApplication = 1;

    // Results of StartCheck (StartCheckReason says more).
    static constexpr qint32 StartAllowed = 0;
    static constexpr qint32 StartDatabaseUnreachable = 1;
    static constexpr qint32 StartSchemaOutdated = 2;
    static constexpr qint32 StartSchemaNewer = 3;
    static constexpr qint32 StartUserDisabled = 4;

    // Audit log entries (column event_kind).
    static inline const QString AuditSessionOpened = QStringLiteral("session opened");
    static inline const QString AuditPatientTaken = QStringLiteral("patient taken");
    static inline const QString AuditPatientReleased = QStringLiteral("patient released");
    static inline const QString AuditSessionClosed = QStringLiteral("session closed");

    NorrixCalcEngine(); // the database of the registry settings
    explicit NorrixCalcEngine(SuiteSettings settings);

    // 0 for this program's number (6); the session's start is logged when the
    // database can be reached (the start check reports it otherwise). An
    // embedded demo database that does not exist yet is created first.
    qint32 OpenApplication(qint32 applicationNumber) override;
    // The user's rights as stored, also for a disabled user (the start check refuses those).
    bool HasRight(qint32 right) override;
    // Names the user and whether the rights came from the users table or from
    // the site's "Default Rights" (and then why: not listed, or the database
    // could not be read); empty when the user has the right.
    QString MissingRightReason(qint32 right) override;
    qint32 AutoLogoutMinutes() override;
    qint32 StartCheck() override;
    QString StartCheckReason() override;
    QString ReadOnlyReason() override;
    // Event codes 9 (taken) and 10 (released); others raise RuntimeError 5.
    // An entry that cannot be written is left out (see above).
    void PatientNotify(qint32 eventCode, qint32 applicationNumber, qint32 reserved, const QString& patientId) override;
    // Logs the close; nothing when OpenApplication could not log the session's
    // start (a database that cannot be had, whose reason the start check has
    // given already: asking it again would only wait and fail once more).
    void CloseApplication(qint32 applicationNumber, bool autoLogout) override;

private:
    const SuiteUser& user();
    // The database did not answer within the timeout when the user was read:
    // it is not waited for again.
    bool unanswered() const;
    // Writes one entry of the audit log, or leaves it out (see above).
    void log(const QString& kind, qint32 application, const QVariant& eventCode, const QVariant& patientId,
             const QVariant& autoLogout);

    SuiteDatabase m_db;
    std::optional<SuiteUser> m_user;
    // Why the user could not be read, when the site's defaults stand in.
    std::optional<RuntimeError> m_userFailure;
    QString m_reason;
};
