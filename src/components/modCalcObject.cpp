#include "components/modCalcObject.h"

#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/modResource.h"

#include <limits>

namespace
{
qint32 minutesToSeconds(qint32 minutes)
{
    const qint64 seconds = qint64(minutes) * 60;
    if (seconds > std::numeric_limits<qint32>::max() || seconds < std::numeric_limits<qint32>::min())
        throw RuntimeError(ErrorNumber::Overflow, QStringLiteral("modCalcObject"), QStringLiteral("Overflow"));
    return qint32(seconds);
}
} // namespace

bool CreateCalcObject(ProgramState& state)
{
    state.blnCanRunReports = false;
    state.blnCanEditReports = false;
    try
    {
        state.objCalc = ComponentFactory::create<CalcEngine>(CalcEngine::ClassId);
        const qint32 status = state.objCalc->OpenApplication(CalcEngine::ApplicationNumber);
        if (status != 0)
        {
            MsgBox(GetResourceText(4115), MsgStyle::Information, QString(),
                   QStringLiteral("The suite's engine answered %1 when application %2 opened its session.")
                       .arg(status)
                       .arg(CalcEngine::ApplicationNumber));
            return false;
        }
        bool result = true;
        if (state.objCalc->HasRight(CalcEngine::RightRunReports))
            state.blnCanRunReports = true;
        else
        {
            MsgBox(GetResourceText(4116), MsgStyle::Information, QString(),
                   state.objCalc->MissingRightReason(CalcEngine::RightRunReports));
            result = false;
        }
        state.blnCanEditReports = state.objCalc->HasRight(CalcEngine::RightEditReports);
        state.lngLogoutSeconds = minutesToSeconds(state.objCalc->AutoLogoutMinutes());
        return result;
    }
    catch (const RuntimeError& error)
    {
        MsgBox(error.description(), MsgStyle::Critical, QString(), RuntimeErrorDetail(error));
        return false;
    }
}

bool EngineAllowsStart(ProgramState& state, QString& reason)
{
    reason.clear();
    try
    {
        const qint32 status = state.objCalc->StartCheck();
        if (status == 0)
            return true;
        reason = state.objCalc->StartCheckReason();
        if (reason.isEmpty())
            reason = QStringLiteral("The suite's start check answered %1.").arg(status);
        return false;
    }
    catch (const RuntimeError& error)
    {
        reason = error.description();
        MsgBox(error.description(), MsgStyle::Critical, QString(), RuntimeErrorDetail(error));
        return false;
    }
}

void SetCurrentPatient(ProgramState& state)
{
    if (state.strCurrentPatientID.isEmpty() || state.strCurrentPatientID == state.strNotifiedPatientID)
        return;
    if (!state.strNotifiedPatientID.isEmpty())
        state.objCalc->PatientNotify(CalcEngine::EventPatientReleased, CalcEngine::ApplicationNumber, 0,
                                     state.strNotifiedPatientID);
    state.strNotifiedPatientID = state.strCurrentPatientID;
    state.objCalc->PatientNotify(CalcEngine::EventPatientTaken, CalcEngine::ApplicationNumber, 0,
                                 state.strNotifiedPatientID);
}

void ReleasePatient(ProgramState& state)
{
    if (state.objCalc && !state.strCurrentPatientID.isEmpty())
        state.objCalc->PatientNotify(CalcEngine::EventPatientReleased, CalcEngine::ApplicationNumber, 0,
                                     state.strCurrentPatientID);
}

void CloseApplication(ProgramState& state, bool autoLogout)
{
    if (!state.objCalc)
        return;
    state.objCalc->CloseApplication(CalcEngine::ApplicationNumber, autoLogout);
    state.objCalc.reset();
}
