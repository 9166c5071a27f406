#pragma once

#include "components/ReportInfo.h"
#include "output/OutputTarget.h"
#include "output/PreparedReport.h"
#include "rules/QCRuleSet.h"

// The whole QC report on one target, shared by the main window's Print, the
// preview and the batch renderer, so that all of them draw the same pages in
// the same order: the graph pages first (three charts a page), then the table
// pages, numbered on from them, and when the run checks QC rules the "QC Rule
// Violations" pages, numbered on again (modPrintViolations). No page shows a
// page total.
//
// The QC rules of a run are given to its preparation; without them (the
// default) nothing is checked and the pages are the graph and table pages
// alone, every drawing operation as it has always been.
//
// A store error while the graph series are fetched (RuntimeError) reaches the
// caller, before anything is drawn; a table whose data set cannot be read
// only makes its preparation fail.

// Print's preparation into report, which takes its own copy of info and lets
// go of what an earlier preparation left in it: the graph series, then the
// charts checked against rules, and only when there is at least one series
// the table's data set. False when either fails.
bool PrepareReport(const ReportInfo& info, bool siUnits, PreparedReport& report, const QCRuleSet& rules = QCRuleSet());

// The preview's preparation, step by step: the copy of info, the graph list
// released and built again (false, with no table prepared, when there is no
// series), the charts checked against rules, the table released and prepared
// again, and the table's and the violation list's pages laid out on target. A
// table that cannot be prepared is released once more, which leaves the graph
// pages (and the violation pages) alone to show.
bool PrepareReportPreview(OutputTarget& target, const ReportInfo& info, bool siUnits, PreparedReport& report,
                          const QCRuleSet& rules = QCRuleSet());

// Closes the data set of every graph series and empties the graph list, and
// with it the violations found on the charts.
void ReleaseReportGraphs(PreparedReport& report);
// Closes the table's data set and empties the table and its page list.
void ReleaseReportTable(PreparedReport& report);

// Measures the table's columns on target and lays out its pages anew, and
// does the same for the violation list when the run checks QC rules; without
// a table there are no table pages, without charts no violation pages.
void SetUpReportPages(OutputTarget& target, PreparedReport& report);

// Print after PrepareReport: the table is laid out on the printer, the graph
// pages are printed, the table is laid out again (now that the job has begun,
// with the printer's own metrics) and its pages are printed, then the
// violation list is laid out and its pages are printed; EndDoc ends the job.
void PrintPreparedReport(OutputTarget& target, PreparedReport& report);

// The preview's Print: the pages as the preview laid them out, then EndDoc.
void PrintPreviewedReport(OutputTarget& target, PreparedReport& report);

// Print from a request: PrepareReport, then PrintPreparedReport. False, with
// nothing printed, when the preparation failed.
bool PrintReport(OutputTarget& target, const ReportInfo& info, bool siUnits, const QCRuleSet& rules = QCRuleSet());

// Graph pages of the report (G); its pages 1..G are graph pages.
qint32 ReportGraphPageCount(const PreparedReport& report);
// All pages: G graph pages, one page per element of the table page list and
// one per violation page.
qint32 ReportPageCount(const PreparedReport& report);

// Draws page `page` (1-based: graph pages, table pages, violation pages) as
// the preview shows it: the target is cleared with Cls, no new sheet is
// started. False, with nothing drawn, for a page the report does not have.
bool DrawReportPage(OutputTarget& target, PreparedReport& report, qint32 page);
