#include "common/FakeCalcEngine.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "components/modCalcObject.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"

#include <QTest>

namespace
{
// A fresh program state whose rights and limit are not what an engine gives,
// so that every test sees the binding set them itself.
std::unique_ptr<ProgramState> freshState()
{
    auto state = std::make_unique<ProgramState>();
    state->blnCanRunReports = true;
    state->blnCanEditReports = true;
    state->lngLogoutSeconds = -1;
    return state;
}
} // namespace

class TestCalcObject : public QObject
{
    Q_OBJECT

    ScopedTestStrings* m_strings = nullptr;
    RecordingMessageService* m_boxes = nullptr;
    std::shared_ptr<FakeCalcEngine::Script> m_engine;
    ScopedComponentRegistration* m_registration = nullptr;
    std::unique_ptr<ProgramState> m_state;

private slots:
    void init()
    {
        m_state = freshState();
        m_strings = new ScopedTestStrings;
        m_boxes = new RecordingMessageService;
        m_engine = std::make_shared<FakeCalcEngine::Script>();
        m_registration = new ScopedComponentRegistration(CalcEngine::ClassId, FakeCalcEngine::creator(m_engine));
    }

    void cleanup()
    {
        m_state.reset();
        delete m_registration;
        delete m_boxes;
        delete m_strings;
    }

