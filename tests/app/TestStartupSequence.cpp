#include "MainWindowFixture.h"

#include "common/TestMain.h"
#include "platform/ScopedComponentRegistration.h"
#include "platform/StringServer.h"
#include "platform/modResource.h"

#include <QTimer>

namespace
{
// Answers "T<number>" like the test strings and remembers every number asked.
class RecordingStrings final : public StringServer
{
public:
    explicit RecordingStrings(QList<qint16>& asked)
        : m_asked(asked)
    {}
    QString GetText(qint16 id) override
    {
        m_asked.append(id);
        return QStringLiteral("T") + QString::number(id);
    }

private:
    QList<qint16>& m_asked;
};

// Everything the start-up does that others can see, in order: engine and
// store calls, message boxes, the splash window's progress line and the run
// of the database tool.
class StartupObserver
{
public:
    explicit StartupObserver(MainWindowFixture& f)
        : m_f(f)
    {
        f.engine->onCall = [this](const QString& call) { add(QStringLiteral("engine ") + call); };
        f.store->onCall = [this](const QString& call) { add(QStringLiteral("store ") + call); };
        f.boxes.onShow([this](const RecordingMessageService::Box& box) {
            add(QStringLiteral("box %1 %2 %3").arg(box.text).arg(box.style).arg(box.title));
        });
        // Runs whenever the start-up lets events run.
        m_poll.setInterval(0);
        QObject::connect(&m_poll, &QTimer::timeout, [this] { observe(); });
        m_poll.start();
    }

    ~StartupObserver()
    {
        m_f.engine->onCall = nullptr;
        m_f.store->onCall = nullptr;
        m_f.boxes.onShow(nullptr);
    }

    void observe()
    {
        // The tool's line is complete once it ends in a line break.
        const QString runs = m_f.toolRuns();
        if (!m_toolSeen && runs.endsWith(QLatin1Char('\n')))
        {
            m_toolSeen = true;
            m_events.append(QStringLiteral("tool ") + runs.trimmed());
        }
        frmSplash* splash = m_f.window->Splash();
        if (splash && splash->lblStatus->text().isEmpty())
            return; // shown, its progress line not written yet
        const QString status = splash ? QStringLiteral("splash ") + splash->lblStatus->text()
                                      : (m_splashStatus.isEmpty() ? QString() : QStringLiteral("splash closed"));
        if (status != m_splashStatus)
        {
            m_splashStatus = status;
            m_events.append(status);
        }
    }

    QStringList events()
    {
        observe();
        return m_events;
    }

private:
    void add(const QString& event)
    {
        observe();
        m_events.append(event);
    }

    MainWindowFixture& m_f;
    QTimer m_poll;
    QStringList m_events;
    QString m_splashStatus;
    bool m_toolSeen = false;
};
} // namespace

class TestStartupSequence : public QObject
{
    Q_OBJECT

private slots:
    void startsInItsOrder()
    {
        MainWindowFixture f;
        StartupObserver observer(f);
        f.window->Form_Load();
        QCOMPARE(observer.events(), QStringList({
                                        QStringLiteral("engine OpenApplication 6"),
                                        QStringLiteral("engine HasRight 500"),
                                        QStringLiteral("engine HasRight 501"),
                                        QStringLiteral("engine AutoLogoutMinutes"),
                                        QStringLiteral("engine StartCheck"),
                                        QStringLiteral("splash T4065"),
                                        QStringLiteral("tool auto"),
                                        QStringLiteral("splash T4066"),
                                        QStringLiteral("store ListTables 0"),
                                        QStringLiteral("store ListVariables si=0 0"),
                                        QStringLiteral("store ListTables 1"),
                                        QStringLiteral("store ListVariables si=0 1"),
                                        QStringLiteral("store ListReports"),
                                        QStringLiteral("store CanDeleteReport 1"),
                                        QStringLiteral("store OpenReport 1 si=0"),
                                        QStringLiteral("store CanDeleteReport 3"),
                                        QStringLiteral("store OpenReport 3 si=0"),
                                        QStringLiteral("splash closed"),
                                    }));
        QVERIFY(!f.state.exitRequested);
        QVERIFY(!f.window->IsUnloaded());
    }

