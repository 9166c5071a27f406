#include "MainWindowFixture.h"

#include "common/FakePatientQuery.h"
#include "common/TestMain.h"
#include "platform/ScopedComponentRegistration.h"
#include "widgets/ComboList.h"

#include <QApplication>

// The subject search and the date boxes inside the started window: the
// window's message title, the one place of the chosen subject that the
// shutdown releases, and the report buttons that follow each date change.
class TestSubjectAndDatesInWindow : public QObject
{
    Q_OBJECT

private:
    struct Fixture : MainWindowFixture
    {
        Fixture()
        {
            query->answer = [] {
                return FakePatientQuery::rows({{QStringLiteral("QC001"), QStringLiteral("Control"),
                                                QStringLiteral("Adam"), QStringLiteral("Q"), QDate(1985, 3, 14)}});
            };
        }

        void start()
        {
            window->Form_Load();
            window->show();
            QApplication::setActiveWindow(window.get());
        }

        void find(const QString& text)
        {
            SubjectSearchPanel& search = *window->SubjectSearch();
            search.txtPatient->setText(text);
            search.optFindBy[0]->setChecked(true);
            QTest::mouseClick(search.cmdFind, Qt::LeftButton);
        }

        MaskEdBox& box(int index) { return *window->DateRange()->mskDate[std::size_t(index)]; }

        std::shared_ptr<FakePatientQuery::Script> query = std::make_shared<FakePatientQuery::Script>();
        ScopedComponentRegistration queryRegistration{PatientQuery::ClassId, FakePatientQuery::creator(query)};
    };

private slots:
    void theStartUpPutsTodayIntoTheToBoxWithoutABox()
    {
        Fixture f;
        f.start();
        QCOMPARE(f.boxes.count(), 0);
        QVERIFY(!f.state.exitRequested);
        QCOMPARE(f.box(1).Text(), QStringLiteral("06/15/2024"));
        QCOMPARE(f.box(0).Text(), QString());
        QVERIFY(f.window->DateRange()->ValidateDateRange());
    }

    void searchBoxesCarryTheWindowsTitle()
    {
        Fixture f;
        f.start();
        f.find(QStringLiteral(" QC "));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().text, QStringLiteral("T4060"));
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
    }

    void theChosenSubjectIsWhatTheShutdownReleases()
    {
        Fixture f;
        f.start();
        f.find(QStringLiteral("QC001"));
        QCOMPARE(f.window->SelectedPatientID(), QStringLiteral("QC001"));
        QCOMPARE(f.window->SelectedPatientName(), QStringLiteral("Adam Q Control"));
        QVERIFY(f.engine->calls.contains(QStringLiteral("PatientNotify 9 6 0 QC001")));
        f.engine->calls.clear();
        f.window->Unload();
        QCOMPARE(f.engine->calls,
                 (QStringList{QStringLiteral("PatientNotify 10 6 0 QC001"), QStringLiteral("CloseApplication 6 false"),
                              QStringLiteral("released")}));
    }

    void aDateChangeRefreshesTheReportButtons()
    {
        Fixture f;
        f.start();
        ReportTabsPanel& tabs = f.tabs();
        const qint32 id = ComboList::ItemData(tabs.cboReports[0], tabs.cboReports[0]->currentIndex());
        QVERIFY(id > 0);
        tabs.cmdNew->setEnabled(false);
        tabs.cmdDelete->setEnabled(false);
        f.store->calls.clear();

        QTest::keyClicks(&f.box(0), QStringLiteral("1"));
        QVERIFY(tabs.cmdNew->isEnabled());
        QVERIFY(tabs.cmdDelete->isEnabled());
        QCOMPARE(f.store->calls.filter(QStringLiteral("CanDeleteReport")),
                 QStringList{QStringLiteral("CanDeleteReport %1").arg(id)});

        // The To box refreshes as well, with the store's answer of the moment.
        f.store->canDelete = false;
        f.box(1).SetText(QStringLiteral("07/01/2024"));
        QVERIFY(!tabs.cmdDelete->isEnabled());
        QCOMPARE(f.boxes.count(), 0);
    }

    void withoutTheEditRightADateChangeKeepsTheEditingButtonsOff()
    {
        Fixture f;
        f.engine->rights = {CalcEngine::RightRunReports};
        f.start();
        ReportTabsPanel& tabs = f.tabs();
        tabs.cmdSave->setEnabled(true);
        QTest::keyClicks(&f.box(0), QStringLiteral("01012024"));
        QCOMPARE(f.box(0).Text(), QStringLiteral("01/01/2024"));
        for (QPushButton* button : {tabs.cmdNew, tabs.cmdSave, tabs.cmdSaveAs, tabs.cmdDelete})
            QVERIFY2(!button->isEnabled(), qPrintable(button->objectName()));
    }

    void aStoreFailureOnTheRefreshIsShownOnce()
    {
        Fixture f;
        f.start();
        f.store->failOn = QStringLiteral("CanDeleteReport");
        QTest::keyClicks(&f.box(0), QStringLiteral("1"));
        QCOMPARE(f.boxes.count(), 1);
        QCOMPARE(f.boxes.last().style, 16);
        QCOMPARE(f.boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(f.box(0).Text(), QStringLiteral("1_/__/____"));
    }
};

CALVEX_TEST(TestSubjectAndDatesInWindow)
#include "TestSubjectAndDatesInWindow.moc"
