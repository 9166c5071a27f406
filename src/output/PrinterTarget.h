#pragma once

#include "output/PainterTarget.h"

#include <QPrinter>

#include <memory>

// A printer as an output target: a system printer, or a PDF file when the
// printer's output format is PDF. The scale is twips over the whole sheet
// (ScaleWidth = the paper's width in twips, origin at its corner), whatever
// the printer's margins. NewPage starts the next sheet, EndDoc ends the job
// and hands it to the spooler (or closes the PDF file); the next drawing
// after EndDoc begins a new job. Cls does nothing on paper.
class PrinterTarget final : public PainterTarget
{
public:
    explicit PrinterTarget(std::unique_ptr<QPrinter> printer);
    ~PrinterTarget() override;

    // The name a PDF printer goes by.
    static QString pdfPrinterName() { return QStringLiteral("Print to PDF"); }

    QPrinter& printer() { return *m_printer; }
    // Takes in a change of printer, paper or orientation made on printer()
    // (for instance by the printer dialog): new resolution, new metrics.
    void printerChanged();

    double ScaleWidth() const override;
    double ScaleHeight() const override;

    void NewPage() override;
    void Cls() override {}
    void EndDoc() override;

    // The printer's name; pdfPrinterName() for PDF output.
    QString DeviceName() const override;

protected:
    QPaintDevice* paintDevice() override { return m_printer.get(); }

private:
    std::unique_ptr<QPrinter> m_printer;
};
