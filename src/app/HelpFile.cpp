#include "app/HelpFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <QDesktopServices>
#include <QUrl>
#endif

QString HelpFilePath()
{
    const QString programFolder = QCoreApplication::applicationDirPath();
#ifdef Q_OS_WIN
    return QDir::toNativeSeparators(programFolder + QStringLiteral("/Calvex.chm"));
#else
    const QString candidates[] = {
        programFolder + QStringLiteral("/../share/calvex-qc/help/index.html"),
        programFolder + QStringLiteral("/../help/index.html"),
        programFolder + QStringLiteral("/help/index.html"),
    };
    for (const QString& candidate : candidates)
    {
        if (QFileInfo::exists(candidate))
            return QFileInfo(candidate).canonicalFilePath();
    }
    return QString();
#endif
}

void ShowHelpFile()
{
    const QString path = HelpFilePath();
#ifdef Q_OS_WIN
    using HtmlHelpFunction = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);
    constexpr UINT HH_DISPLAY_TOPIC = 0;
    static HMODULE library = LoadLibraryW(L"hhctrl.ocx");
    if (!library)
        return;
    auto htmlHelp = reinterpret_cast<HtmlHelpFunction>(GetProcAddress(library, "HtmlHelpW"));
    if (htmlHelp)
        htmlHelp(nullptr, reinterpret_cast<LPCWSTR>(path.utf16()), HH_DISPLAY_TOPIC, 0);
#else
    if (!path.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
#endif
}
