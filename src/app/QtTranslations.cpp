#include "app/QtTranslations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <memory>

namespace
{
std::unique_ptr<QTranslator>& installed()
{
    static std::unique_ptr<QTranslator> translator;
    return translator;
}
} // namespace

bool QtTranslations::install(const QLocale& locale)
{
    remove();
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        return false;
    if (!QCoreApplication::installTranslator(translator.get()))
        return false;
    installed() = std::move(translator);
    return true;
}

void QtTranslations::remove()
{
    if (installed())
        QCoreApplication::removeTranslator(installed().get());
    installed().reset();
}
