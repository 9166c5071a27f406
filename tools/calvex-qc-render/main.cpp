// calvex-qc-render: renders the QC report of a saved definition for one QC
// subject and period, with the same request, store calls and page layouts as
// the program's Print, to a PDF file or to PNG pages. Exit status 0 on
// success (with one line saying where the output is), 1 when the report
// cannot be rendered or written or the suite refuses the user (no right 500,
// a disabled user, as at the program's start) and 2 for a bad command line;
// every failure is one line on stderr, and stderr holds nothing but the
// renderer's lines.
//
// With --check it checks the report's charts against the QC rules (the
// site's "QC Rules" or --rules) for unattended monitoring: one line per
// violation on stdout (or one JSON document with --json), a file only when
// --out or --png-dir asks for one, and exit status 3 when a rule was broken.

#include "RenderFailure.h"
#include "RenderOptions.h"
#include "RenderOutput.h"
#include "RenderRequest.h"
#include "RenderSession.h"
#include "ReportRuleCheck.h"
#include "output/modPrintReport.h"
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
constexpr int kExitWritten = 0;
constexpr int kExitFailed = 1;
constexpr int kExitBadCommandLine = 2;
constexpr int kExitRulesBroken = 3;

void printLine(FILE* stream, QString text)
{
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    QTextStream(stream) << text << Qt::endl;
}

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
        printLine(stderr, QStringLiteral("calvex-qc-render: ") + message);
}

[[noreturn]] void refuse(const QString& message)
{
    throw RenderFailure{message, false};
}

QString periodText(const ReportInfo& info)
{
    return info.FromDate.isEmpty() ? QStringLiteral("up to ") + info.ToDate
                                   : QStringLiteral("from %1 to %2").arg(info.FromDate, info.ToDate);
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

// The program's Print stops without a word when there is nothing to chart or
// no table; here the user learns why.
void prepare(const ReportInfo& info, const QString& reportName, bool siUnits, const QCRuleSet& rules,
             PreparedReport& report)
{
    if (!PrepareReport(info, siUnits, report, rules))
    {
        if (report.Graphs.empty())
            refuse(QStringLiteral("the QC report \"%1\" has no variable shown in the graph, and a report without "
                                  "charts is not printed")
                       .arg(reportName));
        refuse(QStringLiteral("the table of the QC report \"%1\" could not be read").arg(reportName));
    }
    if (report.Table.Data->RecordCount() == 0)
        refuse(QStringLiteral("%1 has no %2 visits %3")
                   .arg(info.PatientID, RenderOptions::tabName(info.TestTab), periodText(info)));
}

// Writes the report where the options say (nothing when they name no file),
// and says where when announce is set.
void writeOutput(const RenderOptions& options, PreparedReport& report, bool announce)
{
    if (!options.pdfFile.isEmpty())
    {
        const qint32 pages = WritePdf(report, options.pdfFile);
        if (announce)
            printLine(stdout, QStringLiteral("QC report written to %1 (%2)")
                                  .arg(QDir::toNativeSeparators(QFileInfo(options.pdfFile).absoluteFilePath()),
                                       pages == 1 ? QStringLiteral("1 page") : QStringLiteral("%1 pages").arg(pages)));
    }
    else if (!options.pngFolder.isEmpty())
    {
        const qint32 pages = WritePngPages(report, options.pngFolder);
        if (announce)
            printLine(stdout, QStringLiteral("QC report written to %1 (page-001.png to page-%2.png)")
                                  .arg(QDir::toNativeSeparators(QDir(options.pngFolder).absolutePath()))
                                  .arg(pages, 3, 10, QLatin1Char('0')));
    }
}

// --check of one request, the report prepared with the rules: its lines (or
// its JSON document) on stdout, then the file when one was asked for, which
// stdout does not announce (it holds the check alone). 3 when a rule was
// broken, else 0; a file that cannot be written ends the run with 1.
int check(const RenderOptions& options, const QCRuleSet& rules, bool siUnits, PreparedReport& report)
{
    const ReportRuleCheck checked = ReportRuleCheck::of(report, options.report);
    if (options.json)
    {
        QTextStream(stdout) << ReportRuleCheck::document(rules, siUnits, {checked}).toJson(QJsonDocument::Indented)
                            << Qt::flush;
    }
    else
    {
        for (const QString& line : checked.lines())
            printLine(stdout, line);
    }
    writeOutput(options, report, false);
    return checked.anyRuleFired() ? kExitRulesBroken : kExitWritten;
}

int render(const QStringList& arguments)
{
    const RenderOptions options = RenderOptions::parse(arguments);
    if (options.helpRequested)
    {
        QTextStream(stdout) << RenderOptions::help() << Qt::flush;
        return kExitWritten;
    }
    if (options.versionRequested)
    {
        QTextStream(stdout) << VersionLine(QStringLiteral("calvex-qc-render")) << Qt::flush;
        return kExitWritten;
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
    const ReportInfo info = BuildRenderRequest(options, siUnits);
    PreparedReport report;
    prepare(info, options.report, siUnits, rules, report);

    if (options.check)
        return check(options, rules, siUnits, report);
    writeOutput(options, report, true);
    return kExitWritten;
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

    int status = kExitWritten;
    try
    {
        status = render(QCoreApplication::arguments().mid(1));
    }
    catch (const RenderFailure& failure)
    {
        printLine(stderr, QStringLiteral("calvex-qc-render: ") + failure.message);
        if (failure.badCommandLine && failure.withUsage)
            printLine(stderr, RenderOptions::usage());
        status = failure.badCommandLine ? kExitBadCommandLine : kExitFailed;
    }
    catch (const RuntimeError& error)
    {
        printLine(stderr, QStringLiteral("calvex-qc-render: ") + error.description());
        status = kExitFailed;
    }
    catch (const std::exception& error)
    {
        // Out of memory and the like: still one line and a run-time failure.
        printLine(stderr, QStringLiteral("calvex-qc-render: ") + QString::fromLocal8Bit(error.what()));
        status = kExitFailed;
    }
    SuiteDatabase::closeAllConnections();
    return status;
}
