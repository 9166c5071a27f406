#pragma once

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRect>
#include <QScreen>
#include <QSizeF>
#include <QString>
#include <QTemporaryDir>
#include <QWidget>

#include <array>

// The screens the window-size checks run on. A screen and its scale are fixed
// when the application starts, so each check runs again in a process of its
// own: the offscreen platform reads the screen from a configuration file, and
// QT_SCALE_FACTOR sets the scale.
namespace TestScreens
{
struct Screen
{
    int width;
    int height;
    int scale;
};

constexpr std::array<Screen, 4> kScreens{{{1280, 800, 1}, {1280, 800, 2}, {1920, 1080, 1}, {1920, 1080, 2}}};

constexpr char kChildVariable[] = "CALVEX_TEST_SCREEN";

// True in a process that runs a check on one of the screens.
inline bool InChild()
{
    return qEnvironmentVariableIsSet(kChildVariable);
}

// The screen this process runs on, as "1280x800@2".
inline QString Describe()
{
    return QString::fromLocal8Bit(qgetenv(kChildVariable));
}

// Runs testFunction of testClass on every screen; the empty text when it
// passed on all of them, else the screen and the child's output.
inline QString RunOnEveryScreen(const char* testClass, const char* testFunction)
{
    QTemporaryDir folder;
    for (const Screen& screen : kScreens)
    {
        const QString config =
            folder.filePath(QStringLiteral("screen-%1x%2.json").arg(screen.width).arg(screen.height));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return QStringLiteral("cannot write ") + config;
        file.write(QStringLiteral(R"({"screens": [{"name": "Test", "x": 0, "y": 0, "width": %1, "height": %2,)"
                                  R"( "logicalDpi": 96}]})")
                       .arg(screen.width)
                       .arg(screen.height)
                       .toUtf8());
        file.close();

        const QString name = QStringLiteral("%1x%2@%3").arg(screen.width).arg(screen.height).arg(screen.scale);
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen:configfile=") + config);
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(screen.scale));
        environment.insert(QString::fromLatin1(kChildVariable), name);
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {QString::fromLatin1(testClass), QString::fromLatin1(testFunction)});
        if (!child.waitForFinished(120000))
            return name + QStringLiteral(": did not finish");
        const QString output = QString::fromLocal8Bit(child.readAll());
        const QString passed =
            QStringLiteral("PASS   : %1::%2()").arg(QLatin1String(testClass), QLatin1String(testFunction));
        if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0 || !output.contains(passed))
            return name + QStringLiteral(":\n") + output;
    }
    return QString();
}

// The available area of the screen this process runs on; empty when that
// screen is not the one the process was asked for, so that a check never
// passes on a screen other than the one it names.
inline QRect AvailableArea(const QWidget& window)
{
    QScreen* screen = window.screen();
    if (!screen)
        return QRect();
    const QSize device = (QSizeF(screen->geometry().size()) * screen->devicePixelRatio()).toSize();
    const QString actual =
        QStringLiteral("%1x%2@%3").arg(device.width()).arg(device.height()).arg(screen->devicePixelRatio());
    return actual == Describe() ? screen->availableGeometry() : QRect();
}

// A widget's rectangle on the screen.
inline QRect GlobalRect(const QWidget& widget)
{
    return QRect(widget.mapToGlobal(QPoint(0, 0)), widget.size());
}
// "x,y wxh in x,y wxh" of a rectangle that should lie inside another, with
// the screen it was tried on.
inline QString Where(const QRect& inner, const QRect& outer)
{
    return Describe() + QStringLiteral(": %1,%2 %3x%4 in %5,%6 %7x%8")
                            .arg(inner.x())
                            .arg(inner.y())
                            .arg(inner.width())
                            .arg(inner.height())
                            .arg(outer.x())
                            .arg(outer.y())
                            .arg(outer.width())
                            .arg(outer.height());
}
} // namespace TestScreens
