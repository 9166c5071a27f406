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
        if (state.objCalc->OpenApplication(CalcEngine::ApplicationNumber) != 0)
        {
            MsgBox(GetResourceText(4115), MsgStyle::Information);
            return false;
        }
        bool result = true;
        if (state.objCalc->HasRight(CalcEngine::RightRunReports))
            state.blnCanRunReports = true;
        else
        {
            MsgBox(GetResourceText(4116), MsgStyle::Information);
            result = false;
        }
        state.blnCanEditReports = state.objCalc->HasRight(CalcEngine::RightEditReports);
        state.lngLogoutSeconds = minutesToSeconds(state.objCalc->AutoLogoutMinutes());
        return result;
    }
    catch (const RuntimeError& error)
    {
        MsgBox(error.description(), MsgStyle::Critical);
        return false;
    }
}

bool EngineAllowsStart(ProgramState& state)
{
    try
    {
        return state.objCalc->StartCheck() == 0;
    }
    catch (const RuntimeError& error)
    {
        MsgBox(error.description(), MsgStyle::Critical);
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
