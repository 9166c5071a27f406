#include "ReportRunFixture.h"
#include "RunFixture.h"

#include "common/TestMain.h"
#include "common/TestScreens.h"
#include "run/frmPrintPreview.h"
#include "run/frmSelPatient.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QTest>

// The preview and the result list on small and large screens at scales 1 and
// 2: they open inside the screen's available area with every button on it,
// and the result list has room for ten rows.
class TestRunWindowsFitTheScreen : public QObject
{
    Q_OBJECT

private slots:
    void onEveryScreen_data()
    {
        QTest::addColumn<QString>("check");
        QTest::newRow("preview") << QStringLiteral("previewFitsThisScreen");
        QTest::newRow("result list") << QStringLiteral("resultListFitsThisScreen");
    }

    void onEveryScreen()
    {
        if (TestScreens::InChild())
            QSKIP("runs in the parent process only");
        QFETCH(QString, check);
        const QString failure = TestScreens::RunOnEveryScreen("TestRunWindowsFitTheScreen", qPrintable(check));
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }

    void previewFitsThisScreen()
    {
        if (!TestScreens::InChild())
            QSKIP("runs on the screens of onEveryScreen");
        ReportRunFixture f;
        f.setVariables(2);
        ReportInfo info;
        f.window.tabs->BuildReportInfo(0, info);
        frmPrintPreview w{f.state};
        QVERIFY(w.SetGraphData(f.state.objPrint, info, false));
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));

        const QRect available = TestScreens::AvailableArea(w);
        QVERIFY(!available.isEmpty());
        QVERIFY2(available.contains(w.frameGeometry()), qPrintable(TestScreens::Where(w.frameGeometry(), available)));
        const QList<QAbstractButton*> buttons = w.findChildren<QAbstractButton*>();
        QVERIFY(buttons.size() >= 6);
        for (QAbstractButton* button : buttons)
        {
            const QRect rect = TestScreens::GlobalRect(*button);
            QVERIFY2(available.contains(rect),
                     qPrintable(button->objectName() + QLatin1Char(' ') + TestScreens::Where(rect, available)));
        }
        // Where the screen has room, the window shows the page's whole width.
        if (available.width() >= 920)
            QVERIFY(w.picGraph->width() >= 850);
    }

    void resultListFitsThisScreen()
    {
        if (!TestScreens::InChild())
            QSKIP("runs on the screens of onEveryScreen");
        EngineFixture fx;
        std::vector<QVariantList> rows;
        for (int i = 1; i <= 10; ++i)
            rows.push_back({QStringLiteral("PATIENT-ID-%1").arg(i, 4, 10, QLatin1Char('0')),
                            QStringLiteral("Vandenberghe-Oosterhuis %1").arg(i), QStringLiteral("Maximiliane"),
                            QStringLiteral("Alexandrina"), QDate(1960, 1, i)});
        RecordsetPtr rs = FakePatientQuery::rows(rows);
        frmSelPatient window{fx.state};
        window.Form_Load();
        QVERIFY(window.LoadResults(*rs));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        const QRect available = TestScreens::AvailableArea(window);
        QVERIFY2(available.contains(window.frameGeometry()),
                 qPrintable(TestScreens::Where(window.frameGeometry(), available)));
        QTreeWidget* list = window.lvwPatients;
        QCOMPARE(list->topLevelItemCount(), 10);
        // All ten rows in view at once.
        const QRect viewport = list->viewport()->rect();
        for (int r = 0; r < 10; ++r)
        {
            const QRect row = list->visualItemRect(list->topLevelItem(r));
            QVERIFY2(viewport.contains(row),
                     qPrintable(QString::number(r) + QLatin1Char(' ') + TestScreens::Where(row, viewport)));
        }
        // Each column as wide as its texts and its header need.
        for (int c = 0; c < frmSelPatient::ColumnCount; ++c)
        {
            const int width = list->columnWidth(c);
            list->resizeColumnToContents(c);
            QVERIFY2(width >= list->columnWidth(c), qPrintable(QString::number(c)));
        }
        for (QAbstractButton* button : window.findChildren<QAbstractButton*>())
            QVERIFY(available.contains(TestScreens::GlobalRect(*button)));
    }
};

CALVEX_TEST(TestRunWindowsFitTheScreen)
#include "TestRunWindowsFitTheScreen.moc"
