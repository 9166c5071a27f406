#pragma once

#include "components/ProgramState.h"
#include "output/OutputTarget.h"

#include <functional>
#include <memory>

// Where the start-up takes its output target from: the system printer (with
// the "Print to PDF" printer where a machine has none). Tests put another
// source in.
using PrinterSource = std::function<std::shared_ptr<OutputTarget>()>;

// The target of the source (by default the system printer of state); raises
// RuntimeError 484 when there is none.
std::shared_ptr<OutputTarget> StartupPrinter(ProgramState& state);

// Replaces the source; an empty function puts the system printer back.
void SetPrinterSource(PrinterSource source);
