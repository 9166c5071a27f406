// Start-up benchmark: the time from launching the program to its ready main
// window, "NorrixDBQuery auto" included.
//
//   calvex-bench-startup [--runs N] [--screenshot FILE]
//
// launches itself N times (default 10) as the program (--child), each time
// measuring from the launch to the moment the main window has been painted,
// and prints every run and the minimum, median and maximum. With --screenshot
// the last run saves a picture of the ready window first. The database and the
// suite's program folder come from the registry key as for the program
// itself (NORRIX_REGISTRY to point at a key file of one's own).
#include "app/ProgramMain.h"
#include "app/frmMain.h"
#include "platform/MessageService.h"
#include "suite/SuiteComponents.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QScreen>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{
// A box of the start-up would wait for a click; a benchmark writes it out instead.
class LoggedBoxes final : public MessageService
{
public:
    int show(const QString& text, int style, const QString& title, const QString& detail) override
    {
        std::fprintf(stderr, "message box (%d, %s): %s%s\n", style, qPrintable(title), qPrintable(text),
                     detail.isEmpty() ? "" : qPrintable(QStringLiteral(" (") + detail + u')'));
        return (style & 7) == MsgStyle::YesNo ? MsgAnswer::Yes : MsgAnswer::Ok;
    }
};

// Reports the first paint of the window: the window is on the screen and ready.
// The paint of any widget of the window counts: panels that fill the window
// with their own background leave the window itself nothing to paint.
class FirstPaint final : public QObject
{
public:
    FirstPaint(frmMain& window, QElapsedTimer& clock, QString screenshot)
        : m_window(window)
        , m_clock(clock)
        , m_screenshot(std::move(screenshot))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Paint && !m_done && widget && widget->window() == &m_window)
        {
            m_done = true;
            std::printf("READY %lld\n", static_cast<long long>(m_clock.elapsed()));
            std::fflush(stdout);
            QTimer::singleShot(m_screenshot.isEmpty() ? 0 : 700, [this] { finish(); });
        }
        return false;
    }

private:
    void finish()
    {
        if (!m_screenshot.isEmpty())
        {
            const QPixmap picture = m_window.screen()->grabWindow(m_window.winId());
            if (!picture.save(m_screenshot))
                std::fprintf(stderr, "cannot save %s\n", qPrintable(m_screenshot));
        }
        m_window.close();
    }

    frmMain& m_window;
    QElapsedTimer& m_clock;
    QString m_screenshot;
    bool m_done = false;
};

int runChild(int argc, char** argv, const QString& screenshot)
{
    QElapsedTimer clock;
    clock.start();
    QApplication app(argc, argv);
    InitApplication();
    LoggedBoxes boxes;
    MessageService::install(&boxes);
    RegisterSuiteComponents();
    std::unique_ptr<FirstPaint> watcher;
    ProgramState state;
    return RunMainWindow(state,
                         [&](frmMain& window) { watcher = std::make_unique<FirstPaint>(window, clock, screenshot); });
}

int runDriver(int argc, char** argv, int runs, const QString& screenshot)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    std::vector<double> launchToReady;
    for (int run = 1; run <= runs; ++run)
    {
        QStringList arguments{QStringLiteral("--child")};
        if (run == runs && !screenshot.isEmpty())
            arguments << QStringLiteral("--screenshot") << screenshot;
        QProcess child;
        child.setProcessChannelMode(QProcess::SeparateChannels);
        child.setReadChannel(QProcess::StandardOutput);
        QElapsedTimer clock;
        clock.start();
        child.start(QCoreApplication::applicationFilePath(), arguments);
        double ready = -1;
        qint64 inChild = -1;
        while (ready < 0 && child.waitForReadyRead(30000))
        {
            while (child.canReadLine())
            {
                const QByteArray line = child.readLine().trimmed();
                if (line.startsWith("READY "))
                {
                    ready = double(clock.nsecsElapsed()) / 1e6;
                    inChild = line.mid(6).toLongLong();
                }
            }
        }
        child.waitForFinished(30000);
        const QByteArray errors = child.readAllStandardError();
        if (ready < 0)
        {
            out << "run " << run << ": the window never became ready\n" << errors;
            return 1;
        }
        if (!errors.trimmed().isEmpty())
            out << errors;
        launchToReady.push_back(ready);
        out << QStringLiteral("run %1: %2 ms from launch to the painted window (%3 ms after main)\n")
                   .arg(run)
                   .arg(ready, 0, 'f', 1)
                   .arg(inChild);
        out.flush();
    }
    std::sort(launchToReady.begin(), launchToReady.end());
    out << QStringLiteral("launch to ready window, %1 runs: min %2 ms, median %3 ms, max %4 ms\n")
               .arg(runs)
               .arg(launchToReady.front(), 0, 'f', 1)
               .arg(launchToReady[launchToReady.size() / 2], 0, 'f', 1)
               .arg(launchToReady.back(), 0, 'f', 1);
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    bool child = false;
    int runs = 10;
    QString screenshot;
    for (int i = 1; i < argc; ++i)
    {
        const QByteArray arg(argv[i]);
        if (arg == "--child")
            child = true;
        else if (arg == "--runs" && i + 1 < argc)
            runs = std::max(1, QByteArray(argv[++i]).toInt());
        else if (arg == "--screenshot" && i + 1 < argc)
            screenshot = QString::fromLocal8Bit(argv[++i]);
    }
    return child ? runChild(argc, argv, screenshot) : runDriver(argc, argv, runs, screenshot);
}
