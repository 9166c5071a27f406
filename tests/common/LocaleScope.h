#pragma once

#include <QLocale>

// Switches the default locale for one test and brings back the en_US the
// tests run with.
class LocaleScope
{
public:
    explicit LocaleScope(const QLocale& locale) { QLocale::setDefault(locale); }
    ~LocaleScope() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;
};
