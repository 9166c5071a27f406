#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "components/CalcEngine.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/StringServer.h"
#include "suite/NorrixCalcEngine.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"
#include "suite/NorrixStrings.h"
#include "suite/SuiteComponents.h"

#include <QTest>

class TestSuiteComponents : public QObject
{
    Q_OBJECT

private:
    template <class Interface, class Implementation> static void checkCreated()
    {
        std::unique_ptr<Interface> component = ComponentFactory::create<Interface>(Interface::ClassId);
        QVERIFY(component);
        QVERIFY(dynamic_cast<Implementation*>(component.get()));
    }

private slots:
    void cleanup()
    {
        for (const QString& id :
             {QCReportStore::ClassId, CalcEngine::ClassId, PatientQuery::ClassId, StringServer::ClassId})
            ComponentFactory::unregisterClass(id);
    }

    void registersEveryComponentByItsClassIdentity()
    {
        SuiteTestDatabase test;
        test.createSchema();
        QVERIFY(!ComponentFactory::isRegistered(QCReportStore::ClassId));
        RegisterSuiteComponents();
        checkCreated<QCReportStore, NorrixReportStore>();
        checkCreated<CalcEngine, NorrixCalcEngine>();
        checkCreated<PatientQuery, NorrixPatientQuery>();
        checkCreated<StringServer, NorrixStrings>();
    }

    void createdComponentsUseTheDatabaseOfTheSettings()
    {
        SuiteTestDatabase test;
        test.createSchema();
        RegisterSuiteComponents();
        auto store = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId);
        QCOMPARE(store->ListTables(0)->RecordCount(), 4);
        auto engine = ComponentFactory::create<CalcEngine>(CalcEngine::ClassId);
        QCOMPARE(engine->StartCheck(), 0);
    }
};

CALVEX_TEST(TestSuiteComponents)
#include "TestSuiteComponents.moc"
