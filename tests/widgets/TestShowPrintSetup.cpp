#include "common/ModalDriver.h"
#include "common/TestMain.h"
#include "common/TestStrings.h"
#include "platform/RecordingMessageService.h"
#include "widgets/ShowPrintSetup.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QPageSize>
#include <QPrintDialog>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

namespace
{
void clickButton(QDialog* dialog, QDialogButtonBox::ButtonRole role)
{
    const auto boxes = dialog->findChildren<QDialogButtonBox*>();
    for (QDialogButtonBox* box : boxes)
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
    // Without such a button the dialog is closed anyway; the test's checks then fail.
    dialog->done(-1);
}

void acceptPrintDialog()
{
    ModalDriver::whenModal<QPrintDialog>(
        [](QPrintDialog* dialog) { clickButton(dialog, QDialogButtonBox::AcceptRole); });
}

void cancelPrintDialog()
{
    ModalDriver::whenModal<QPrintDialog>(
        [](QPrintDialog* dialog) { clickButton(dialog, QDialogButtonBox::RejectRole); });
}
} // namespace

class TestShowPrintSetup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::shared_ptr<PrinterTarget> m_printer;
    std::unique_ptr<ProgramState> m_state;

    // A PDF printer on Letter paper, writing into the test's own folder.
    std::shared_ptr<PrinterTarget> pdfPrinter()
    {
        auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer->setOutputFormat(QPrinter::PdfFormat);
        printer->setResolution(600);
        printer->setPageSize(QPageSize(QPageSize::Letter));
        printer->setPageOrientation(QPageLayout::Portrait);
        printer->setOutputFileName(m_dir.filePath(QStringLiteral("setup.pdf")));
        return std::make_shared<PrinterTarget>(std::move(printer));
    }

private slots:
    void init()
    {
        m_state = std::make_unique<ProgramState>();
        m_printer = pdfPrinter();
        m_state->strStartupPrinter = m_printer->DeviceName();
        m_state->blnPrinterWarned = false;
    }

    void cleanup()
    {
        m_state.reset();
        m_printer.reset();
    }

    void acceptingReturnsTheSystemPrinter()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        QString title;
        bool pageRange = true;
        bool selection = true;
        ModalDriver::whenModal<QPrintDialog>([&](QPrintDialog* dialog) {
            title = dialog->windowTitle();
            pageRange = dialog->testOption(QAbstractPrintDialog::PrintPageRange);
            selection = dialog->testOption(QAbstractPrintDialog::PrintSelection);
            clickButton(dialog, QDialogButtonBox::AcceptRole);
        });
        const std::shared_ptr<PrinterTarget> chosen = ShowPrintSetup(*m_state, nullptr, m_printer);
        QCOMPARE(chosen.get(), m_printer.get());
        QCOMPARE(title, QStringLiteral("Print Setup"));
        QVERIFY(!pageRange);
        QVERIFY(!selection);
        // The same printer as at start-up: no notice.
        QCOMPARE(boxes.count(), 0);
        QVERIFY(!m_state->blnPrinterWarned);
        QCOMPARE(chosen->ScaleWidth(), 12240.0);
    }

    void cancellingGivesNothing()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        m_state->strStartupPrinter = QStringLiteral("Lab LaserJet");
        cancelPrintDialog();
        QVERIFY(ShowPrintSetup(*m_state, nullptr, m_printer) == nullptr);
        QCOMPARE(boxes.count(), 0);
        QVERIFY(!m_state->blnPrinterWarned);
        QCOMPARE(m_printer->ScaleWidth(), 12240.0);
    }

    void anotherPrinterThanAtStartUpIsNoticedOnce()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        m_state->strStartupPrinter = QStringLiteral("Lab LaserJet");

        acceptPrintDialog();
        QCOMPARE(ShowPrintSetup(*m_state, nullptr, m_printer).get(), m_printer.get());
        QCOMPARE(boxes.count(), 1);
        QCOMPARE(boxes.last().text, QStringLiteral("T4102"));
        QCOMPARE(boxes.last().style, 0);
        QVERIFY(m_state->blnPrinterWarned);

        acceptPrintDialog();
        QCOMPARE(ShowPrintSetup(*m_state, nullptr, m_printer).get(), m_printer.get());
        QCOMPARE(boxes.count(), 1);

        cancelPrintDialog();
        QVERIFY(ShowPrintSetup(*m_state, nullptr, m_printer) == nullptr);
        QCOMPARE(boxes.count(), 1);
    }

    void orientationChosenInTheDialogIsThePrinters()
    {
        ScopedTestStrings strings;
        RecordingMessageService boxes;
        bool landscapeFound = false;
        ModalDriver::whenModal<QPrintDialog>([&](QPrintDialog* dialog) {
            // Page orientation lives in the printer's properties dialog.
            ModalDriver::whenModal<QDialog>([&](QDialog* properties) {
                if (auto* landscape = properties->findChild<QAbstractButton*>(QStringLiteral("landscape")))
                {
                    landscapeFound = true;
                    landscape->click();
                }
                clickButton(properties, QDialogButtonBox::AcceptRole);
            });
            dialog->findChild<QAbstractButton*>(QStringLiteral("properties"))->click();
            clickButton(dialog, QDialogButtonBox::AcceptRole);
        });
        const std::shared_ptr<PrinterTarget> chosen = ShowPrintSetup(*m_state, nullptr, m_printer);
        QVERIFY(landscapeFound);
        QVERIFY(chosen);
        QCOMPARE(chosen->printer().pageLayout().orientation(), QPageLayout::Landscape);
        QCOMPARE(chosen->ScaleWidth(), 15840.0);
        QCOMPARE(chosen->ScaleHeight(), 12240.0);
    }

    void noPrinterGivesNothing()
    {
        RecordingMessageService boxes;
        QVERIFY(ShowPrintSetup(*m_state, nullptr, nullptr) == nullptr);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(boxes.count(), 0);
    }
};

CALVEX_TEST(TestShowPrintSetup)
#include "TestShowPrintSetup.moc"
