#include "ReportRunFixture.h"
#include "RunFixture.h"

#include "common/TestMain.h"
#include "output/modPrintReport.h"
#include "platform/ScopedComponentRegistration.h"
#include "run/frmPrintPreview.h"
#include "suite/NorrixReportStore.h"

#include <QTest>

using Kind = RecordedOp::Kind;

// The report run on the suite's demo database through its own report store:
// a saved definition opened into the grid, a demo QC subject and a period;
// the preview's pages, its Print and the main window's Print agree.
class TestReportRunDemo : public QObject
{
    Q_OBJECT

    struct Demo
    {
        Demo()
        {
            Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(9, 0)));
            state.objPrint = first;
            state.blnAppReady = true;
            for (int tab = 0; tab < ReportTabsPanel::TabCount; ++tab)
                window.tabs->LoadVariableCatalogue(tab);
            window.tabs->ListSavedReports();
            window.search->txtPatientID->setText(QStringLiteral("QC001"));
            window.search->txtPatientName->setText(QStringLiteral("Adam Q Control"));
            state.strCurrentPatientID = QStringLiteral("QC001");
            window.dates->mskDate[0]->SetText(QStringLiteral("01/01/2024"));
            window.dates->mskDate[1]->SetText(QStringLiteral("06/30/2024"));
        }
        ~Demo() { Clock::pin(QDateTime()); }
        Demo(const Demo&) = delete;
        Demo& operator=(const Demo&) = delete;

        // Opens the saved definition of tab 0 named name, as choosing it in the list does.
        bool open(const QString& name)
        {
            QComboBox* list = window.tabs->cboReports[0];
            const int index = list->findText(name);
            if (index < 1)
                return false;
            list->setCurrentIndex(index);
            return window.tabs->msfgVariable[0]->Rows() > 2;
        }

        ScopedTestStrings strings;
        RecordingMessageService boxes;
        DemoDatabase demo;
        ScopedComponentRegistration store{QCReportStore::ClassId, [] { return std::make_unique<NorrixReportStore>(); }};
        std::shared_ptr<RecordingTarget> first = std::make_shared<RecordingTarget>();
        std::shared_ptr<RecordingTarget> second = std::make_shared<RecordingTarget>();
        ProgramState state;
        RunWindow window{state};
        ModalDriver watch;
    };

private slots:
    void thePreviewAndPrintShowTheSamePages()
    {
        Demo d;
        QVERIFY(d.open(QStringLiteral("Spirometry")));
        QCOMPARE(d.boxes.count(), 0);

        int pages = 0;
        int graphPages = 0;
        QStringList numbers;
        d.watch.onNextModal([&](QDialog* modal) {
            auto* preview = qobject_cast<frmPrintPreview*>(modal);
            if (!preview)
                return;
            pages = ReportPageCount(preview->Report());
            graphPages = ReportGraphPageCount(preview->Report());
            numbers.append(preview->txtPage->text());
            for (int page = 2; page <= pages; ++page)
            {
                preview->cmdNextPage->click();
                numbers.append(preview->txtPage->text());
            }
            preview->cmdPrint->click();
            preview->cmdCancel->click();
        });
        d.window.run->cmdPreview_Click();
        QVERIFY(graphPages >= 1);
        QVERIFY(pages > graphPages);
        QCOMPARE(numbers.size(), pages);
        QCOMPARE(numbers.last(), QString::number(pages));

        // Print from the main window on a second printer of the same kind.
        d.state.objPrint = d.second;
        d.window.run->cmdPrint_Click();
        QCOMPARE(d.boxes.count(), 0);

        QStringList footers;
        for (int page = 1; page <= pages; ++page)
            footers.append(QStringLiteral("T4084 %1").arg(page));
        QCOMPARE(ReportRunFixture::Footers(*d.first), footers);
        QCOMPARE(ReportRunFixture::Footers(*d.second), footers);
        QCOMPARE(d.second->countOf(Kind::EndDoc), 1);
        // Drawing operation for drawing operation: where and what.
        QStringList previewed;
        QStringList printed;
        for (const RecordedOp& op : d.first->drawOps())
            previewed.append(QStringLiteral("%1 %2 %3 %4").arg(int(op.kind)).arg(op.x1).arg(op.y1).arg(op.text));
        for (const RecordedOp& op : d.second->drawOps())
            printed.append(QStringLiteral("%1 %2 %3 %4").arg(int(op.kind)).arg(op.x1).arg(op.y1).arg(op.text));
        QCOMPARE(previewed, printed);
        // The period and the subject are the request's.
        QVERIFY(d.second->texts().contains(QStringLiteral("T4040:  01/01/2024 - 06/30/2024")));
        QVERIFY(d.second->texts().contains(QStringLiteral("T4022:  Adam Q Control")));
    }
};

CALVEX_TEST(TestReportRunDemo)
#include "TestReportRunDemo.moc"
