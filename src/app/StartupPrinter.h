#pragma once

#include "components/ProgramState.h"
#include "output/OutputTarget.h"

#include <memory>

// The start-up's output target: the one of state's printerSource when it has
// one, otherwise the system printer of state (with the "Print to PDF" printer
// where a machine has none). Raises RuntimeError 484 when there is none.
std::shared_ptr<OutputTarget> StartupPrinter(ProgramState& state);