    void windowIsReadyAfterTheStartUp()
    {
        MainWindowFixture f;
        f.registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("1"));
        f.window->Form_Load();
        QCOMPARE(f.boxes.count(), 0);
        QVERIFY(!f.window->IsLoading());
        QVERIFY(f.state.blnAppReady);
        QVERIFY(f.state.objPrint == f.printer);
        QCOMPARE(f.state.strStartupPrinter, QStringLiteral("Test Printer"));
        QVERIFY(!f.state.blnPrinterWarned);
        QVERIFY(!f.state.blnLogoutPending);
        QVERIFY(!f.window->m_blnAutoLogout);
        QCOMPARE(f.state.strNotifiedPatientID, QString());
        QVERIFY(f.window->MsgTitle() == QStringLiteral("T4052"));
        QVERIFY(f.control<QRadioButton>(QStringLiteral("optFindBy(1)"))->isChecked());
        QCOMPARE(f.control<MaskEdBox>(QStringLiteral("mskDate(1)"))->Text(), QStringLiteral("06/15/2024"));
        QCOMPARE(f.control<MaskEdBox>(QStringLiteral("mskDate(0)"))->Text(), QString());
        QCOMPARE(f.tabs().CurrentTab(), 0);
        QCOMPARE(f.window->CurrentTab(), 0);
        QVERIFY(f.window->Splash() == nullptr);
        QTimer* timer = f.control<QTimer>(QStringLiteral("ActivityTimer"));
        QVERIFY(timer);
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 1000);
        // Both opens read the SI setting afresh.
        QVERIFY(f.store->calls.contains(QStringLiteral("OpenReport 1 si=1")));
        QVERIFY(f.store->calls.contains(QStringLiteral("OpenReport 3 si=1")));
        for (int t = 0; t < 2; ++t)
        {
            FlexGrid* grid = f.control<FlexGrid>(QStringLiteral("msfgVariable(%1)").arg(t));
            for (int c = 0; c < 8; ++c)
                QCOMPARE(grid->TextMatrix(0, c), QStringLiteral("T%1").arg(4067 + c));
            QCOMPARE(f.control<QComboBox>(QStringLiteral("cboReports(%1)").arg(t))->currentIndex(), 1);
            QVERIFY(!f.window->IsModified(t));
        }
        QCOMPARE(f.control<FlexGrid>(QStringLiteral("msfgVariable(0)"))->Rows(), 4);
        QCOMPARE(f.control<FlexGrid>(QStringLiteral("msfgVariable(1)"))->Rows(), 5);
        for (const char* name : {"cmdNew", "cmdSave", "cmdSaveAs", "cmdDelete", "cmdFind"})
            QVERIFY2(f.control<QPushButton>(QLatin1String(name))->isEnabled(), name);
    }

    void captionsComeFromTheStringServer()
    {
        MainWindowFixture f;
        QList<qint16> asked;
        ScopedComponentRegistration strings(StringServer::ClassId,
                                            [&asked] { return std::make_unique<RecordingStrings>(asked); });
        ResetResourceServer();
        f.window->Form_Load();

        frmMain& w = *f.window;
        QCOMPARE(w.windowTitle(), QStringLiteral("T4021"));
        const QList<QPair<QString, QString>> labels = {
            {QStringLiteral("Label1(0)"), QStringLiteral("T4022")},
            {QStringLiteral("Label1(10)"), QStringLiteral("T4023:")},
            {QStringLiteral("Label1(11)"), QStringLiteral("T4024:")},
            {QStringLiteral("Label1(17)"), QStringLiteral("T4029")},
            {QStringLiteral("Label1(16)"), QStringLiteral("T4030")},
            {QStringLiteral("Label1(8)"), QStringLiteral("T4030")},
            {QStringLiteral("Label1(13)"), QStringLiteral("T4031")},
            {QStringLiteral("Label1(15)"), QStringLiteral("T4034")},
            {QStringLiteral("Label1(6)"), QStringLiteral("T4035")},
            {QStringLiteral("Label1(7)"), QStringLiteral("T4036")},
            {QStringLiteral("Label1(2)"), QStringLiteral("T4041:")},
            {QStringLiteral("Label1(3)"), QStringLiteral("T4043:")},
        };
        for (const auto& [name, text] : labels)
            QCOMPARE(f.control<QLabel>(name)->text(), text);
        const QList<QPair<QString, QString>> buttons = {
            {QStringLiteral("optFindBy(0)"), QStringLiteral("T4023")},
            {QStringLiteral("optFindBy(1)"), QStringLiteral("T4024")},
            {QStringLiteral("cmdFind"), QStringLiteral("T4025")},
            {QStringLiteral("chkShowIn(2)"), QStringLiteral("T4032")},
            {QStringLiteral("chkShowIn(3)"), QStringLiteral("T4033")},
            {QStringLiteral("cmdVarAdd(1)"), QStringLiteral("T4037")},
            {QStringLiteral("cmdVarUpdate(1)"), QStringLiteral("T4038")},
            {QStringLiteral("cmdVarRemove(1)"), QStringLiteral("T4039")},
            {QStringLiteral("cmdDate(0)"), QStringLiteral("T4042")},
            {QStringLiteral("cmdDate(1)"), QStringLiteral("T4042")},
            {QStringLiteral("cmdPrintSetup"), QStringLiteral("T4051")},
            {QStringLiteral("cmdPreview"), QStringLiteral("T4044")},
            {QStringLiteral("cmdPrint"), QStringLiteral("T4045")},
            {QStringLiteral("cmdHelp"), QStringLiteral("T4046")},
            {QStringLiteral("cmdCancel"), QStringLiteral("T4008")},
            {QStringLiteral("cmdNew"), QStringLiteral("T4047")},
            {QStringLiteral("cmdSave"), QStringLiteral("T4048")},
            {QStringLiteral("cmdSaveAs"), QStringLiteral("T4049")},
            {QStringLiteral("cmdDelete"), QStringLiteral("T4050")},
        };
        for (const auto& [name, text] : buttons)
            QCOMPARE(f.control<QAbstractButton>(name)->text(), text);
        QCOMPARE(f.control<QGroupBox>(QStringLiteral("fraSelectedPatient"))->title(), QStringLiteral("T4026"));
        QCOMPARE(f.control<QGroupBox>(QStringLiteral("fraDateRange"))->title(), QStringLiteral("T4040"));
        QCOMPARE(f.tabs().sstabReportTabs->tabText(0), QStringLiteral("T4027"));
        QCOMPARE(f.tabs().sstabReportTabs->tabText(1), QStringLiteral("T4028"));
        // The index-0 editor controls keep their own captions.
        QCOMPARE(f.control<QAbstractButton>(QStringLiteral("cmdVarAdd(0)"))->text(), QStringLiteral("&Add"));
        QCOMPARE(f.control<QAbstractButton>(QStringLiteral("chkShowIn(0)"))->text(), QStringLiteral("Show In &Graph"));

        // The captions are asked in the window's order, and Label1(2) is written twice.
        const QList<qint16> captions = asked.mid(0, 42);
        QCOMPARE(captions,
                 QList<qint16>({4021, 4022, 4023, 4024, 4025, 4026, 4023, 4024, 4027, 4028, 4029, 4030, 4030, 4031,
                                4032, 4033, 4034, 4035, 4036, 4037, 4038, 4039, 4040, 4026, 4041, 4042, 4042, 4043,
                                4051, 4044, 4045, 4046, 4008, 4047, 4048, 4049, 4050, 4052, 4065, 4066, 4067, 4068}));
    }

    void splashShowsTheProductAndTheBuildsVersion()
    {
        frmSplash splash;
        splash.Form_Load();
        QCOMPARE(splash.lblVersion->text(), QStringLiteral("Version %1.%2.%3")
                                                .arg(CALVEX_VERSION_MAJOR)
                                                .arg(CALVEX_VERSION_MINOR)
                                                .arg(CALVEX_VERSION_PATCH));
        QCOMPARE(splash.lblProductName->text(), QApplication::applicationDisplayName());
        QVERIFY(!splash.lblProductName->text().isEmpty());
        QVERIFY(splash.imgLogo->pixmap().width() > 0);
    }

    void splashClosesOnAKey()
    {
        frmSplash splash;
        splash.show();
        QVERIFY(QTest::qWaitForWindowExposed(&splash));
        QTest::keyClick(&splash, Qt::Key_Space);
        QVERIFY(!splash.isVisible());
    }

    void splashClosesOnAClickOnItsFrame()
    {
        frmSplash splash;
        splash.show();
        QVERIFY(QTest::qWaitForWindowExposed(&splash));
        QTest::mouseClick(splash.Frame1, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(!splash.isVisible());
    }

    void startUpGoesOnWhenTheSplashWasClosedEarly()
    {
        MainWindowFixture f;
        // A key press while the database tool runs closes the splash.
        QTimer::singleShot(0, [&f] {
            if (frmSplash* splash = f.window->Splash())
                QTest::keyClick(splash, Qt::Key_Escape);
        });
        f.window->Form_Load();
        QCOMPARE(f.boxes.count(), 0);
        QVERIFY(!f.state.exitRequested);
        QCOMPARE(f.tabs().cboReports[1]->currentIndex(), 1);
    }
};

CALVEX_TEST(TestStartupSequence)
#include "TestStartupSequence.moc"