    void createsTheEngineAndReadsRightsAndLimit()
    {
        m_engine->logoutMinutes = 15;
        QVERIFY(CreateCalcObject(*m_state));
        QVERIFY(m_state->objCalc);
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("OpenApplication 6"), QStringLiteral("HasRight 500"),
                                               QStringLiteral("HasRight 501"), QStringLiteral("AutoLogoutMinutes")}));
        QVERIFY(m_state->blnCanRunReports);
        QVERIFY(m_state->blnCanEditReports);
        QCOMPARE(m_state->lngLogoutSeconds, 900);
        QCOMPARE(m_boxes->count(), 0);
    }

    void zeroMinutesSwitchTheAutoLogoutOff()
    {
        m_engine->logoutMinutes = 0;
        QVERIFY(CreateCalcObject(*m_state));
        QCOMPARE(m_state->lngLogoutSeconds, 0);
    }

    void refusedSessionShows4115()
    {
        m_engine->openStatus = 3;
        QVERIFY(!CreateCalcObject(*m_state));
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("OpenApplication 6")}));
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("T4115"));
        QCOMPARE(m_boxes->last().style, 64);
        QCOMPARE(m_boxes->last().title, QString());
        // The details say what the engine answered.
        QCOMPARE(m_boxes->last().detail,
                 QStringLiteral("The suite's engine answered 3 when application 6 opened its session."));
        QVERIFY(!m_state->blnCanRunReports);
        QVERIFY(!m_state->blnCanEditReports);
    }

    void missingRunRightShows4116AfterReadingTheRest()
    {
        m_engine->rights = {CalcEngine::RightEditReports};
        m_engine->logoutMinutes = 2;
        QVERIFY(!CreateCalcObject(*m_state));
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("OpenApplication 6"), QStringLiteral("HasRight 500"),
                                               QStringLiteral("MissingRightReason 500"), QStringLiteral("HasRight 501"),
                                               QStringLiteral("AutoLogoutMinutes")}));
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("T4116"));
        QCOMPARE(m_boxes->last().style, 64);
        // The engine's account of the missing right is the box's detail.
        QCOMPARE(m_boxes->last().detail, QStringLiteral("no right 500 in the test"));
        QVERIFY(!m_state->blnCanRunReports);
        QVERIFY(m_state->blnCanEditReports);
        QCOMPARE(m_state->lngLogoutSeconds, 120);
    }

    void withoutEditRightTheRunRightIsEnough()
    {
        m_engine->rights = {CalcEngine::RightRunReports};
        QVERIFY(CreateCalcObject(*m_state));
        QVERIFY(m_state->blnCanRunReports);
        QVERIFY(!m_state->blnCanEditReports);
    }

    void limitBeyondThirtyTwoBitsIsAnOverflow()
    {
        m_engine->logoutMinutes = 40000000; // 2.4e9 seconds
        QVERIFY(!CreateCalcObject(*m_state));
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("Overflow"));
        QCOMPARE(m_boxes->last().style, 16);
        QCOMPARE(m_boxes->last().detail, QStringLiteral("Run-time error 6 (modCalcObject)"));
    }

    void engineThatCannotBeCreatedIsReported()
    {
        ComponentFactory::unregisterClass(CalcEngine::ClassId);
        QVERIFY(!CreateCalcObject(*m_state));
        QVERIFY(!m_state->objCalc);
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().style, 16);
        QVERIFY(m_boxes->last().text.contains(CalcEngine::ClassId));
    }

    void engineErrorIsShownWithItsDescription()
    {
        m_engine->failOn = QStringLiteral("HasRight");
        QVERIFY(!CreateCalcObject(*m_state));
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
        QVERIFY(CreateCalcObject(*m_state));
        QString reason = QStringLiteral("left from before");
        QCOMPARE(EngineAllowsStart(*m_state, reason), allowed);
        QCOMPARE(m_boxes->count(), 0);
        // A refusal comes with the engine's reason; a start that may go on with none.
        QCOMPARE(reason, allowed ? QString() : QStringLiteral("refused by the test"));
    }

    void startCheckErrorIsShownAndRefusesTheStart()
    {
        QVERIFY(CreateCalcObject(*m_state));
        m_engine->failOn = QStringLiteral("StartCheck");
        QString reason;
        QVERIFY(!EngineAllowsStart(*m_state, reason));
        QCOMPARE(m_boxes->count(), 1);
        QCOMPARE(m_boxes->last().text, QStringLiteral("The engine failed in StartCheck"));
        QCOMPARE(m_boxes->last().style, 16);
        QCOMPARE(m_boxes->last().detail, QStringLiteral("Run-time error -2147418113 (FakeCalcEngine)"));
        QCOMPARE(reason, QStringLiteral("The engine failed in StartCheck"));
    }

    void firstSubjectIsOnlyTaken()
    {
        QVERIFY(CreateCalcObject(*m_state));
        m_engine->calls.clear();
        m_state->strCurrentPatientID = QStringLiteral("QC-1");
        SetCurrentPatient(*m_state);
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("PatientNotify 9 6 0 QC-1")}));
        QCOMPARE(m_state->strNotifiedPatientID, QStringLiteral("QC-1"));
    }

    void sameSubjectTwiceIsNotifiedOnce()
    {
        QVERIFY(CreateCalcObject(*m_state));
        m_engine->calls.clear();
        m_state->strCurrentPatientID = QStringLiteral("QC-1");
        SetCurrentPatient(*m_state);
        SetCurrentPatient(*m_state);
        QCOMPARE(m_engine->calls.size(), 1);
    }

    void otherSubjectReleasesTheOldOneFirst()
    {
        QVERIFY(CreateCalcObject(*m_state));
        m_state->strCurrentPatientID = QStringLiteral("QC-1");
        SetCurrentPatient(*m_state);
        m_engine->calls.clear();
        m_state->strCurrentPatientID = QStringLiteral("QC-2");
        SetCurrentPatient(*m_state);
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("PatientNotify 10 6 0 QC-1"),
                                               QStringLiteral("PatientNotify 9 6 0 QC-2")}));
        QCOMPARE(m_state->strNotifiedPatientID, QStringLiteral("QC-2"));
    }

    void noSubjectNotifiesNothing()
    {
        QVERIFY(CreateCalcObject(*m_state));
        m_engine->calls.clear();
        SetCurrentPatient(*m_state);
        ReleasePatient(*m_state);
        QVERIFY(m_engine->calls.isEmpty());
    }

    void shutdownReleasesTheSubjectThenClosesAndReleasesTheEngine()
    {
        QVERIFY(CreateCalcObject(*m_state));
        m_state->strCurrentPatientID = QStringLiteral("QC-7");
        SetCurrentPatient(*m_state);
        m_engine->calls.clear();
        ReleasePatient(*m_state);
        CloseApplication(*m_state, true);
        QCOMPARE(m_engine->calls, QStringList({QStringLiteral("PatientNotify 10 6 0 QC-7"),
                                               QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
        QVERIFY(!m_state->objCalc);
    }

    void shutdownWithoutEngineDoesNothing()
    {
        m_state->strCurrentPatientID = QStringLiteral("QC-7");
        ReleasePatient(*m_state);
        CloseApplication(*m_state, false);
        QVERIFY(m_engine->calls.isEmpty());
    }
};

CALVEX_TEST(TestCalcObject)
#include "TestCalcObject.moc"
