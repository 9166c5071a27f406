#include "RenderBatch.h"

#include "BatchMessageService.h"
#include "RenderConsole.h"
#include "RenderFailure.h"
#include "RenderPreparation.h"
#include "RenderRequest.h"
#include "platform/RegistryReadBatch.h"
#include "platform/RuntimeError.h"

#include <QSet>

#include <functional>

#include <optional>

namespace
{
// "PF "Spirometry"": a definition as the batch's lines name it.
QString definitionLabel(const SavedDefinition& definition)
{
    return QStringLiteral("%1 \"%2\"").arg(RenderOptions::tabName(definition.tab), definition.name);
}

// Runs work and gives its status. A RenderFailure or a RuntimeError it raises
// is one line on stderr, "label: reason", and the status is Failed.
int Guarded(const QString& label, const std::function<int()>& work)
{
    try
    {
        return work();
    }
    catch (const RenderFailure& failure)
    {
        PrintFailure(label + QStringLiteral(": ") + failure.message);
    }
    catch (const RuntimeError& error)
    {
        PrintFailure(label + QStringLiteral(": ") + error.description());
    }
    return RunStatus::Failed;
}

QString quotedList(const QStringList& names)
{
    QStringList quoted;
    for (const QString& name : names)
        quoted.append(QLatin1Char('"') + name + QLatin1Char('"'));
    return quoted.join(QStringLiteral(", "));
}
} // namespace

RenderBatch::RenderBatch(const RenderOptions& options, const QCRuleSet& rules, bool siUnits)
    : m_options(options)
    , m_rules(rules)
    , m_siUnits(siUnits)
{}

int RenderBatch::run(const ReportAction& action, const ReportWriter& writer)
{
    const BatchMessageService boxes;
    // The night's settings are read from one reading of the registry file:
    // every report of the run is made with the same ones, and the store made
    // for each report does not read and parse the file anew.
    const RegistryReadBatch settings;
    m_writer = &writer;
    std::optional<ReportPipeline> pipeline;
    if (writer)
        pipeline.emplace(ReportPipeline::writersForThisMachine());
    m_pipeline = pipeline ? &*pipeline : nullptr;
    m_definitions = loadDefinitions();

    QSet<QString> done;
    for (const QString& id : m_options.subjects)
    {
        ReportInfo subject;
        subject.FromDate = m_options.from;
        subject.ToDate = m_options.to;
        try
        {
            FindRenderSubject(id, subject);
        }
        catch (const RenderFailure& failure)
        {
            PrintFailure(failure.message);
            m_status.meet(RunStatus::Failed);
            continue;
        }
        catch (const RuntimeError& error)
        {
            PrintFailure(QStringLiteral("%1: %2").arg(id, error.description()));
            m_status.meet(RunStatus::Failed);
            continue;
        }
        if (done.contains(subject.PatientID))
            continue;
        done.insert(subject.PatientID);

        for (const qint16 tab : {qint16(0), qint16(1)})
        {
            QStringList skipped;
            runTab(subject, tab, action, skipped);
            if (!skipped.isEmpty())
            {
                subject.TestTab = tab;
                // A check's stdout holds the check alone.
                PrintLine(m_options.check ? stderr : stdout,
                          NoVisitsText(subject) + QStringLiteral(": skipped ") + quotedList(skipped));
            }
        }
    }

    if (m_pipeline)
    {
        m_status.meet(m_pipeline->finish());
        m_pipeline = nullptr;
    }
    if (m_reported == 0 && m_skipped > 0 && m_status.value() == RunStatus::Done)
    {
        ReportInfo period;
        period.FromDate = m_options.from;
        period.ToDate = m_options.to;
        PrintFailure(QStringLiteral("no report: none of the QC subjects listed has visits ") + PeriodText(period));
        m_status.meet(RunStatus::Failed);
    }
    m_writer = nullptr;
    return m_status.value();
}

QList<RenderBatch::Definition> RenderBatch::loadDefinitions()
{
    QList<Definition> definitions;
    const QList<SavedDefinition> saved = ListSavedDefinitions();
    if (saved.isEmpty())
    {
        PrintFailure(QStringLiteral("there is no saved QC report"));
        m_status.meet(RunStatus::Failed);
    }
    for (const SavedDefinition& definition : saved)
    {
        Definition loaded{definition, {}};
        const int status = Guarded(definitionLabel(definition), [&] {
            LoadDefinitionVariables(definition, m_siUnits, loaded.request);
            return RunStatus::Done;
        });
        m_status.meet(status);
        if (status == RunStatus::Done)
            definitions.append(loaded);
    }
    return definitions;
}

void RenderBatch::runTab(const ReportInfo& subject, qint16 tab, const ReportAction& action, QStringList& skipped)
{
    for (const Definition& definition : std::as_const(m_definitions))
    {
        if (definition.saved.tab != tab)
            continue;
        const QString label = subject.PatientID + QStringLiteral(", ") + definitionLabel(definition.saved);
        BatchMessageService::setReport(label);
        m_status.meet(Guarded(label, [&] {
            if (!runReport(definition, subject, label, action))
            {
                skipped.append(definition.saved.name);
                ++m_skipped;
            }
            return RunStatus::Done;
        }));
        BatchMessageService::setReport(QString());
    }
}

bool RenderBatch::runReport(const Definition& definition, const ReportInfo& subject, const QString& label,
                            const ReportAction& action)
{
    ReportInfo info = definition.request;
    info.PatientID = subject.PatientID;
    info.PatientName = subject.PatientName;
    info.FromDate = subject.FromDate;
    info.ToDate = subject.ToDate;

    PreparedReport report;
    if (!PrepareRenderedReport(info, definition.saved.name, m_siUnits, m_rules, report))
        return false;
    ++m_reported;
    m_status.meet(action(definition.saved, report));
    if (m_pipeline)
    {
        ReportPipeline::Work work = (*m_writer)(definition.saved, report);
        // On the writer: its failures and boxes are said as the report's,
        // as they would be here.
        m_pipeline->handOver(std::move(report),
                             [label, work = std::move(work)](PreparedReport& prepared, PdfFileTarget& target) {
                                 BatchMessageService::setReport(label);
                                 const int status = Guarded(label, [&] { return work(prepared, target); });
                                 BatchMessageService::setReport(QString());
                                 return status;
                             });
    }
    return true;
}
