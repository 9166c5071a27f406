#include "MainWindowFixture.h"

#include "app/ProgramExit.h"
#include "common/TestMain.h"

#include <QApplication>
#include <QWindow>

namespace
{
RecordsetPtr onlyFirstTabReports()
{
    auto rs = std::make_shared<Recordset>(
        QStringList{QStringLiteral("QCReportName"), QStringLiteral("QCReportType"), QStringLiteral("QCReportID")});
    rs->AppendRow({QStringLiteral("Spirometry QC"), 0, 1});
    return rs;
}
} // namespace

class TestStartupFailures : public QObject
{
    Q_OBJECT

    // The program ended with the status of a refused start: the window ran
    // its shutdown and no store was asked anything.
    static void verifyEndedBeforeTheLists(MainWindowFixture& f)
    {
        QVERIFY(f.state.exitRequested);
        QCOMPARE(f.state.exitCode, ExitStatus::StartFailed);
        QVERIFY(f.window->IsUnloaded());
        QVERIFY(f.store->calls.isEmpty());
        QVERIFY(f.window->Splash() == nullptr);
    }

private slots:
    // Every question to the engine may wait for the database: the splash is
    // on the screen before the first.
    void theSplashIsOnTheScreenBeforeTheEngineIsAsked()
    {
        MainWindowFixture f;
        QStringList seen;
        f.engine->onCall = [&f, &seen](const QString& call) {
            frmSplash* splash = f.window->Splash();
            const bool onScreen = splash && splash->isVisible() && splash->windowHandle() &&
                                  splash->windowHandle()->isExposed() && !splash->lblProductName->text().isEmpty();
            seen.append(call + (onScreen ? QStringLiteral(": splash shown") : QStringLiteral(": no splash")));
        };
        f.window->Form_Load();
        f.engine->onCall = nullptr;
        QCOMPARE(seen.mid(0, 5),
                 QStringList(
                     {QStringLiteral("OpenApplication 6: splash shown"), QStringLiteral("HasRight 500: splash shown"),
                      QStringLiteral("HasRight 501: splash shown"), QStringLiteral("AutoLogoutMinutes: splash shown"),
                      QStringLiteral("StartCheck: splash shown")}));
        QVERIFY(!f.state.exitRequested);
        QVERIFY(f.window->Splash() == nullptr);
    }

