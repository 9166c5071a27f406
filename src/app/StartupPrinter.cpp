#include "app/StartupPrinter.h"

#include "output/modPrintGlobals.h"
#include "platform/RuntimeError.h"

namespace
{
std::shared_ptr<OutputTarget> systemPrinter(ProgramState& state)
{
    std::shared_ptr<PrinterTarget> printer = SystemPrinter(state);
    if (!printer || !printer->printer().isValid())
        return nullptr;
    return printer;
}
} // namespace

std::shared_ptr<OutputTarget> StartupPrinter(ProgramState& state)
{
    std::shared_ptr<OutputTarget> target = state.printerSource ? state.printerSource() : systemPrinter(state);
    if (!target)
        throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("Printer"),
                           QStringLiteral("Problem getting printer information from the system. "
                                          "Make sure the printer is set up correctly."));
    return target;
}
