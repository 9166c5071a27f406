#include "MainWindowFixture.h"

#include "common/TestMain.h"
#include "common/TestScreens.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollArea>
#include <QTabWidget>
#include <QTest>

// The main window on small and large screens at scales 1 and 2: it opens
// inside the screen's available area, and every control can be brought into
// view, scrolling the window's content where the screen is too small for it.
class TestMainWindowFitsTheScreen : public QObject
{
    Q_OBJECT

private slots:
    void everyControlCanBeReachedOnEveryScreen()
    {
        if (TestScreens::InChild())
            QSKIP("runs in the parent process only");
        const QString failure =
            TestScreens::RunOnEveryScreen("TestMainWindowFitsTheScreen", "everyControlCanBeReachedOnThisScreen");
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }

    void everyControlCanBeReachedOnThisScreen()
    {
        if (!TestScreens::InChild())
            QSKIP("runs on the screens of everyControlCanBeReachedOnEveryScreen");
        MainWindowFixture f;
        f.window->Form_Load();
        QVERIFY(!f.state.exitRequested);
        f.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));

        const QRect available = TestScreens::AvailableArea(*f.window);
        QVERIFY(!available.isEmpty());
        QVERIFY2(available.contains(f.window->frameGeometry()),
                 qPrintable(TestScreens::Describe() + QStringLiteral(": window %1x%2 on %3x%4")
                                                          .arg(f.window->frameGeometry().width())
                                                          .arg(f.window->frameGeometry().height())
                                                          .arg(available.width())
                                                          .arg(available.height())));

        auto* scroll = f.control<QScrollArea>(QStringLiteral("scrContent"));
        QVERIFY(scroll);
        const QRect viewport = TestScreens::GlobalRect(*scroll->viewport()).intersected(available);
        auto* tabs = f.window->findChild<QTabWidget*>();
        QVERIFY(tabs);
        int checked = 0;
        for (int tab = 0; tab < tabs->count(); ++tab)
        {
            tabs->setCurrentIndex(tab);
            QList<QWidget*> controls;
            for (QWidget* w : f.window->findChildren<QWidget*>())
            {
                const bool control =
                    qobject_cast<QAbstractButton*>(w) || qobject_cast<QComboBox*>(w) || qobject_cast<QLineEdit*>(w);
                if (control && w->isVisible() && !w->objectName().startsWith(QLatin1String("qt_")))
                    controls.append(w);
            }
            QVERIFY(controls.size() > 20);
            for (QWidget* w : controls)
            {
                // Scrolled to the whole control (ensureWidgetVisible shows a
                // text box's cursor only).
                const QPoint centre = w->mapTo(scroll->widget(), w->rect().center());
                scroll->ensureVisible(centre.x(), centre.y(), w->width() / 2 + 1, w->height() / 2 + 1);
                const QRect rect = TestScreens::GlobalRect(*w);
                // A list wider than the view fills the view, but for a margin.
                const QRect shown = rect.intersected(viewport);
                const bool inView = shown.width() >= qMin(rect.width(), viewport.width() - 16) &&
                                    shown.height() >= qMin(rect.height(), viewport.height() - 16);
                QVERIFY2(inView, qPrintable(TestScreens::Describe() + QStringLiteral(": ") + w->objectName() +
                                            QLatin1Char(' ') + TestScreens::Where(rect, viewport)));
                ++checked;
            }
        }
        QVERIFY(checked > 40);
    }
};

CALVEX_TEST(TestMainWindowFitsTheScreen)
#include "TestMainWindowFitsTheScreen.moc"
