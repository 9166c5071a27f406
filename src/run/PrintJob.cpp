#include "run/PrintJob.h"

#include "components/modReportRequest.h"
#include "output/PdfFileTarget.h"
#include "output/PrinterTarget.h"
#include "output/modPrintReport.h"
#include "platform/FileWriteError.h"
#include "platform/MessageService.h"
#include "platform/modResource.h"
#include "widgets/FileDialogService.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace
{
constexpr qint16 SaveCaptionText = 4126;
constexpr qint16 SavedToText = 4127;
constexpr qint16 PdfFilterText = 4128;
constexpr qint16 NotSavedText = 4129;
constexpr qint16 MsgTitleText = 4052;
} // namespace

PrintJob::PrintJob(OutputTarget& target, const ReportInfo& info, const QString& definitionName)
    : m_target(target)
    , m_info(info)
    , m_definitionName(definitionName)
    , m_pdfPrinter(IsPdfPrinter(target) ? dynamic_cast<PrinterTarget*>(&target) : nullptr)
{}

PrintJob::~PrintJob() = default;

bool PrintJob::begin()
{
    m_begun = false;
    m_fileName.clear();
    if (!m_pdfPrinter)
    {
        m_begun = true;
        return true;
    }

    const QString filter = GetResourceText(PdfFilterText) + QStringLiteral(" (*.pdf)");
    QString chosen =
        GetSaveFileName(GetResourceText(SaveCaptionText), ProposedFilePath(m_info, m_definitionName), filter);
    if (chosen.isEmpty())
        return false;
    if (QFileInfo(chosen).suffix().isEmpty())
        chosen += QStringLiteral(".pdf");

    m_fileName = QFileInfo(chosen).absoluteFilePath();
    // The pages of the PDF printer, on its paper and at its resolution (so
    // text measures as on the printer, and a preview's table pages stay as
    // laid out), written to the file whole or not at all.
    const QPrinter& printer = m_pdfPrinter->printer();
    const QPageLayout layout = printer.pageLayout();
    m_file = std::make_unique<PdfFileTarget>(m_fileName, layout.pageSize(), layout.orientation(), printer.resolution());
    m_begun = true;
    return true;
}

bool PrintJob::print(const std::function<void(OutputTarget&)>& printPages)
{
    if (!m_begun)
        return false;
    m_begun = false;
    if (!m_file)
    {
        printPages(m_target);
        return true;
    }

    const std::unique_ptr<PdfFileTarget> file = std::move(m_file);
    const QString path = QDir::toNativeSeparators(m_fileName);
    try
    {
        printPages(*file);
    }
    catch (const FileWriteError& error)
    {
        MsgBox(GetResourceText(NotSavedText) + QLatin1Char('\n') + path + QLatin1Char('\n') + error.description(),
               MsgStyle::Exclamation, GetResourceText(MsgTitleText));
        return false;
    }
    MsgBox(GetResourceText(SavedToText) + QLatin1Char('\n') + path, MsgStyle::Information,
           GetResourceText(MsgTitleText));
    return true;
}

bool PrintJob::IsPdfPrinter(const OutputTarget& target)
{
    // A printer target calls itself "Print to PDF" exactly when it writes PDF
    // (no print queue has that name: queue names hold no blanks).
    const auto* printer = dynamic_cast<const PrinterTarget*>(&target);
    return printer && printer->DeviceName() == PrinterTarget::pdfPrinterName();
}

QString PrintJob::ProposedFilePath(const ReportInfo& info, const QString& definitionName)
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty() || !QDir(folder).exists())
        folder = QDir::homePath();
    return QDir(folder).filePath(ProposedReportFileName(info, definitionName));
}

bool PrintReportJob(OutputTarget& target, const ReportInfo& info, const QString& definitionName, bool siUnits,
                    const QCRuleSet& rules)
{
    PreparedReport report;
    if (!PrepareReport(info, siUnits, report, rules))
        return false;
    PrintJob job(target, info, definitionName);
    if (!job.begin())
        return false;
    return job.print([&report](OutputTarget& pages) { PrintPreparedReport(pages, report); });
}

bool PrintPreviewedReportJob(OutputTarget& target, PreparedReport& report, const QString& definitionName)
{
    PrintJob job(target, report.Info, definitionName);
    if (!job.begin())
        return false;
    return job.print([&report](OutputTarget& pages) { PrintPreviewedReport(pages, report); });
}
