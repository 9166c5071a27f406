// calvex-qc-render: renders the QC report of a saved definition for one QC
// subject and period, with the same request, store calls and page layouts as
// the program's Print, to a PDF file or to PNG pages, and its table's data to
// a CSV file; or, with --all, every saved definition for each subject of a
// list, one PDF each. Exit status 0 on success (with one line per file saying
// where the output is), 1 when a report cannot be rendered or written or the
// suite refuses the user (no right 500, a disabled user, as at the program's
// start) and 2 for a bad command line (RunStatus); every failure is one line
// on stderr, and stderr holds nothing but the renderer's lines.
//
// With --check it checks the reports' charts against the QC rules (the
// site's "QC Rules" or --rules) for unattended monitoring: one line per
// violation on stdout (or one JSON document with --json), files only when
// the command line asks for them, and exit status 3 when a rule was broken.

#include "OutFolderNames.h"
#include "RenderBatch.h"
#include "RenderConsole.h"
#include "RenderFailure.h"
#include "RenderOptions.h"
#include "RenderOutput.h"
#include "RenderPreparation.h"
#include "RenderRequest.h"
#include "RenderSession.h"
#include "ReportRuleCheck.h"
#include "RunStatus.h"
#include "output/PdfFileTarget.h"
#include "platform/Clock.h"
#include "platform/ProgramVersion.h"
#include "platform/QCRulesSetting.h"
#include "platform/RuntimeError.h"
#include "platform/SIUnitSetting.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"
#include "suite/SuiteSetup.h"

#include <QByteArrayView>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTextStream>

#include <exception>

namespace
{
// What Qt and its plug-ins say for themselves (no runtime folder, a locale
// that is not UTF-8, a font or image codec's complaint) is not the
// renderer's to report: a scheduled run's stderr holds only the renderer's
// own lines. The program's own warnings (categories "calvex.*") are lines of
// the renderer; a fatal message ends the run and is said before it does.
// The PNG pages are encoded in memory, so libpng, which prints its own
// errors, never meets a failing file.
void keepQtMessagesOut(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const bool ours = context.category && QByteArrayView(context.category).startsWith("calvex.");
    if (ours || type == QtFatalMsg)
        PrintFailure(message);
}

// The QC rules the run checks: --rules when given, else the site's setting.
// A rule the program does not know is a usage error of one line.
QCRuleSet RulesToCheck(const RenderOptions& options)
{
    const QString listed = options.rulesGiven ? options.rules : ReadQCRulesSetting();
    QCRuleSet rules;
    QString unknown;
    if (!QCRuleSet::parse(listed, rules, unknown))
        throw RenderFailure{
            QStringLiteral("unknown QC rule \"%1\" in %2; the QC rules are %3")
                .arg(unknown,
                     options.rulesGiven ? QStringLiteral("--rules") : QStringLiteral("the setting \"QC Rules\""),
                     QCRuleSet::knownNames()),
            true, false};
    // A check of no rule would report a clean report whatever it holds.
    if (options.check && rules.isEmpty())
        throw RenderFailure{options.rulesGiven ? QStringLiteral("--check has no QC rules to check: --rules is empty")
                                               : QStringLiteral("--check has no QC rules to check: the setting "
                                                                "\"QC Rules\" is empty or missing; give --rules"),
                            true, false};
    return rules;
}

QString countText(qint32 count, const QString& one, const QString& many)
{
    return count == 1 ? QStringLiteral("1 ") + one : QStringLiteral("%1 ").arg(count) + many;
}

// Says what was written where on stdout, except in a check: its stdout holds
// the check alone.
void announce(const RenderOptions& options, const QString& line)
{
    if (!options.check)
        PrintLine(stdout, line);
}

QString nativePath(const QString& fileName)
{
    return QDir::toNativeSeparators(QFileInfo(fileName).absoluteFilePath());
}

void printWritten(const RenderOptions& options, const QString& fileName, qint32 pages)
{
    announce(options,
             QStringLiteral("QC report written to %1 (%2)")
                 .arg(nativePath(fileName), countText(pages, QStringLiteral("page"), QStringLiteral("pages"))));
}

// The outputs of one report, in the order PDF or PNG pages, then CSV.
void writeReport(const RenderOptions& options, PreparedReport& report)
{
    if (!options.pdfFile.isEmpty())
        printWritten(options, options.pdfFile, WritePdf(report, options.pdfFile));
    if (!options.pngFolder.isEmpty())
    {
        const qint32 pages = WritePngPages(report, options.pngFolder);
        announce(options, QStringLiteral("QC report written to %1 (page-001.png to page-%2.png)")
                              .arg(QDir::toNativeSeparators(QDir(options.pngFolder).absolutePath()))
                              .arg(pages, 3, 10, QLatin1Char('0')));
    }
    if (!options.csvFile.isEmpty())
    {
        const qint32 visits = WriteTableCsv(report, options.csvFile);
        announce(options, QStringLiteral("QC table data written to %1 (%2)")
                              .arg(nativePath(options.csvFile),
                                   countText(visits, QStringLiteral("visit"), QStringLiteral("visits"))));
    }
}

// The checks of a run: each report's lines as soon as it is checked, or,
// with --json, one document once every report is.
class RunChecks
{
public:
    RunChecks(const RenderOptions& options, const QCRuleSet& rules, bool siUnits)
        : m_options(options)
        , m_rules(rules)
        , m_siUnits(siUnits)
    {}

