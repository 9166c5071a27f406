#pragma once

#include "components/ReportInfo.h"
#include "output/PreparedReport.h"
#include "rules/QCRuleSet.h"

#include <QString>

// The report of a request, prepared as Print prepares it (PrepareReport),
// its charts checked against rules.
// The program's Print stops without a word when there is nothing to chart or
// no table; here RenderFailure says why (reportName names the definition).
// False when the period holds no visit of the request's tab: the report has
// no table row and nothing to chart, and the caller decides what that means
// (NoVisitsText says it).
bool PrepareRenderedReport(const ReportInfo& info, const QString& reportName, bool siUnits, const QCRuleSet& rules,
                           PreparedReport& report);

// "QC001 has no PF visits from 01/01/2024 to 06/30/2024", or "... up to
// 06/30/2024" for an open start.
QString NoVisitsText(const ReportInfo& info);

// "from 01/01/2024 to 06/30/2024", or "up to 06/30/2024" for an open start.
QString PeriodText(const ReportInfo& info);
