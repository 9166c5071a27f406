#include "MainWindowFixture.h"

#include "common/TestMain.h"

class TestShutdown : public QObject
{
    Q_OBJECT

    static void chooseSubject(ProgramState& state, const QString& id)
    {
        state.strCurrentPatientID = id;
        SetCurrentPatient(state);
    }

private slots:
    void cancelReleasesTheSubjectClosesTheSessionAndEnds()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.window->show();
        chooseSubject(f.state, QStringLiteral("QC-1"));
        f.engine->calls.clear();
        f.window->cmdCancel->click();
        QCOMPARE(f.engine->calls,
                 QStringList({QStringLiteral("PatientNotify 10 6 0 QC-1"), QStringLiteral("CloseApplication 6 false"),
                              QStringLiteral("released")}));
        QVERIFY(!f.state.objCalc);
        QVERIFY(f.state.exitRequested);
        QVERIFY(f.window->IsUnloaded());
        QVERIFY(!f.window->isVisible());
    }

    void closeBoxShutsDownWithoutAutoLogout()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
        f.engine->calls.clear();
        f.window->close();
        QCOMPARE(f.engine->calls,
                 QStringList({QStringLiteral("CloseApplication 6 false"), QStringLiteral("released")}));
        QVERIFY(f.window->IsUnloaded());
    }

    void autoLogoutTellsTheEngine()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        chooseSubject(f.state, QStringLiteral("QC-9"));
        f.engine->calls.clear();
        f.window->m_blnAutoLogout = true;
        f.window->Unload();
        QCOMPARE(f.engine->calls, QStringList({QStringLiteral("PatientNotify 10 6 0 QC-9"),
                                               QStringLiteral("CloseApplication 6 true"), QStringLiteral("released")}));
        // Closing by the auto-logout is no Cancel: the program ends because its last window closed.
        QVERIFY(!f.state.exitRequested);
    }

    void startUpClearsAnEarlierAutoLogoutFlag()
    {
        MainWindowFixture f;
        f.window->m_blnAutoLogout = true;
        f.window->Form_Load();
        f.engine->calls.clear();
        f.window->Unload();
        QCOMPARE(f.engine->calls.first(), QStringLiteral("CloseApplication 6 false"));
    }

    void shutdownRunsOnceWhateverCloses()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        f.window->show();
        f.engine->calls.clear();
        f.window->Unload();
        f.window->close();
        f.window->Unload();
        QCOMPARE(f.engine->calls,
                 QStringList({QStringLiteral("CloseApplication 6 false"), QStringLiteral("released")}));
    }

    void engineErrorAtShutdownStillClosesTheSession()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        chooseSubject(f.state, QStringLiteral("QC-1"));
        f.engine->calls.clear();
        f.engine->failOn = QStringLiteral("PatientNotify");
        f.window->Unload();
        QCOMPARE(f.engine->calls,
                 QStringList({QStringLiteral("PatientNotify 10 6 0 QC-1"), QStringLiteral("CloseApplication 6 false"),
                              QStringLiteral("released")}));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().style, 16);
    }
};

CALVEX_TEST(TestShutdown)
#include "TestShutdown.moc"
