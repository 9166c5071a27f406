#include "ReportRunFixture.h"

#include "common/TestMain.h"

#include <QAbstractButton>
#include <QDialogButtonBox>
#include <QPrintDialog>
#include <QTemporaryDir>
#include <QTest>

namespace
{
// Presses the button of role on the dialog's button box.
void Press(QWidget* dialog, QDialogButtonBox::ButtonRole role)
{
    for (QDialogButtonBox* box : dialog->findChildren<QDialogButtonBox*>())
    {
        for (QAbstractButton* button : box->buttons())
        {
            if (box->buttonRole(button) == role)
            {
                button->click();
                return;
            }
        }
    }
    // Without such a button the dialog is closed anyway; the checks then fail.
    qobject_cast<QDialog*>(dialog)->done(-1);
}
} // namespace

// Print Setup on the main window: the printer dialog, and the printer chosen
// there becomes the one every later run prints on.
class TestReportRunPrintSetup : public QObject
{
    Q_OBJECT

    std::unique_ptr<ReportRunFixture> f;
    std::unique_ptr<ModalDriver> watch;
    QTemporaryDir m_dir;

private slots:
    void init()
    {
        f = std::make_unique<ReportRunFixture>();
        watch = std::make_unique<ModalDriver>();
        // The system printer is the one of start-up: no notice about a change.
        f->state.strStartupPrinter = SystemPrinter(f->state)->DeviceName();
        f->state.blnPrinterWarned = false;
        // The PDF printer of a machine without printers writes into a folder
        // that is there, or its dialog would ask about the folder first.
        if (!SystemPrinter(f->state)->printer().outputFileName().isEmpty())
            SystemPrinter(f->state)->printer().setOutputFileName(m_dir.filePath(QStringLiteral("QC Report.pdf")));
    }

    void cleanup()
    {
        watch.reset();
        f.reset();
    }

    void theChosenPrinterIsTheOneRunsPrintOn()
    {
        bool dialog = false;
        watch->onNextModal([&](QDialog* modal) {
            dialog = qobject_cast<QPrintDialog*>(modal) != nullptr;
            Press(modal, QDialogButtonBox::AcceptRole);
        });
        f->window.run->cmdPrintSetup->click();
        QVERIFY(dialog);
        QCOMPARE(f->state.objPrint.get(), static_cast<OutputTarget*>(SystemPrinter(f->state).get()));
        QCOMPARE(f->boxes.count(), 0);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void cancellingKeepsThePrinter()
    {
        bool dialog = false;
        watch->onNextModal([&](QDialog* modal) {
            dialog = qobject_cast<QPrintDialog*>(modal) != nullptr;
            Press(modal, QDialogButtonBox::RejectRole);
        });
        f->window.run->cmdPrintSetup->click();
        QVERIFY(dialog);
        QCOMPARE(f->state.objPrint.get(), static_cast<OutputTarget*>(f->printer.get()));
        QCOMPARE(f->boxes.count(), 0);

        // Print still prints on it.
        f->setVariables(1);
        f->window.run->cmdPrint->click();
        QCOMPARE(f->printer->countOf(RecordedOp::Kind::EndDoc), 1);
    }
};

CALVEX_TEST(TestReportRunPrintSetup)
#include "TestReportRunPrintSetup.moc"