    // Checks one report, prepared with the rules: RulesBroken when a rule
    // fired, else Done.
    int check(PreparedReport& report, const QString& definitionName)
    {
        const ReportRuleCheck checked = ReportRuleCheck::of(report, definitionName);
        if (m_options.json)
            m_checks.append(checked);
        else
        {
            for (const QString& line : checked.lines())
                PrintLine(stdout, line);
        }
        return checked.anyRuleFired() ? RunStatus::RulesBroken : RunStatus::Done;
    }

    void finish() const
    {
        if (m_options.json)
            QTextStream(stdout)
                << ReportRuleCheck::document(m_rules, m_siUnits, m_checks).toJson(QJsonDocument::Indented) << Qt::flush;
    }

private:
    const RenderOptions& m_options;
    const QCRuleSet& m_rules;
    const bool m_siUnits;
    QList<ReportRuleCheck> m_checks;
};

int renderOne(const RenderOptions& options, const QCRuleSet& rules, bool siUnits)
{
    const ReportInfo info = BuildRenderRequest(options, siUnits);
    PreparedReport report;
    if (!PrepareRenderedReport(info, options.report, siUnits, rules, report))
        RenderRefuse(NoVisitsText(info));
    int status = RunStatus::Done;
    if (options.check)
    {
        RunChecks checks(options, rules, siUnits);
        status = checks.check(report, options.report);
        checks.finish();
    }
    writeReport(options, report);
    return status;
}

// The folder of --all's files, made when it is missing.
void makeOutFolder(const QString& folder)
{
    if (!QDir().mkpath(folder))
        RenderRefuse(QStringLiteral("cannot make the folder %1").arg(folder));
    if (!QFileInfo(folder).isWritable())
        RenderRefuse(QStringLiteral("cannot write in the folder %1").arg(folder));
}

int renderAll(const RenderOptions& options, const QCRuleSet& rules, bool siUnits)
{
    // Checked before the first report, so that a folder no report can be
    // written to is said once, not for every report.
    const bool writing = !options.outFolder.isEmpty();
    if (writing)
        makeOutFolder(options.outFolder);
    OutFolderNames names(options.outFolder);
    RunChecks checks(options, rules, siUnits);
    RenderBatch batch(options, rules, siUnits);
    const auto check = [&](const SavedDefinition& definition, PreparedReport& report) {
        return options.check ? checks.check(report, definition.name) : RunStatus::Done;
    };
    // The files are named here, in the run's order; each is drawn on a writer
    // thread, on the target that writer draws all its documents on.
    const auto write = [&](const SavedDefinition& definition, const PreparedReport& report) {
        const QString fileName = names.filePath(report.Info, definition.name);
        return ReportPipeline::Work([&options, fileName](PreparedReport& prepared, PdfFileTarget& target) {
            printWritten(options, fileName, WritePdf(prepared, target, fileName));
            return RunStatus::Done;
        });
    };
    const int status = writing ? batch.run(check, write) : batch.run(check);
    checks.finish();
    return status;
}

int render(const QStringList& arguments)
{
    const RenderOptions options = RenderOptions::parse(arguments);
    if (options.helpRequested)
    {
        QTextStream(stdout) << RenderOptions::help() << Qt::flush;
        return RunStatus::Done;
    }
    if (options.versionRequested)
    {
        QTextStream(stdout) << VersionLine(QStringLiteral("calvex-qc-render")) << Qt::flush;
        return RunStatus::Done;
    }
    if (options.today.isValid())
        Clock::pin(QDateTime(options.today, QTime(12, 0)));
    const QCRuleSet rules = RulesToCheck(options);

    // As at the program's start: the embedded demo database is made when it is
    // not there yet; a site's database that is missing is an error.
    SuiteSetup::createMissingDemo(SuiteSettings::fromRegistry());
    RegisterSuiteComponents();
    // The engine decides, as it does for the program, whether this user may
    // run QC reports now; nothing is read before it has.
    const RenderSession session;
    const bool siUnits = options.siUnits || ReadSIUnitSetting();
    return options.allReports ? renderAll(options, rules, siUnits) : renderOne(options, rules, siUnits);
}
} // namespace

int main(int argc, char** argv)
{
    // Before the application object: its start-up has things to say too.
    qInstallMessageHandler(keepQtMessagesOut);
    // A batch renderer shows no window; it needs no display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("calvex-qc-render"));

    int status = RunStatus::Done;
    try
    {
        status = render(QCoreApplication::arguments().mid(1));
    }
    catch (const RenderFailure& failure)
    {
        PrintFailure(failure.message);
        if (failure.badCommandLine && failure.withUsage)
        {
            for (const QString& line : RenderOptions::usage().split(QLatin1Char('\n')))
                PrintLine(stderr, line);
        }
        status = failure.badCommandLine ? RunStatus::BadCommandLine : RunStatus::Failed;
    }
    catch (const RuntimeError& error)
    {
        PrintFailure(error.description());
        status = RunStatus::Failed;
    }
    catch (const std::exception& error)
    {
        // Out of memory and the like: still one line and a run-time failure.
        PrintFailure(QString::fromLocal8Bit(error.what()));
        status = RunStatus::Failed;
    }
    SuiteDatabase::closeAllConnections();
    return status;
}
