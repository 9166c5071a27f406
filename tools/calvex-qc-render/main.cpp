// calvex-qc-render: renders the QC report of a saved definition for one QC
// subject and period, with the same request, store calls and page layouts as
// the program's Print, to a PDF file or to PNG pages, and its table's data to
// a CSV file; or, with --all, every saved definition for each subject of a
// list, one PDF each. Exit status 0 on success (with one line per file saying
// where the output is), 1 when a report cannot be rendered or written and 2
// for a bad command line (RunStatus); every failure is one line on stderr,
// and stderr holds nothing but the renderer's lines.

#include "OutFolderNames.h"
#include "RenderBatch.h"
#include "RenderConsole.h"
#include "RenderFailure.h"
#include "RenderOptions.h"
#include "RenderOutput.h"
#include "RenderPreparation.h"
#include "RenderRequest.h"
#include "RunStatus.h"
#include "output/PdfFileTarget.h"
#include "platform/Clock.h"
#include "platform/ProgramVersion.h"
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

[[noreturn]] void refuse(const QString& message)
{
    throw RenderFailure{message, false};
}

QString pageCountText(qint32 pages)
{
    return pages == 1 ? QStringLiteral("1 page") : QStringLiteral("%1 pages").arg(pages);
}

void printWritten(const QString& fileName, qint32 pages)
{
    PrintLine(stdout, QStringLiteral("QC report written to %1 (%2)")
                          .arg(QDir::toNativeSeparators(QFileInfo(fileName).absoluteFilePath()), pageCountText(pages)));
}

// The outputs of one report, in the order PDF or PNG pages, then CSV.
int writeReport(const RenderOptions& options, PreparedReport& report)
{
    if (!options.pdfFile.isEmpty())
        printWritten(options.pdfFile, WritePdf(report, options.pdfFile));
    if (!options.pngFolder.isEmpty())
    {
        const qint32 pages = WritePngPages(report, options.pngFolder);
        PrintLine(stdout, QStringLiteral("QC report written to %1 (page-001.png to page-%2.png)")
                              .arg(QDir::toNativeSeparators(QDir(options.pngFolder).absolutePath()))
                              .arg(pages, 3, 10, QLatin1Char('0')));
    }
    if (!options.csvFile.isEmpty())
    {
        const qint32 visits = WriteTableCsv(report, options.csvFile);
        PrintLine(stdout, QStringLiteral("QC table data written to %1 (%2)")
                              .arg(QDir::toNativeSeparators(QFileInfo(options.csvFile).absoluteFilePath()),
                                   visits == 1 ? QStringLiteral("1 visit") : QStringLiteral("%1 visits").arg(visits)));
    }
    return RunStatus::Done;
}

int renderOne(const RenderOptions& options, bool siUnits)
{
    const ReportInfo info = BuildRenderRequest(options, siUnits);
    PreparedReport report;
    if (!PrepareRenderedReport(info, options.report, siUnits, report))
        refuse(NoVisitsText(info));
    return writeReport(options, report);
}

// The folder of --all's files, made when it is missing.
void makeOutFolder(const QString& folder)
{
    if (!QDir().mkpath(folder))
        refuse(QStringLiteral("cannot make the folder %1").arg(folder));
    if (!QFileInfo(folder).isWritable())
        refuse(QStringLiteral("cannot write in the folder %1").arg(folder));
}

int renderAll(const RenderOptions& options, bool siUnits)
{
    // Checked before the first report, so that a folder no report can be
    // written to is said once, not for every report.
    makeOutFolder(options.outFolder);
    OutFolderNames names(options.outFolder);
    // One target for the night: each font is set up once for every report.
    const std::unique_ptr<PdfFileTarget> pdf = NewPdfTarget();
    RenderBatch batch(options, siUnits);
    return batch.run([&names, &pdf](const SavedDefinition& definition, PreparedReport& report) {
        const QString fileName = names.filePath(report.Info, definition.name);
        printWritten(fileName, WritePdf(report, *pdf, fileName));
        return RunStatus::Done;
    });
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

    // As at the program's start: the embedded demo database is made when it is
    // not there yet; a site's database that is missing is an error.
    SuiteSetup::createMissingDemo(SuiteSettings::fromRegistry());
    RegisterSuiteComponents();
    const bool siUnits = options.siUnits || ReadSIUnitSetting();
    return options.allReports ? renderAll(options, siUnits) : renderOne(options, siUnits);
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
        if (failure.badCommandLine)
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
