#include "app/HelpFile.h"
#include "common/TestMain.h"
#include "platform/RegistryFile.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>

namespace
{
struct Run
{
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs the program built beside the tests as a user without any display
// would: no X11, no Wayland and no chosen platform plug-in.
Run runWithoutDisplay(const QStringList& arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QLatin1String(name));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QDir(qEnvironmentVariable("CALVEX_BIN_DIR")).filePath(QStringLiteral("calvex-qc")), arguments);
    Run result;
    if (!process.waitForFinished(60000))
    {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}
} // namespace

// calvex-qc --help and --version answer before any window or display is needed.
class TestProgramCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void helpNeedsNoDisplay()
    {
        for (const QString& option : {QStringLiteral("--help"), QStringLiteral("-h")})
        {
            const Run result = runWithoutDisplay({option});
            QCOMPARE(result.exitCode, 0);
            QCOMPARE(result.err, QString());
            QVERIFY2(result.out.startsWith(QStringLiteral("Usage: calvex-qc [--help | --version]\n")),
                     qPrintable(result.out));
            QVERIFY(result.out.contains(QStringLiteral("\n  -h, --help ")));
            QVERIFY(result.out.contains(QStringLiteral("\n  --version ")));
            QVERIFY2(result.out.contains(QStringLiteral("\nExit status:\n  0  the program was closed (Cancel, the "
                                                        "close box, the auto-logout)\n  1  the start-up was refused "
                                                        "or failed (its last message says why under Show Details)\n")),
                     qPrintable(result.out));
            // The files this program finds from its own folder, as the window would.
            QVERIFY2(result.out.endsWith(QStringLiteral("\nFiles:\n  settings    %1\n  help pages  %2\n")
                                             .arg(RegistryFile::activePath(), HelpFilePath())),
                     qPrintable(result.out));
        }
    }

    void versionNeedsNoDisplay()
    {
        const Run result = runWithoutDisplay({QStringLiteral("--version")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err, QString());
        QCOMPARE(result.out, QStringLiteral("calvex-qc %1.%2.%3\n")
                                 .arg(CALVEX_VERSION_MAJOR)
                                 .arg(CALVEX_VERSION_MINOR)
                                 .arg(CALVEX_VERSION_PATCH));
    }

    void withoutADisplayTheWindowStillCannotStart()
    {
        // The check above is worth something only because the window itself
        // needs a display: an ordinary start without one fails.
        const Run result = runWithoutDisplay({});
        QVERIFY(result.exitCode != 0);
    }
};

CALVEX_TEST(TestProgramCommandLine)
#include "TestProgramCommandLine.moc"