    void refusedStartTakesTheSplashAway()
    {
        MainWindowFixture f;
        f.engine->startStatus = 4;
        bool splashUnderTheBox = false;
        f.boxes.onShow([&f, &splashUnderTheBox](const RecordingMessageService::Box&) {
            splashUnderTheBox = f.window->Splash() && f.window->Splash()->isVisible();
        });
        f.window->Form_Load();
        // The box shows over the splash, which goes with the window.
        QVERIFY(splashUnderTheBox);
        QVERIFY(f.window->Splash() == nullptr);
        const QList<QWidget*> windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows)
            QVERIFY2(!window->isVisible(), qPrintable(window->objectName()));
    }

    void cancelEndsTheProgramWithStatusZero()
    {
        MainWindowFixture f;
        f.window->Form_Load();
        QVERIFY(!f.state.exitRequested);
        f.window->cmdCancel_Click();
        QVERIFY(f.state.exitRequested);
        QCOMPARE(f.state.exitCode, ExitStatus::Closed);
    }

    void engineThatCannotBeCreatedEndsTheProgram()
    {
        MainWindowFixture f;
        ComponentFactory::unregisterClass(CalcEngine::ClassId);
        f.window->Form_Load();
        verifyEndedBeforeTheLists(f);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().style, 16);
        QCOMPARE(f.boxes.last().detail, QStringLiteral("Run-time error 429 (NorrixExCalcLib.NorrixExCalc.1)"));
        QVERIFY(f.toolRuns().isEmpty());
    }

    void refusedSessionEndsTheProgram()
    {
        MainWindowFixture f;
        f.engine->openStatus = 1;
        f.window->Form_Load();
        verifyEndedBeforeTheLists(f);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4115"));
        QCOMPARE(f.boxes.last().style, 64);
        QCOMPARE(f.boxes.last().detail,
                 QStringLiteral("The suite's engine answered 1 when application 6 opened its session."));
        QCOMPARE(f.engine->calls,
                 QStringList({QStringLiteral("OpenApplication 6"), QStringLiteral("CloseApplication 6 false"),
                              QStringLiteral("released")}));
    }

    void missingRunRightEndsTheProgram()
    {
        MainWindowFixture f;
        f.engine->rights = {};
        f.window->Form_Load();
        verifyEndedBeforeTheLists(f);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4116"));
        QCOMPARE(f.boxes.last().detail, QStringLiteral("no right 500 in the test"));
        QVERIFY(f.engine->calls.contains(QStringLiteral("AutoLogoutMinutes")));
        QVERIFY(!f.engine->calls.contains(QStringLiteral("StartCheck")));
    }

    void refusedStartShows4125AndEndsTheProgram()
    {
        MainWindowFixture f;
        f.engine->startStatus = -3;
        f.window->Form_Load();
        verifyEndedBeforeTheLists(f);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4125"));
        QCOMPARE(f.boxes.last().style, 48);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        // The engine's reason is the box's detail.
        QCOMPARE(f.boxes.last().detail, QStringLiteral("refused by the test"));
        QVERIFY(f.toolRuns().isEmpty());
    }

    void errorInTheStartCheckShowsItThen4125()
    {
        MainWindowFixture f;
        f.engine->failOn = QStringLiteral("StartCheck");
        f.window->Form_Load();
        verifyEndedBeforeTheLists(f);
        QCOMPARE(f.boxes.count(), 2);
        QCOMPARE(f.boxes.boxes().at(0).text, QStringLiteral("The engine failed in StartCheck"));
        QCOMPARE(f.boxes.boxes().at(0).style, 16);
        QCOMPARE(f.boxes.boxes().at(0).detail, QStringLiteral("Run-time error -2147418113 (FakeCalcEngine)"));
        QCOMPARE(f.boxes.boxes().at(1).text, QStringLiteral("T4125"));
        QCOMPARE(f.boxes.boxes().at(1).detail, QStringLiteral("The engine failed in StartCheck"));
    }

    void tabWithoutSavedReportsEndsTheStartUp()
    {
        MainWindowFixture f;
        f.store->listReports = [] { return onlyFirstTabReports(); };
        f.window->Form_Load();
        QVERIFY(f.state.exitRequested);
        QCOMPARE(f.state.exitCode, ExitStatus::StartFailed);
        QVERIFY(f.window->IsUnloaded());
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("Invalid property value"));
        QCOMPARE(f.boxes.last().style, 16);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(
            f.boxes.last().detail,
            QStringLiteral("Run-time error 380 (cboReports(1)) while opening the first saved report of each tab."));
        QVERIFY(f.window->Splash() == nullptr);
        // The first tab's report was opened before the second tab failed.
        QVERIFY(f.store->calls.contains(QStringLiteral("OpenReport 1 si=0")));
        QCOMPARE(f.engine->calls.mid(f.engine->calls.size() - 2),
                 QStringList({QStringLiteral("CloseApplication 6 false"), QStringLiteral("released")}));
    }

    void printerProblemShows4117AndTheStartUpGoesOn()
    {
        MainWindowFixture f;
        f.state.printerSource = [] { return std::shared_ptr<OutputTarget>(); };
        f.window->Form_Load();
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4117"));
        QCOMPARE(f.boxes.last().style, 0);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QVERIFY(!f.state.blnAppReady);
        QVERIFY(!f.state.objPrint);
        QCOMPARE(f.state.strStartupPrinter, QString());
        QVERIFY(!f.state.blnPrinterWarned);
        QVERIFY(!f.state.exitRequested);
        QCOMPARE(f.boxes.last().detail, QString());
        QCOMPARE(f.tabs().cboReports[1]->currentIndex(), 1);
        QCOMPARE(f.tabs().msfgVariable[1]->Rows(), 5);
        QVERIFY(f.window->Splash() == nullptr);
    }

    void otherPrinterErrorEndsTheProgram()
    {
        MainWindowFixture f;
        f.state.printerSource = []() -> std::shared_ptr<OutputTarget> {
            throw RuntimeError(5, QStringLiteral("Printer"), QStringLiteral("Invalid procedure call or argument"));
        };
        f.window->Form_Load();
        QVERIFY(f.state.exitRequested);
        QCOMPARE(f.state.exitCode, ExitStatus::StartFailed);
        QCOMPARE(f.boxes.last().text, QStringLiteral("Invalid procedure call or argument"));
        QCOMPARE(f.boxes.last().style, 16);
        QCOMPARE(f.boxes.last().detail, QStringLiteral("Run-time error 5 (Printer) while taking the printer."));
        QVERIFY(f.window->Splash() == nullptr);
        QVERIFY(f.store->calls.isEmpty());
    }

    void nullDecimalPlacesEndsTheStartUp()
    {
        MainWindowFixture f;
        f.store->listVariables = [](bool si, qint16 tab) {
            RecordsetPtr rs = FakeCatalogue::variables(si, tab);
            if (tab == 1)
                rs->AppendRow({204, QStringLiteral("VE"), QStringLiteral("L/min"), QVariant()});
            return rs;
        };
        f.window->Form_Load();
        QVERIFY(f.state.exitRequested);
        QVERIFY(f.window->IsUnloaded());
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("Invalid use of Null"));
        QCOMPARE(f.boxes.last().style, 16);
        // The catalogue's failure ends the start-up, with where it failed as the detail.
        QCOMPARE(f.boxes.last().detail, QStringLiteral("Run-time error 94 (LoadVariableCatalogue) while loading the "
                                                       "variable catalogue of tab 1."));
        QCOMPARE(f.state.exitCode, ExitStatus::StartFailed);
        QVERIFY(f.window->Splash() == nullptr);
        QVERIFY(!f.store->calls.contains(QStringLiteral("ListReports")));
    }

    void emptyTableListEndsTheStartUp()
    {
        MainWindowFixture f;
        f.store->listTables = [](qint16 tab) {
            return tab == 0 ? std::make_shared<Recordset>(
                                  QStringList{QStringLiteral("QCTableID"), QStringLiteral("QCUserName")})
                            : FakeCatalogue::tables(tab);
        };
        f.window->Form_Load();
        QVERIFY(f.state.exitRequested);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("Invalid property value"));
        QVERIFY(!f.store->calls.contains(QStringLiteral("ListTables 1")));
    }

    void storeErrorWhileListingEndsTheProgram()
    {
        MainWindowFixture f;
        f.store->failOn = QStringLiteral("ListReports");
        f.window->Form_Load();
        QVERIFY(f.state.exitRequested);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in ListReports"));
        QCOMPARE(f.boxes.last().style, 16);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QVERIFY2(f.boxes.last().detail.endsWith(QLatin1String(" while listing the saved reports.")),
                 qPrintable(f.boxes.last().detail));
        QCOMPARE(f.state.exitCode, ExitStatus::StartFailed);
    }

    void storeErrorWhileOpeningIsShownAndTheStartUpGoesOn()
    {
        MainWindowFixture f;
        f.store->failOn = QStringLiteral("OpenReport 3");
        f.window->Form_Load();
        QVERIFY(!f.state.exitRequested);
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("The store failed in OpenReport 3"));
        QCOMPARE(f.boxes.last().style, 48);
        QVERIFY(!f.window->IsLoading());
        QCOMPARE(f.tabs().msfgVariable[0]->Rows(), 4);
    }
};

CALVEX_TEST(TestStartupFailures)
#include "TestStartupFailures.moc"
