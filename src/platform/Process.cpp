#include "platform/Process.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QStringList>

#include <string>

namespace
{
// Sets program and arguments from one command line. On Windows the line goes
// to CreateProcess as written, with no application name, so that the system
// parses it (an unquoted path with blanks included); buffer keeps the
// writable copy CreateProcess needs alive while the process starts.
bool prepare(QProcess& process, const QString& commandLine, [[maybe_unused]] std::wstring& buffer)
{
    const QStringList words = QProcess::splitCommand(commandLine);
    if (words.isEmpty())
        return false;
    process.setProgram(words.first());
#ifdef Q_OS_WIN
    buffer = commandLine.toStdWString();
    process.setCreateProcessArgumentsModifier([&buffer](QProcess::CreateProcessArguments* arguments) {
        arguments->applicationName = nullptr;
        arguments->arguments = buffer.data();
    });
#else
    process.setArguments(words.mid(1));
#endif
    // The child shares our console, as a program started from here always has.
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    return true;
}
} // namespace

void DoEvents()
{
    QCoreApplication::processEvents();
}

bool RunProcess(const QString& commandLine, bool wait)
{
    QProcess process;
    std::wstring buffer;
    if (!prepare(process, commandLine, buffer))
        return false;

    if (!wait)
        return process.startDetached();

    // The event loop serves timers and user input while the child runs and
    // sleeps in between, instead of polling the exit code.
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, [&loop](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            loop.quit();
    });
    process.start();
    // A start that fails at once has already reported it; there is nothing to wait for.
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    return process.error() != QProcess::FailedToStart;
}
