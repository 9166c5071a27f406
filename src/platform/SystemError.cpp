#include "platform/SystemError.h"

#include "platform/MessageService.h"
#include "platform/RuntimeError.h"
#include "platform/modResource.h"

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <cerrno>
#include <cstring>
#endif

namespace
{
qint32 lastSystemError()
{
#ifdef Q_OS_WIN
    return qint32(GetLastError());
#else
    return errno;
#endif
}

#ifndef Q_OS_WIN
// strerror_r comes in two shapes: the GNU one returns the text, the POSIX one
// fills the buffer and returns a status. Either way the caller gets the text.
[[maybe_unused]] const char* messageOf(const char* result, const char* /*buffer*/)
{
    return result;
}

[[maybe_unused]] const char* messageOf(int result, const char* buffer)
{
    return result == 0 ? buffer : "";
}

// The C library has a text for every number; "Unknown error N" means it knows none.
bool isKnownErrorNumber(qint32 code, const QString& text)
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 32))
    Q_UNUSED(text);
    return strerrorname_np(code) != nullptr;
#else
    Q_UNUSED(code);
    return !text.startsWith(QLatin1String("Unknown error"));
#endif
}
#endif
} // namespace

QString SystemMessage(qint32 code)
{
#ifdef Q_OS_WIN
    // 254 characters of a 255-character buffer; the text ends at its first NUL
    // and keeps the line break the system puts at its end. Inserts are ignored
    // because there is nothing to put into them.
    char buffer[255] = {};
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, DWORD(code), 0, buffer, 254,
                   nullptr);
    return QString::fromLocal8Bit(buffer);
#else
    char buffer[256] = {};
    const QString text = QString::fromLocal8Bit(messageOf(strerror_r(code, buffer, sizeof buffer), buffer));
    return isKnownErrorNumber(code, text) ? text : QString();
#endif
}

QString SystemErrorText(qint32 code)
{
    const QString message = SystemMessage(code);
    if (!message.isEmpty())
        return message;
    return GetResourceText(4000) + QStringLiteral(" (#") + QString::number(code) + QStringLiteral(").");
}

bool ShowSystemError(qint32 code, bool show)
{
    if (code == 0)
        code = lastSystemError();
    if (code == 0)
        return false;

    const QString text = SystemErrorText(code);
    if (show)
    {
        MsgBox(text, MsgStyle::Exclamation, GetResourceText(4001));
        return true;
    }
    throw RuntimeError(code, GetResourceText(4001), text);
}
