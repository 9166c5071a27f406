#pragma once

#include "output/OutputTarget.h"
#include "output/PrinterTarget.h"

#include <QString>

#include <memory>

// The printer state the whole program shares: the start-up sets it, Print
// Setup changes it, the report run and the preview print on it.

// The output target of all printing: the system printer chosen at start-up
// or by Print Setup; empty while there is none.
extern std::shared_ptr<OutputTarget> objPrint;
// The device name of the printer current at start-up, to notice a change.
extern QString strStartupPrinter;
// The notice about a changed printer was shown (it is shown once a run).
extern bool blnPrinterWarned;
// Printing is possible: false when the printer could not be read at start-up.
extern bool blnAppReady;

// A printer for the system's default printer; without one the first printer
// there is; on a machine without any printer a PDF printer, so that preview
// and print work everywhere. The PDF printer writes "QC Report.pdf" in the
// user's documents folder unless its output file is changed.
std::unique_ptr<QPrinter> CreateSystemPrinter();

// A printer that writes a PDF file at the resolution of an office printer
// (line widths are in device pixels, so lines come out as thick as on paper).
std::unique_ptr<QPrinter> CreatePdfPrinter(const QString& fileName);

// The system printer of this run, created on first use.
std::shared_ptr<PrinterTarget> SystemPrinter();
