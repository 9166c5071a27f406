#pragma once

#include "output/PainterTarget.h"

#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>

// A PDF file as an output target, written without a printer: the batch
// renderer writes its reports through it, so it needs no print system at
// all. Its pages are those of a PDF printer (PrinterTarget with PDF output)
// of the same paper, orientation and resolution: the scale is twips over the
// whole sheet, DrawWidth is in pixels of the resolution given. NewPage starts
// the next sheet; EndDoc closes the file, and the next drawing after it
// writes the file anew. Cls does nothing on paper.
class PdfFileTarget final : public PainterTarget
{
public:
    // The resolution of an office laser printer, as the program's PDF printer has.
    static constexpr int OfficeDotsPerInch = 600;

    PdfFileTarget(const QString& fileName, const QPageSize& paper, QPageLayout::Orientation orientation,
                  int dotsPerInch = OfficeDotsPerInch);
    ~PdfFileTarget() override;

    double ScaleWidth() const override;
    double ScaleHeight() const override;

    void NewPage() override;
    void Cls() override {}
    void EndDoc() override;

    // A file is no printer.
    QString DeviceName() const override { return QString(); }

protected:
    QPaintDevice* paintDevice() override { return &m_writer; }

private:
    QPdfWriter m_writer;
};
