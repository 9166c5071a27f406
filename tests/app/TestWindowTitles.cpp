#include "SuiteWindow.h"

#include "app/ProgramMain.h"
#include "app/frmAutoLogout.h"
#include "common/TestMain.h"
#include "components/ProgramState.h"
#include "suite/SuiteComponents.h"
#include "widgets/QtMessageService.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <functional>

namespace
{
constexpr char kXServerVariable[] = "CALVEX_TEST_X_SERVER";

// Shows a box through the program's message service and hands it to look
// while it is open; the box is closed afterwards.
void whileBoxIsOpen(const QString& title, const std::function<void(QMessageBox&)>& look)
{
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, &poll, [&poll, &look] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        poll.stop();
        look(*box);
        box->done(QMessageBox::Ok);
    });
    poll.start();
    QtMessageService().show(QStringLiteral("No report was found."), 48, title, QString());
}

// The title the X server holds for a window, as the window manager shows it.
QString XWindowTitle(const QWidget& window)
{
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"),
                {QStringLiteral("-id"), QString::number(window.winId()), QStringLiteral("_NET_WM_NAME")});
    xprop.waitForFinished(10000);
    return QString::fromUtf8(xprop.readAllStandardOutput()).trimmed();
}
} // namespace

// Window and message-box titles are exactly the program's texts: the
// program's name is never appended to them.
class TestWindowTitles : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        MessageService::setDefault(nullptr);
        ForgetSuiteComponents();
    }

    void theProgramHasNoDisplayNameOfItsOwn()
    {
        if (qEnvironmentVariableIsSet(kXServerVariable))
            QSKIP("checked in the parent process");
        // The platform appends the application's display name to every
        // window title once one is set; without it the display name is the
        // application's name and follows it.
        InitApplication();
        const QString name = QCoreApplication::applicationName();
        QCOMPARE(name, QStringLiteral("Calvex QC Reports"));
        const auto restore = qScopeGuard([name] { QCoreApplication::setApplicationName(name); });
        QCoreApplication::setApplicationName(QStringLiteral("Another Name"));
        QCOMPARE(QGuiApplication::applicationDisplayName(), QStringLiteral("Another Name"));
    }

    void messageBoxAndCountdownTitlesAreTheTextsAlone()
    {
        ProgramState state;
        if (qEnvironmentVariableIsSet(kXServerVariable))
            QSKIP("checked in the parent process");
        InitApplication();
        QString title;
        QString nativeTitle;
        whileBoxIsOpen(QStringLiteral("Open Report"), [&](QMessageBox& box) {
            title = box.windowTitle();
            nativeTitle = box.windowHandle() ? box.windowHandle()->title() : QString();
        });
        QCOMPARE(title, QStringLiteral("Open Report"));
        QCOMPARE(nativeTitle, QStringLiteral("Open Report"));

        RegisterSuiteComponents();
        ResetResourceServer();
        frmAutoLogout countdown{state};
        countdown.Form_Load();
        countdown.show();
        QVERIFY(QTest::qWaitForWindowExposed(&countdown));
        QCOMPARE(countdown.windowTitle(), QStringLiteral("Auto-Logout in Progress"));
        QVERIFY(countdown.windowHandle());
        QCOMPARE(countdown.windowHandle()->title(), QStringLiteral("Auto-Logout in Progress"));
    }

    // On a real X server the title is the one the window manager is given.
    void titlesOnAnXServer()
    {
        ProgramState state;
        if (qEnvironmentVariableIsSet(kXServerVariable))
        {
            InitApplication();
            QString boxTitle;
            whileBoxIsOpen(QStringLiteral("Open Report"), [&](QMessageBox& box) {
                QVERIFY(QTest::qWaitForWindowExposed(&box));
                boxTitle = XWindowTitle(box);
            });
            QCOMPARE(boxTitle, QStringLiteral("_NET_WM_NAME(UTF8_STRING) = \"Open Report\""));
            frmAutoLogout countdown{state};
            countdown.show();
            QVERIFY(QTest::qWaitForWindowExposed(&countdown));
            QCOMPARE(XWindowTitle(countdown),
                     QStringLiteral("_NET_WM_NAME(UTF8_STRING) = \"Auto-Logout in Progress\""));
            return;
        }
        const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (xvfb.isEmpty() || QStandardPaths::findExecutable(QStringLiteral("xprop")).isEmpty())
            QSKIP("needs Xvfb and xprop");

        // A display number of our own, free of other servers.
        int display = 90 + int(QCoreApplication::applicationPid() % 400);
        while (QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display)) ||
               QFileInfo::exists(QStringLiteral("/tmp/.X%1-lock").arg(display)))
            ++display;
        QProcess server;
        server.start(xvfb, {QStringLiteral(":%1").arg(display), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                            QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1280x800x24")});
        QVERIFY(server.waitForStarted());
        const auto stop = qScopeGuard([&server] {
            server.terminate();
            server.waitForFinished(5000);
        });
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display)), 10000);

        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":%1").arg(display));
        environment.insert(QString::fromLatin1(kXServerVariable), QStringLiteral("1"));
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("TestWindowTitles"), QStringLiteral("titlesOnAnXServer")});
        QVERIFY(child.waitForFinished(60000));
        const QByteArray output = child.readAll();
        QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, output.constData());
        QVERIFY2(output.contains("PASS   : TestWindowTitles::titlesOnAnXServer()"), output.constData());
    }
};

CALVEX_TEST(TestWindowTitles)
#include "TestWindowTitles.moc"
