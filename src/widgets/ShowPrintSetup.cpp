#include "widgets/ShowPrintSetup.h"

#include "platform/MessageService.h"
#include "platform/modResource.h"

#include <QPrintDialog>

namespace
{
constexpr qint16 IdOtherPrinterNotice = 4102;
}

std::shared_ptr<PrinterTarget> ShowPrintSetup(ProgramState& state, QWidget* parent,
                                              const std::shared_ptr<PrinterTarget>& systemPrinter)
{
    if (!systemPrinter)
        return nullptr;

    QPrintDialog dialog(&systemPrinter->printer(), parent);
    dialog.setWindowTitle(QStringLiteral("Print Setup"));
    // Set-up mode: a printer and its paper, nothing about what to print.
    dialog.setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize);
    if (dialog.exec() != QDialog::Accepted)
        return nullptr;

    // The dialog changed printer, paper and orientation on the printer itself.
    systemPrinter->printerChanged();

    if (systemPrinter->DeviceName() != state.strStartupPrinter && !state.blnPrinterWarned)
    {
        state.blnPrinterWarned = true;
        MsgBox(GetResourceText(IdOtherPrinterNotice), MsgStyle::OkOnly);
    }
    return systemPrinter;
}

std::shared_ptr<PrinterTarget> ShowPrintSetup(ProgramState& state, QWidget* parent)
{
    return ShowPrintSetup(state, parent, SystemPrinter(state));
}
