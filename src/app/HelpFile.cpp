#include "app/HelpFile.h"

#include "platform/ProgramFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include "app/HelpWindow.h"

#include <QUrl>
#endif

QString HelpFilePath()
{
#ifdef Q_OS_WIN
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath() + QStringLiteral("/Calvex.chm"));
#else
    const QString index = ProgramDataFolder() + QStringLiteral("/help/index.html");
    return QFileInfo::exists(index) ? QFileInfo(index).canonicalFilePath() : QString();
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
        HelpWindow::showPage(QUrl::fromLocalFile(path));
#endif
}
