#include "output/modPrintGlobals.h"

#include <QDir>
#include <QPrinterInfo>
#include <QStandardPaths>

namespace
{
// The resolution of an office laser printer: DrawWidth is in device pixels,
// so lines on the PDF are as thick as on paper.
constexpr int PdfDotsPerInch = 600;
} // namespace

std::unique_ptr<QPrinter> CreateSystemPrinter()
{
    QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (info.isNull())
    {
        const QList<QPrinterInfo> printers = QPrinterInfo::availablePrinters();
        if (!printers.isEmpty())
            info = printers.first();
    }
    if (!info.isNull())
    {
        auto printer = std::make_unique<QPrinter>(info, QPrinter::HighResolution);
        // Qt starts a printer on its own default paper whenever the printer
        // takes it (A4); the pages are laid out for the paper the printer is
        // set up with.
        const QPageSize paper = info.defaultPageSize();
        if (paper.isValid())
            printer->setPageSize(paper);
        // The print system gets the pages as PDF, so the resolution is only
        // the unit the pages are drawn in. Text measured at another resolution
        // rounds differently and can move a table row to the next page: at
        // the PDF printer's resolution a printer lays out the same pages as
        // the PDF printer and the batch renderer.
        printer->setResolution(PdfDotsPerInch);
        return printer;
    }

    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty())
        folder = QDir::homePath();
    return CreatePdfPrinter(QDir(folder).filePath(QStringLiteral("QC Report.pdf")));
}

std::unique_ptr<QPrinter> CreatePdfPrinter(const QString& fileName)
{
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setResolution(PdfDotsPerInch);
    printer->setOutputFileName(fileName);
    return printer;
}

std::shared_ptr<PrinterTarget> SystemPrinter(ProgramState& state)
{
    if (!state.systemPrinter)
        state.systemPrinter = std::make_shared<PrinterTarget>(CreateSystemPrinter());
    return state.systemPrinter;
}
