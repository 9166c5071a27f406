#include "suite/NorrixCalcEngine.h"

#include "platform/Clock.h"
#include "platform/RuntimeError.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSetup.h"
#include "suite/SuiteText.h"
#include "suite/SuiteTransaction.h"

namespace
{
const QString kSource = QStringLiteral("NorrixExCalcLib.NorrixExCalc");
constexpr qint32 kInvalidProcedureCall = 5;

QString rightText(qint32 right)
{
    switch (right)
    {
    case CalcEngine::RightRunReports:
        return QStringLiteral("right %1 (run QC reports)").arg(right);
    case CalcEngine::RightEditReports:
        return QStringLiteral("right %1 (edit QC report definitions)").arg(right);
    default:
        return QStringLiteral("right %1").arg(right);
    }
}
} // namespace

NorrixCalcEngine::NorrixCalcEngine()
    : NorrixCalcEngine(SuiteSettings::fromRegistry())
{}

NorrixCalcEngine::NorrixCalcEngine(SuiteSettings settings)
    : m_db(std::move(settings))
{}

const SuiteUser& NorrixCalcEngine::user()
{
    if (!m_user)
    {
        try
        {
            m_user = SuiteUser::signedIn(m_db);
        }
        catch (const RuntimeError& error)
        {
            m_userFailure = error;
            // The login the settings name on a server; the system user on a file.
            const QString name =
                m_db.isPostgres() && !m_db.settings().user.isEmpty() ? m_db.settings().user : SuiteUser::currentName();
            m_user = SuiteUser::defaults(m_db.settings(), name);
        }
    }
    return *m_user;
}

bool NorrixCalcEngine::unanswered() const
{
    return m_userFailure && m_userFailure->number() == SuiteDatabase::ErrorTimedOut;
}

qint32 NorrixCalcEngine::OpenApplication(qint32 applicationNumber)
{
    if (applicationNumber != ApplicationNumber)
        return OpenUnknownApplication;
    // Before the program's first start the embedded demo database does not
    // exist yet. The session brings it up, as the database tool would, so that
    // the start check and the user's rights find it on a fresh machine too.
    try
    {
        SuiteSetup::createMissingDemo(m_db.settings());
    }
    catch (const RuntimeError&)
    {
        // The start check reports why the database cannot be had.
    }
    // The user is read first: a database that cannot be read, or does not
    // answer (another program holds it locked), is then not waited for again,
    // neither for the log nor by the start's later questions.
    user();
    if (!m_userFailure)
        log(AuditSessionOpened, applicationNumber, QVariant(), QVariant(), QVariant());
    return 0;
}

bool NorrixCalcEngine::HasRight(qint32 right)
{
    if (!user().hasRight(right))
        return false;
    if (right == RightEditReports && !unanswered())
    {
        try
        {
            return !m_db.isReadOnly();
        }
        catch (const RuntimeError&)
        {
            // An unreachable database is the start check's to report.
        }
    }
    return true;
}

QString NorrixCalcEngine::ReadOnlyReason()
{
    // Only a right the user holds is withheld.
    if (!user().hasRight(RightEditReports))
        return QString();
    try
    {
        if (!unanswered() && m_db.isReadOnly())
            return QStringLiteral("The QC database is read-only (%1). Reports can be chosen, previewed and printed, "
                                  "but report definitions cannot be changed until it can be written again.")
                .arg(m_db.settings().describe());
    }
    catch (const RuntimeError&)
    {
        // An unreachable database is the start check's to report.
    }
    return QString();
}

QString NorrixCalcEngine::MissingRightReason(qint32 right)
{
    const SuiteUser& current = user();
    if (current.hasRight(right))
        return QString();
    if (m_userFailure)
        return QStringLiteral("The rights of the user \"%1\" could not be read, and the site's \"Default Rights\" "
                              "(\"%2\") do not include %3. %4")
            .arg(current.name, m_db.settings().defaultRights, rightText(right), m_userFailure->description());
    if (current.listed && current.disabled)
        return QStringLiteral("The user \"%1\" is disabled in the QC database and does not have %2.")
            .arg(current.name, rightText(right));
    // On a server the rights are the login's privileges there, whether the
    // users table lists the login or not.
    if (m_db.isPostgres())
        return QStringLiteral("The login \"%1\" does not have %2: the database server does not grant it the "
                              "privileges for it.")
            .arg(current.name, rightText(right));
    if (current.listed)
        return QStringLiteral("The user \"%1\" does not have %2 in the QC database.")
            .arg(current.name, rightText(right));
    return QStringLiteral("The user \"%1\" is not listed in the QC database, and the site's \"Default Rights\" "
                          "(\"%2\") do not include %3.")
        .arg(current.name, m_db.settings().defaultRights, rightText(right));
}

