#pragma once

#include "components/ReportInfo.h"
#include "output/OutputTarget.h"
#include "output/PreparedReport.h"
#include "rules/QCRuleSet.h"

#include <QString>

#include <functional>
#include <memory>

class PdfFileTarget;
class PrinterTarget;

// One print job of the QC report on a printer, around the pages that the
// print path (modPrintReport) draws.
//
// On a real printer a job is the pages and EndDoc, nothing more: the spooler
// takes the job as it is. On the machine's "Print to PDF" printer (the
// printer a machine without any printer gets, see CreateSystemPrinter) the
// pages become a file, so the job asks where to save it before the first
// page and says where it is after EndDoc:
//
//   PrintJob job(*objPrint, info, definitionName);
//   if (!job.begin())        // the user cancelled the save dialog
//       return;              // nothing is printed
//   job.print([&](OutputTarget& pages) { PrintPreparedReport(pages, report); });
//
// The save dialog goes through FileDialogService (tests answer it), with
// caption 4126 and filter 4128; it proposes ProposedReportFileName() in the user's
// documents folder. The file is written whole or not at all: the pages go to
// a PDF file target of the printer's paper, orientation and resolution
// (PdfFileTarget), not through the printer, whose PDF output reports no
// failure of the file. After a checked write the job shows text 4127, a line
// break and the file's full path, in an information box (style 64) titled
// 4052. When the file cannot be written (a full disk, a read-only folder),
// the file that was there stays as it was, and the job shows text 4129, the
// path and the system's reason on lines of their own, in an exclamation box
// (style 48) titled 4052.
class PrintJob final
{
public:
    // definitionName: the report definition's name as cboReports shows it
    // ("" when the definition has no name yet). The job keeps a reference to
    // target, which must outlive it.
    PrintJob(OutputTarget& target, const ReportInfo& info, const QString& definitionName);
    ~PrintJob();
    PrintJob(const PrintJob&) = delete;
    PrintJob& operator=(const PrintJob&) = delete;

    // Before the first page. For the PDF printer: asks where to save and
    // makes the answer the job's file (".pdf" added when the name has no
    // suffix); false when the user cancelled, and then nothing may be
    // printed. For any other printer: true, and nothing is asked.
    bool begin();

    // The job's pages, after a begin() that let it go ahead: printPages draws
    // them, EndDoc last, on the printer, or for the PDF printer on the job's
    // file. For the PDF printer the user then learns where the file is (4127),
    // or why it could not be written (4129); false then. A run-time error
    // of the drawing reaches the caller, and no file is written. False, with
    // nothing drawn, when begin() was not called or returned false.
    bool print(const std::function<void(OutputTarget&)>& printPages);

    // The job writes a PDF file (target is the "Print to PDF" printer).
    bool savesToFile() const { return m_pdfPrinter != nullptr; }
    // The file chosen in begin() ("" before, or for a real printer).
    QString fileName() const { return m_fileName; }

    // The target is the machine's "Print to PDF" printer: a printer target
    // whose output format is PDF.
    static bool IsPdfPrinter(const OutputTarget& target);

    // ProposedReportFileName() (components/modReportRequest) in the user's
    // documents folder (the home folder when the system names none or it
    // does not exist).
    static QString ProposedFilePath(const ReportInfo& info, const QString& definitionName);

private:
    OutputTarget& m_target;
    ReportInfo m_info;
    QString m_definitionName;
    PrinterTarget* m_pdfPrinter = nullptr; // the target, when it is the PDF printer
    bool m_begun = false;
    QString m_fileName;
    std::unique_ptr<PdfFileTarget> m_file; // the PDF printer's pages, from begin() on
};

// Print's whole job: PrepareReport (graph series, the charts checked against
// rules, then the table data), then begin(), then print() of
// PrintPreparedReport (set-up twice, graph pages, table pages, violation
// pages when there are rules, EndDoc). False when nothing was printed: the
// preparation failed (no dialog is shown then), the user cancelled the save
// dialog or the file could not be written (the job said why). A store error
// (RuntimeError) reaches the caller before anything is drawn.
bool PrintReportJob(OutputTarget& target, const ReportInfo& info, const QString& definitionName, bool siUnits,
                    const QCRuleSet& rules = QCRuleSet());

// The preview's Print: begin() for the request the preview prepared
// (report.Info), then print() of PrintPreviewedReport (the pages as the
// preview laid them out, no new preparation, EndDoc). False when the user
// cancelled the save dialog or the file could not be written.
bool PrintPreviewedReportJob(OutputTarget& target, PreparedReport& report, const QString& definitionName);
