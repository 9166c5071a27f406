#pragma once

#include "components/ProgramState.h"
#include "output/OutputTarget.h"
#include "output/PrinterTarget.h"

#include <QString>

#include <memory>

// The printers of the program. The printer state the whole program shares
// (objPrint, strStartupPrinter, blnPrinterWarned, blnAppReady and the system
// printer) is a member of the program's state.

// A printer for the system's default printer; without one the first printer
// there is; on a machine without any printer a PDF printer, so that preview
// and print work everywhere. The PDF printer writes "QC Report.pdf" in the
// user's documents folder unless its output file is changed.
std::unique_ptr<QPrinter> CreateSystemPrinter();

// A printer that writes a PDF file at the resolution of an office printer
// (line widths are in device pixels, so lines come out as thick as on paper).
std::unique_ptr<QPrinter> CreatePdfPrinter(const QString& fileName);

// The system printer of state, created on first use and kept in it.
std::shared_ptr<PrinterTarget> SystemPrinter(ProgramState& state);
