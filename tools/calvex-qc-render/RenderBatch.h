#pragma once

#include "RenderOptions.h"
#include "ReportPipeline.h"
#include "RunStatus.h"
#include "SavedDefinition.h"
#include "components/ReportInfo.h"
#include "output/PreparedReport.h"
#include "rules/QCRuleSet.h"

#include <QList>
#include <QStringList>

#include <functional>

// calvex-qc-render --all: every saved definition of both tabs (those of PF,
// then those of GX, each tab by name) for each QC subject of the list, in the
// list's order, in one process.
//
// For every subject and definition the batch builds the request as a single
// report builds it (the definition's variables, the subject, the period),
// prepares it as Print prepares it, and hands the prepared report to the
// report action, which does what the command line asks of each report
// (writes its PDF, checks its rules, ...) and returns its exit status
// (RunStatus). A report to be written goes on to the report writer, which
// says what is to be drawn on a PDF target; it is drawn on a writer thread of
// the night's ReportPipeline while the next reports are prepared, and the
// run's lines keep the order of the reports all the same. run()
// returns the worst status met. The run goes on after every failure; each
// failure is one line on stderr:
//
//   - a definition the program would not run: once, before any subject
//     ("PF "Ten Charts": ..."); it is left out for every subject;
//   - an unknown subject ID ("there is no QC subject with the ID ...");
//   - a report that cannot be prepared, or whose action fails (the action's
//     RenderFailure or a RuntimeError of the suite): "QC001, PF "Spirometry": ...".
//
// A subject without visits of a tab in the period has no report of that tab:
// one line on stdout (on stderr with --check) names the definitions skipped ("QC003 has no GX visits
// from 01/01/2024 to 06/30/2024: skipped "Exercise Peak", "Resting""), and
// the status is not touched. A run in which no report at all had visits is a
// failure, though: it has nothing to show for itself.
//
// The report layouts' message boxes (a chart left out for want of results)
// are lines on stderr that name their report (BatchMessageService); they do
// not change the status.
//
// A subject listed twice (or by IDs that differ in case alone) is reported once.
class RenderBatch final
{
public:
    using ReportAction = std::function<int(const SavedDefinition& definition, PreparedReport& report)>;
    // Called after the action, on the same thread: the drawing of the
    // report's PDF document, to be done on a writer.
    using ReportWriter =
        std::function<ReportPipeline::Work(const SavedDefinition& definition, const PreparedReport& report)>;

    // Each report is prepared with rules (its charts checked against them).
    RenderBatch(const RenderOptions& options, const QCRuleSet& rules, bool siUnits);

    // Without a writer nothing is drawn, and no writer thread started.
    int run(const ReportAction& action, const ReportWriter& writer = {});

private:
    // The definitions the program would run, each with its variables.
    struct Definition
    {
        SavedDefinition saved;
        ReportInfo request; // variables and tab; no subject yet
    };

    QList<Definition> loadDefinitions();
    // One subject's reports of one tab; the names of the definitions skipped
    // for want of visits are added to skipped.
    void runTab(const ReportInfo& subject, qint16 tab, const ReportAction& action, QStringList& skipped);
    // Prepares one report and runs the action on it; false when the period
    // holds no visit of its tab.
    bool runReport(const Definition& definition, const ReportInfo& subject, const QString& label,
                   const ReportAction& action);

    const RenderOptions& m_options;
    const QCRuleSet& m_rules;
    const bool m_siUnits;
    QList<Definition> m_definitions;
    const ReportWriter* m_writer = nullptr; // while run() runs
    ReportPipeline* m_pipeline = nullptr;   // while run() runs, with a writer
    RunStatus m_status;
    qint32 m_reported = 0;
    qint32 m_skipped = 0;
};
