#include "output/PrinterTarget.h"

#include "platform/RuntimeError.h"

namespace
{
constexpr double TwipsPerPoint = 20;
}

PrinterTarget::PrinterTarget(std::unique_ptr<QPrinter> printer)
    : m_printer(std::move(printer))
{
    printerChanged();
}

PrinterTarget::~PrinterTarget()
{
    // The painter must end while the printer still exists.
    endPainting();
}

void PrinterTarget::printerChanged()
{
    // Coordinates count from the sheet's corner, not from the printable area.
    m_printer->setFullPage(true);
    setResolution(m_printer->resolution());
}

double PrinterTarget::ScaleWidth() const
{
    return m_printer->paperRect(QPrinter::Point).width() * TwipsPerPoint;
}

double PrinterTarget::ScaleHeight() const
{
    return m_printer->paperRect(QPrinter::Point).height() * TwipsPerPoint;
}

void PrinterTarget::NewPage()
{
    painter();
    if (!m_printer->newPage())
        throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("PrinterTarget"),
                           QStringLiteral("The printer could not start a new page."));
    homePosition();
}

void PrinterTarget::EndDoc()
{
    endPainting();
    homePosition();
}

QString PrinterTarget::DeviceName() const
{
    if (m_printer->outputFormat() == QPrinter::PdfFormat)
        return pdfPrinterName();
    return m_printer->printerName();
}
