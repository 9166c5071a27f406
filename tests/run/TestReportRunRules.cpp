#include "ShownReportRun.h"

#include "common/TestMain.h"
#include "output/modPrintReport.h"
#include "run/frmPrintPreview.h"

#include <QTest>

using Kind = RecordedOp::Kind;

namespace
{
QStringList Footers(int first, int last)
{
    QStringList footers;
    for (int page = first; page <= last; ++page)
        footers.append(QStringLiteral("T4084 ") + QString::number(page));
    return footers;
}

const QString kUnknownRuleMessage = QStringLiteral("T4137: \"2of3-2s\".\nT4138: 1-2s, 1-3s, 2-2s, R-4s, 4-1s, 10x, "
                                                   "DLCO-12.");
} // namespace

// The setting "QC Rules" in the main window's runs: read at every Preview
// and Print, its violation pages after the table, and an unknown rule
// refused before anything is prepared.
class TestReportRunRules : public QObject
{
    Q_OBJECT

    std::unique_ptr<ShownReportRun> f;

    ReportRunPanel& run() { return f->run(); }

private slots:
    void init()
    {
        f = std::make_unique<ShownReportRun>();
        // Four charts: two graph pages; 45 visits: two table pages.
        f->setVariables(4);
        f->store->tableVisits = 45;
    }

    void cleanup() { f.reset(); }

    void withoutTheSettingNothingIsChecked()
    {
        run().cmdPrint_Click();
        QCOMPARE(ReportRunFixture::Footers(*f->printer), Footers(1, 4));
        QVERIFY(!f->printer->texts().contains(QStringLiteral("T4130")));
        QCOMPARE(f->boxes.count(), 0);
    }

    void printAddsTheViolationPagesOfTheSettingsRules()
    {
        f->registry.setValue(QStringLiteral("QC Rules"), QStringLiteral("1-2s, 4-1s"));
        run().cmdPrint_Click();
        // The scripted charts stay within their limits: one page says so.
        QCOMPARE(ReportRunFixture::Footers(*f->printer), Footers(1, 5));
        const QStringList texts = f->printer->texts();
        const qsizetype title = texts.indexOf(QStringLiteral("T4130"));
        QVERIFY(title > texts.indexOf(QStringLiteral("T4084 4")));
        QCOMPARE(texts.at(title + 1), QStringLiteral("T4131"));
        QCOMPARE(f->printer->countOf(Kind::EndDoc), 1);
        QCOMPARE(f->boxes.count(), 0);

        // Read again at the next run: without the setting, no such page.
        f->registry.setValue(QStringLiteral("QC Rules"), QVariant());
        f->printer->clearOps();
        run().cmdPrint_Click();
        QCOMPARE(ReportRunFixture::Footers(*f->printer), Footers(1, 4));
    }

    void previewPagesOnToTheViolationPage()
    {
        f->registry.setValue(QStringLiteral("QC Rules"), QStringLiteral("10x"));
        int pages = 0;
        QStringList numbers;
        f->watch.onNextModal([&](QDialog* modal) {
            auto* preview = qobject_cast<frmPrintPreview*>(modal);
            if (!preview)
                return;
            pages = ReportPageCount(preview->Report());
            for (int i = 0; i < 5; ++i)
                preview->cmdNextPage->click();
            numbers.append(preview->txtPage->text());
            // The last page, the fifth, is the one violation page.
            numbers.append(QString::number(preview->Report().Violations.Pages.size()));
            preview->cmdCancel->click();
        });
        run().cmdPreview_Click();
        QCOMPARE(pages, 5);
        QCOMPARE(numbers, QStringList({QStringLiteral("5"), QStringLiteral("1")}));
        QCOMPARE(f->boxes.count(), 0);
    }

    void anUnknownRuleStopsPreviewWithOneMessage()
    {
        f->registry.setValue(QStringLiteral("QC Rules"), QStringLiteral("1-3s, 2of3-2s"));
        bool shown = false;
        f->watch.onNextModal([&](QDialog* modal) {
            shown = qobject_cast<frmPrintPreview*>(modal) != nullptr;
            modal->reject();
        });
        run().cmdPreview_Click();
        QVERIFY(!shown);
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, kUnknownRuleMessage);
        QCOMPARE(f->boxes.last().style, 48);
        QCOMPARE(f->boxes.last().title, QStringLiteral("T4052"));
        QCOMPARE(f->store->calls, QStringList());
        QVERIFY(run().PreviewWindow() == nullptr);
        QVERIFY(QApplication::overrideCursor() == nullptr);
    }

    void anUnknownRuleStopsPrintWithOneMessage()
    {
        f->registry.setValue(QStringLiteral("QC Rules"), QStringLiteral("2of3-2s"));
        run().cmdPrint_Click();
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, kUnknownRuleMessage);
        QCOMPARE(f->boxes.last().style, 48);
        QCOMPARE(f->store->calls, QStringList());
        QVERIFY(f->printer->ops().empty());
    }

    void theRequestIsCheckedBeforeTheRules()
    {
        // The program's own checks come first: no subject, no word of the rules.
        f->registry.setValue(QStringLiteral("QC Rules"), QStringLiteral("2of3-2s"));
        f->state.strCurrentPatientID.clear();
        run().cmdPrint_Click();
        QCOMPARE(f->boxes.count(), 1);
        QCOMPARE(f->boxes.last().text, QStringLiteral("T4075"));
    }
};

CALVEX_TEST(TestReportRunRules)
#include "TestReportRunRules.moc"
