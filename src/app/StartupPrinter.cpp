#include "app/StartupPrinter.h"

#include "output/modPrintGlobals.h"
#include "platform/RuntimeError.h"

namespace
{
PrinterSource& source()
{
    static PrinterSource current;
    return current;
}

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
    std::shared_ptr<OutputTarget> target = source() ? source()() : systemPrinter(state);
    if (!target)
        throw RuntimeError(ErrorNumber::PrinterError, QStringLiteral("Printer"),
                           QStringLiteral("Problem getting printer information from the system. "
                                          "Make sure the printer is set up correctly."));
    return target;
}

void SetPrinterSource(PrinterSource source_)
{
    source() = std::move(source_);
}
