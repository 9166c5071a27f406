#include "components/modCalcObject.h"

#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/modResource.h"

#include <limits>

std::unique_ptr<CalcEngine> objCalc;
bool blnCanRunReports = false;
bool blnCanEditReports = false;
qint32 lngLogoutSeconds = 0;
QString strNotifiedPatientID;
QString strCurrentPatientID;

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

bool CreateCalcObject()
{
    blnCanRunReports = false;
    blnCanEditReports = false;
    try
    {
        objCalc = ComponentFactory::create<CalcEngine>(CalcEngine::ClassId);
        if (objCalc->OpenApplication(CalcEngine::ApplicationNumber) != 0)
        {
            MsgBox(GetResourceText(4115), MsgStyle::Information);
            return false;
        }
        bool result = true;
        if (objCalc->HasRight(CalcEngine::RightRunReports))
            blnCanRunReports = true;
        else
        {
            MsgBox(GetResourceText(4116), MsgStyle::Information);
            result = false;
        }
        blnCanEditReports = objCalc->HasRight(CalcEngine::RightEditReports);
        lngLogoutSeconds = minutesToSeconds(objCalc->AutoLogoutMinutes());
        return result;
    }
    catch (const RuntimeError& error)
    {
        MsgBox(error.description(), MsgStyle::Critical);
        return false;
    }
}

bool EngineAllowsStart()
{
    try
    {
        return objCalc->StartCheck() == 0;
    }
    catch (const RuntimeError& error)
    {
        MsgBox(error.description(), MsgStyle::Critical);
        return false;
    }
}

void SetCurrentPatient()
{
    if (strCurrentPatientID.isEmpty() || strCurrentPatientID == strNotifiedPatientID)
        return;
    if (!strNotifiedPatientID.isEmpty())
        objCalc->PatientNotify(CalcEngine::EventPatientReleased, CalcEngine::ApplicationNumber, 0,
                               strNotifiedPatientID);
    strNotifiedPatientID = strCurrentPatientID;
    objCalc->PatientNotify(CalcEngine::EventPatientTaken, CalcEngine::ApplicationNumber, 0, strNotifiedPatientID);
}

void ReleasePatient()
{
    if (objCalc && !strCurrentPatientID.isEmpty())
        objCalc->PatientNotify(CalcEngine::EventPatientReleased, CalcEngine::ApplicationNumber, 0, strCurrentPatientID);
}

void CloseApplication(bool autoLogout)
{
    if (!objCalc)
        return;
    objCalc->CloseApplication(CalcEngine::ApplicationNumber, autoLogout);
    objCalc.reset();
}
