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
    QString m_startupPrinter;
    bool m_warned = false;
    QTemporaryDir m_dir;
    QString m_outputFile;

private slots:
    void init()
    {
        f = std::make_unique<ReportRunFixture>();
        watch = std::make_unique<ModalDriver>();
        m_startupPrinter = strStartupPrinter;
        m_warned = blnPrinterWarned;
        // The system printer is the one of start-up: no notice about a change.
        strStartupPrinter = SystemPrinter()->DeviceName();
        blnPrinterWarned = false;
        // The PDF printer of a machine without printers writes into a folder
        // that is there, or its dialog would ask about the folder first.
        m_outputFile = SystemPrinter()->printer().outputFileName();
        if (!m_outputFile.isEmpty())
            SystemPrinter()->printer().setOutputFileName(m_dir.filePath(QStringLiteral("QC Report.pdf")));
    }

    void cleanup()
    {
        watch.reset();
        f.reset();
        strStartupPrinter = m_startupPrinter;
        blnPrinterWarned = m_warned;
        if (!m_outputFile.isEmpty())
            SystemPrinter()->printer().setOutputFileName(m_outputFile);
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
        QCOMPARE(objPrint.get(), static_cast<OutputTarget*>(SystemPrinter().get()));
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
        QCOMPARE(objPrint.get(), static_cast<OutputTarget*>(f->printer.get()));
        QCOMPARE(f->boxes.count(), 0);

        // Print still prints on it.
        f->setVariables(1);
        f->window.run->cmdPrint->click();
        QCOMPARE(f->printer->countOf(RecordedOp::Kind::EndDoc), 1);
    }
};

CALVEX_TEST(TestReportRunPrintSetup)
#include "TestReportRunPrintSetup.moc"
