#pragma once

#include "components/ReportInfo.h"
#include "output/OutputTarget.h"
#include "output/PreparedReport.h"
#include "output/ViolationList.h"
#include "platform/Recordset.h"
#include "rules/QCReading.h"

#include <QList>
#include <QString>

// QC rule checking of a report run and its "QC Rule Violations" pages.
//
// With rules, every chart's visits are checked against the chart's own mean
// and SD (QCRuleEvaluator); the visits that broke a rule are the chart's
// violations, drawn as filled markers, and all of them together, in date
// order, are listed on the violation pages after the table pages, numbered on
// from them. A period without violations gets one page that says so.
//
// The pages are drawn inside the page frame: header and footer as on every
// page, the title "QC Rule Violations", then one line per violation under the
// column headings Date, Table, Variable, Value and Rules; or the one line "No
// QC rule violations in this period.".

// The visits of a chart's data set (field 0 the date, field 1 the value) as
// the rules take them, in the data set's order: a value that is no number is
// missing. The data set is left on its first record.
QList<QCReading> SeriesReadings(Recordset& data);

// Checks the report's charts against rules: sets report.Rules, each series'
// violations and the report's violation list (without pages). DLCO-12 applies
// to the charts of the catalogue variable named "DLCO" (any case), in the
// limits of siUnits; the catalogue is asked for the names only when the rules
// hold DLCO-12. With no rules it changes nothing but clearing what an earlier
// check left. Store errors (RuntimeError) reach the caller.
void CheckReportRules(PreparedReport& report, const QCRuleSet& rules, bool siUnits);

// Measures the list's columns on target and lays out its pages anew.
void SetUpViolationPages(OutputTarget& target, ViolationList& list);

// Draws one violation page; its number is page.PageNumber + pageOffset (the
// graph and table pages before it). On the printer a new sheet is started
// before it when a page came before. Returns the next page number, or 0 when
// there is no target or a run-time error occurred.
qint32 PrintViolationPage(OutputTarget* target, const ViolationList& list, const ReportInfo& info,
                          const ViolationPage& page, qint32 pageOffset, bool toPrinter);

// A violation's cells as the pages print them: the date "mm/dd/yyyy", the
// table, the variable, the value with the variable's decimal places and the
// rules ("2-2s, 4-1s").
QStringList ViolationCells(const ReportViolation& violation);