qint32 NorrixCalcEngine::AutoLogoutMinutes()
{
    return user().autoLogoutMinutes;
}

qint32 NorrixCalcEngine::StartCheck()
{
    m_reason.clear();
    if (unanswered())
    {
        m_reason = m_userFailure->description();
        return StartDatabaseUnreachable;
    }
    int version = 0;
    SuiteUser current;
    try
    {
        version = SuiteSchema::version(m_db);
        if (version == SuiteSchema::CurrentVersion)
            current = SuiteUser::signedIn(m_db);
    }
    catch (const RuntimeError& error)
    {
        m_reason = SuiteDatabase::fullText(error);
        return StartDatabaseUnreachable;
    }
    if (version == 0)
    {
        m_reason = QStringLiteral("The QC database holds none of the suite's tables (%1). Run \"NorrixDBQuery auto\" "
                                  "to create them.")
                       .arg(m_db.settings().describe());
        return StartSchemaOutdated;
    }
    if (version < SuiteSchema::CurrentVersion)
    {
        m_reason = QStringLiteral("The QC database has schema version %1; this program needs version %2. "
                                  "Run \"NorrixDBQuery auto\" to bring it up to date.")
                       .arg(version)
                       .arg(SuiteSchema::CurrentVersion);
        return StartSchemaOutdated;
    }
    if (version > SuiteSchema::CurrentVersion)
    {
        m_reason = QStringLiteral("The QC database has schema version %1, newer than this program knows (%2).")
                       .arg(version)
                       .arg(SuiteSchema::CurrentVersion);
        return StartSchemaNewer;
    }
    if (current.disabled)
    {
        m_reason = QStringLiteral("The user \"%1\" is disabled in the QC database.").arg(current.name);
        return StartUserDisabled;
    }
    return StartAllowed;
}

QString NorrixCalcEngine::StartCheckReason()
{
    return m_reason;
}

void NorrixCalcEngine::PatientNotify(qint32 eventCode, qint32 applicationNumber, qint32 reserved,
                                     const QString& patientId)
{
    Q_UNUSED(reserved);
    if (eventCode != EventPatientTaken && eventCode != EventPatientReleased)
        throw RuntimeError(kInvalidProcedureCall, kSource,
                           QStringLiteral("The patient notification %1 is unknown.").arg(eventCode));
    log(eventCode == EventPatientTaken ? AuditPatientTaken : AuditPatientReleased, applicationNumber, eventCode,
        patientId, QVariant());
}

void NorrixCalcEngine::CloseApplication(qint32 applicationNumber, bool autoLogout)
{
    if (m_userFailure)
        return;
    log(AuditSessionClosed, applicationNumber, QVariant(), QVariant(), qint32(autoLogout));
}

void NorrixCalcEngine::log(const QString& kind, qint32 application, const QVariant& eventCode,
                           const QVariant& patientId, const QVariant& autoLogout)
{
    try
    {
        // A read-only database takes no entry; there is nothing to try.
        if (m_db.isReadOnly())
            return;
        m_db.runWhole([&] {
            SuiteTransaction transaction(m_db);
            m_db.exec(
                QStringLiteral("INSERT INTO audit_log (logged_at, user_name, application, event_kind, "
                               "event_code, patient_id_num, auto_logout) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                {SuiteText::timestamp(Clock::now()), user().name, application, kind, eventCode, patientId, autoLogout});
            transaction.commit();
        });
    }
    catch (const RuntimeError& error)
    {
        qWarning("The audit log entry \"%s\" was left out: %s %s", qPrintable(kind), qPrintable(error.description()),
                 qPrintable(error.detail()));
    }
}
