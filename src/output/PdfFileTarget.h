#pragma once

#include "output/PainterTarget.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>

// A PDF file as an output target, written without a printer: the batch
// renderer writes its reports through it, so it needs no print system at
// all. Its pages are those of a PDF printer (PrinterTarget with PDF output)
// of the same paper, orientation and resolution: the scale is twips over the
// whole sheet, DrawWidth is in pixels of the resolution given. NewPage starts
// the next sheet; EndDoc writes the file, and the next drawing after it
// starts the document anew. Cls does nothing on paper.
//
// The file is written whole or not at all: the pages are drawn in memory,
// and EndDoc hands the finished document to WholeFileWriter. When the file
// cannot be written, EndDoc throws FileWriteError with the system's reason
// and the file that was there stays as it was. Nothing drawn, no file: a
// target that only measured, or that goes before EndDoc, writes nothing.
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

    // Its text is measured on the PDF writer at its resolution, whether a
    // document is under way or not, and each text is shaped once for all the
    // documents of the target (TextShaper).
    bool MeasuresAlikeBeforeTheJob() const override { return true; }

    // The file the next EndDoc writes.
    QString fileName() const { return m_fileName; }

    // Starts the next document of a run of many on this one target, each
    // with its own file: the fonts are set up and the texts shaped once for
    // all of them. The target takes the state of a new one (font, pen,
    // position), so that each document is drawn as on a target of its own;
    // a document left unfinished (a drawing that failed halfway) is dropped
    // unwritten.
    void startDocument(const QString& fileName);

protected:
    QPaintDevice* paintDevice() override { return &m_writer; }
    void aboutToPaint() override;

private:
    QString m_fileName;
    QBuffer m_document; // the PDF as drawn so far; the writer writes into it
    QPdfWriter m_writer;
};
