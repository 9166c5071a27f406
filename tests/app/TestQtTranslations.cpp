#include "app/QtTranslations.h"
#include "common/TestMain.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScopeGuard>
#include <QTest>

// The toolkit's own texts follow the user's locale.
class TestQtTranslations : public QObject
{
    Q_OBJECT

    static QString cancel() { return QCoreApplication::translate("QPlatformTheme", "Cancel"); }

private slots:
    void germanLocaleTranslatesTheToolkit()
    {
        const auto restore = qScopeGuard([] { QtTranslations::remove(); });
        QCOMPARE(cancel(), QStringLiteral("Cancel"));
        QVERIFY(QtTranslations::install(QLocale(QLocale::German, QLocale::Germany)));
        QCOMPARE(cancel(), QStringLiteral("Abbrechen"));
        // What a dialog of the toolkit shows.
        QDialogButtonBox buttons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(buttons.button(QDialogButtonBox::Cancel)->text(), QStringLiteral("Abbrechen"));

        QVERIFY(QtTranslations::install(QLocale(QLocale::French, QLocale::France)));
        QCOMPARE(cancel(), QStringLiteral("Annuler"));
        QtTranslations::remove();
        QCOMPARE(cancel(), QStringLiteral("Cancel"));
    }

    void aLocaleWithoutTranslationKeepsEnglish()
    {
        const auto restore = qScopeGuard([] { QtTranslations::remove(); });
        QVERIFY(!QtTranslations::install(QLocale(QLocale::Esperanto)));
        QCOMPARE(cancel(), QStringLiteral("Cancel"));
    }
};

CALVEX_TEST(TestQtTranslations)
#include "TestQtTranslations.moc"
