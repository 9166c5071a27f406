#pragma once

#include "components/ProgramState.h"
#include "output/PrinterTarget.h"
#include "output/modPrintGlobals.h"

#include <memory>

class QWidget;

// The Print Setup command's dialog: the printer dialog in set-up mode (choose
// the printer, its paper and orientation; no page range, no selection). The
// dialog works on the system printer itself, so the printer and the
// orientation chosen become the system printer's when it is accepted.
//
// The first time a printer other than the one of start-up (state's
// strStartupPrinter) is chosen, notice 4102 is shown in a plain OK box and
// blnPrinterWarned is set, so the notice appears once a run.
//
// Returns systemPrinter, which the caller makes the new objPrint, or nullptr
// when the dialog was cancelled or there is no printer.
std::shared_ptr<PrinterTarget> ShowPrintSetup(ProgramState& state, QWidget* parent,
                                              const std::shared_ptr<PrinterTarget>& systemPrinter);
// The same on the system printer of state.
std::shared_ptr<PrinterTarget> ShowPrintSetup(ProgramState& state, QWidget* parent);
