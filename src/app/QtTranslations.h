#pragma once

#include <QLocale>

// The window toolkit's own texts (the print, file and message dialogs' buttons
// and labels) in the user's language: Qt's translations (qtbase_*.qm, Debian
// package qt6-translations-l10n) for the locale. The program's own texts stay
// with the string server.
class QtTranslations
{
public:
    // Loads and installs the translation for locale, replacing one installed
    // before; false (and the toolkit stays in English) when there is none.
    static bool install(const QLocale& locale);
    // Takes the installed translation out again.
    static void remove();
};
