#include "suite/SuiteComponents.h"

#include "suite/NorrixCalcEngine.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"
#include "suite/NorrixStrings.h"

void RegisterSuiteComponents()
{
    ComponentFactory::registerClass(QCReportStore::ClassId, [] { return std::make_unique<NorrixReportStore>(); });
    ComponentFactory::registerClass(CalcEngine::ClassId, [] { return std::make_unique<NorrixCalcEngine>(); });
    ComponentFactory::registerClass(PatientQuery::ClassId, [] { return std::make_unique<NorrixPatientQuery>(); });
    ComponentFactory::registerClass(StringServer::ClassId, [] { return std::make_unique<NorrixStrings>(); });
}
