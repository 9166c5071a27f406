#include "common/FakeCalcEngine.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "components/modCalcObject.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"

#include <QTest>

namespace
{
// The engine binding's program-wide values as a run starts.
void resetBinding()
{
    objCalc.reset();
    blnCanRunReports = true;
    blnCanEditReports = true;
    lngLogoutSeconds = -1;
    strNotifiedPatientID.clear();
    strCurrentPatientID.clear();
}
} // namespace

class TestCalcObject : public QObject
{
    Q_OBJECT

    ScopedTestStrings* m_strings = nullptr;
    RecordingMessageService* m_boxes = nullptr;
    std::shared_ptr<FakeCalcEngine::Script> m_engine;
    ScopedComponentRegistration* m_registration = nullptr;

private slots:
    void init()
    {
        resetBinding();
        m_strings = new ScopedTestStrings;
        m_boxes = new RecordingMessageService;
        m_engine = std::make_shared<FakeCalcEngine::Script>();
        m_registration = new ScopedComponentRegistration(CalcEngine::ClassId, FakeCalcEngine::creator(m_engine));
    }

    void cleanup()
    {
        resetBinding();
        delete m_registration;
        delete m_boxes;
        delete m_strings;
    }

    void createsTheEngineAndReadsRightsAndLimit()
    {
        m_engine->logoutMinutes = 15;
        QVERIFY(CreateCalcObject());
        QVERIFY(objCalc);
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("OpenApplication 6"), QStringLiteral("HasRight 500"),
                                               QStringLiteral("HasRight 501"), QStringLiteral("AutoLogoutMinutes")}));
        QVERIFY(blnCanRunReports);
        QVERIFY(blnCanEditReports);
        QCOMPARE(lngLogoutSeconds, 900);
        QCOMPARE(m_boxes->count(), 0);
    }

    void zeroMinutesSwitchTheAutoLogoutOff()
    {
        m_engine->logoutMinutes = 0;
        QVERIFY(CreateCalcObject());
        QCOMPARE(lngLogoutSeconds, 0);
    }

    void refusedSessionShows4115()
    {
        m_engine->openStatus = 3;
        QVERIFY(!CreateCalcObject());
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("OpenApplication 6")}));
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("T4115"));
        QCOMPARE(m_boxes->last().style, 64);
        QCOMPARE(m_boxes->last().title, QString());
        QVERIFY(!blnCanRunReports);
        QVERIFY(!blnCanEditReports);
    }

    void missingRunRightShows4116AfterReadingTheRest()
    {
        m_engine->rights = {CalcEngine::RightEditReports};
        m_engine->logoutMinutes = 2;
        QVERIFY(!CreateCalcObject());
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("OpenApplication 6"), QStringLiteral("HasRight 500"),
                                               QStringLiteral("HasRight 501"), QStringLiteral("AutoLogoutMinutes")}));
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("T4116"));
        QCOMPARE(m_boxes->last().style, 64);
        QVERIFY(!blnCanRunReports);
        QVERIFY(blnCanEditReports);
        QCOMPARE(lngLogoutSeconds, 120);
    }

    void withoutEditRightTheRunRightIsEnough()
    {
        m_engine->rights = {CalcEngine::RightRunReports};
        QVERIFY(CreateCalcObject());
        QVERIFY(blnCanRunReports);
        QVERIFY(!blnCanEditReports);
    }

    void limitBeyondThirtyTwoBitsIsAnOverflow()
    {
        m_engine->logoutMinutes = 40000000; // 2.4e9 seconds
        QVERIFY(!CreateCalcObject());
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("Overflow"));
        QCOMPARE(m_boxes->last().style, 16);
    }

    void engineThatCannotBeCreatedIsReported()
    {
        ComponentFactory::unregisterClass(CalcEngine::ClassId);
        QVERIFY(!CreateCalcObject());
        QVERIFY(!objCalc);
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().style, 16);
        QVERIFY(m_boxes->last().text.contains(CalcEngine::ClassId));
    }

    void engineErrorIsShownWithItsDescription()
    {
        m_engine->failOn = QStringLiteral("HasRight");
        QVERIFY(!CreateCalcObject());
        QCOMPARE(m_boxes->last().text, QStringLiteral("The engine failed in HasRight"));
        QCOMPARE(m_boxes->last().style, 16);
        QCOMPARE(m_boxes->last().title, QString());
    }

    void startIsAllowedOnlyForStatusZero_data()
    {
        QTest::addColumn<qint32>("status");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("0") << 0 << true;
        QTest::newRow("1") << 1 << false;
        QTest::newRow("-1") << -1 << false;
        QTest::newRow("4") << 4 << false;
    }

    void startIsAllowedOnlyForStatusZero()
    {
        QFETCH(qint32, status);
        QFETCH(bool, allowed);
        m_engine->startStatus = status;
        QVERIFY(CreateCalcObject());
        QCOMPARE(EngineAllowsStart(), allowed);
        QCOMPARE(m_boxes->count(), 0);
    }

    void startCheckErrorIsShownAndRefusesTheStart()
    {
        QVERIFY(CreateCalcObject());
        m_engine->failOn = QStringLiteral("StartCheck");
        QVERIFY(!EngineAllowsStart());
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("The engine failed in StartCheck"));
        QCOMPARE(m_boxes->last().style, 16);
    }

    void firstSubjectIsOnlyTaken()
    {
        QVERIFY(CreateCalcObject());
        m_engine->calls.clear();
        strCurrentPatientID = QStringLiteral("QC-1");
        SetCurrentPatient();
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("PatientNotify 9 6 0 QC-1")}));
        QCOMPARE(strNotifiedPatientID, QStringLiteral("QC-1"));
    }

    void sameSubjectTwiceIsNotifiedOnce()
    {
        QVERIFY(CreateCalcObject());
        m_engine->calls.clear();
        strCurrentPatientID = QStringLiteral("QC-1");
        SetCurrentPatient();
        SetCurrentPatient();
        QCOMPARE(m_engine->calls.size(), 1);
    }

    void otherSubjectReleasesTheOldOneFirst()
    {
        QVERIFY(CreateCalcObject());
        strCurrentPatientID = QStringLiteral("QC-1");
        SetCurrentPatient();
        m_engine->calls.clear();
        strCurrentPatientID = QStringLiteral("QC-2");
        SetCurrentPatient();
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("PatientNotify 10 6 0 QC-1"),
                                               QStringLiteral("PatientNotify 9 6 0 QC-2")}));
        QCOMPARE(strNotifiedPatientID, QStringLiteral("QC-2"));
    }

    void noSubjectNotifiesNothing()
    {
        QVERIFY(CreateCalcObject());
        m_engine->calls.clear();
        SetCurrentPatient();
        ReleasePatient();
        QVERIFY(m_engine->calls.isEmpty());
    }

    void shutdownReleasesTheSubjectThenClosesAndReleasesTheEngine()
    {
        QVERIFY(CreateCalcObject());
        strCurrentPatientID = QStringLiteral("QC-7");
        SetCurrentPatient();
        m_engine->calls.clear();
        ReleasePatient();
        CloseApplication(true);
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("PatientNotify 10 6 0 QC-7"),
                                               QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
        QVERIFY(!objCalc);
    }

    void shutdownWithoutEngineDoesNothing()
    {
        strCurrentPatientID = QStringLiteral("QC-7");
        ReleasePatient();
        CloseApplication(false);
        QVERIFY(m_engine->calls.isEmpty());
    }
};

CALVEX_TEST(TestCalcObject)
#include "TestCalcObject.moc"
