// calvex-bench-print [visits] [rounds]
//
// Times Print of the whole QC report of one subject with `visits` daily PF
// visits (default 10,000) and nine variables in graph and table, on the
// system printer, which must be a CUPS queue: run it under
// tests/cups/run-cups.sh, which starts a throwaway cupsd with a PDF queue.
// Each round:
//  1. Print as the main window runs it (PrintReportJob on the system printer:
//     graph series, table data, both page set-ups, every page, EndDoc), timed
//     until the job is spooled: EndDoc has handed it to the CUPS server;
//  2. the time until the queue has finished the job (its PDF is written);
//  3. calvex-qc-render of the same request (the same saved definition,
//     subject and period) to a PDF, timed from its start to its exit.
// Prints the medians and the ratio of the spooled time to the render time;
// it passes or fails nothing.

#include "../common/BenchFigures.h"
#include "../common/BenchSubject.h"
#include "RenderRequest.h"
#include "components/QCReportStore.h"
#include "output/modPrintGlobals.h"
#include "output/modPrintReport.h"
#include "platform/ComponentFactory.h"
#include "platform/modResource.h"
#include "run/PrintJob.h"
#include "suite/DemoData.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPrinterInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <vector>

namespace
{
QTextStream out(stdout);
QTextStream err(stderr);

const QString kReport = QStringLiteral("Print Benchmark");
const QString kSubject = QStringLiteral("QC999");

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Nine spirometry variables of the Pre table, in graph and table, saved as
// the definition kReport.
void saveDefinition(SuiteDatabase& db)
{
    SuiteDataLoader loader(db);
    ReportInfo info;
    info.TestTab = 0;
    for (const QString& name : {QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("FEV1/FVC"),
                                QStringLiteral("PEF"), QStringLiteral("FEF25-75"), QStringLiteral("SVC"),
                                QStringLiteral("TLC"), QStringLiteral("DLCO"), QStringLiteral("KCO")})
    {
        ReportVariable variable;
        variable.TableID = loader.tableId(0, QStringLiteral("Pre"));
        variable.TableName = QStringLiteral("Pre");
        variable.ParamsDefID = loader.variableId(0, name);
        variable.VarName = name;
        variable.ShowInGraph = true;
        variable.ShowInTable = true;
        variable.DecimalPlaces = 2;
        info.Variables.append(variable);
    }
    ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->SaveReport(kReport, info);
}

// The request the renderer makes of the same command line: the saved
// definition's rows, their names made unique, the subject found by its ID
// and the period, as the main window makes it.
ReportInfo storedRequest(const QString& to)
{
    RenderOptions options;
    options.tab = 0;
    options.report = kReport;
    options.subject = kSubject;
    options.to = to;
    return BuildRenderRequest(options, false);
}

// Runs a program; its standard output, or its error output when it failed.
QString run(const QString& program, const QStringList& arguments, int* exitCode = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(600000);
    const int status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    if (exitCode)
        *exitCode = status;
    return QString::fromLocal8Bit(status == 0 ? process.readAllStandardOutput() : process.readAllStandardError());
}

// Waits until the queue has no unfinished job.
bool waitForQueue(const QString& queue)
{
    const QDeadlineTimer deadline(600000);
    while (!deadline.hasExpired())
    {
        if (run(QStringLiteral("lpstat"), {QStringLiteral("-o"), queue}).trimmed().isEmpty())
            return true;
        QThread::msleep(20);
    }
    return false;
}
} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int visits = arguments.size() > 1 ? arguments.at(1).toInt() : 10000;
    const int rounds = arguments.size() > 2 ? arguments.at(2).toInt() : 5;
    if (visits < 1 || rounds < 1)
    {
        err << "usage: calvex-bench-print [visits] [rounds]" << Qt::endl;
        return 2;
    }
    const QPrinterInfo queue = QPrinterInfo::defaultPrinter();
    if (queue.isNull())
    {
        err << "No CUPS queue: run it under tests/cups/run-cups.sh." << Qt::endl;
        return 2;
    }
    const QString renderer = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("calvex-qc-render"));

    QTemporaryDir dir;
    const QString database = dir.filePath(QStringLiteral("print.sqlite"));
    const QString keyFile = dir.filePath(QStringLiteral("print.reg"));
    writeSqliteKeyFile(keyFile, database);
    qputenv("NORRIX_REGISTRY", QFile::encodeName(keyFile));
    RegisterSuiteComponents();
    ResetResourceServer();
    {
        SuiteDatabase db(SuiteSettings::fromRegistry(), SuiteDatabase::OpenMode::CreateIfMissing);
        SuiteSchema::migrate(db);
        DemoData::addLongSeries(db, kSubject, visits);
        saveDefinition(db);
    }
    SuiteDatabase::closeAllConnections();

    const QString to = DemoData::LastDay.toString(QStringLiteral("MM/dd/yyyy"));
    const ReportInfo info = storedRequest(to);
    ProgramState state;
    const std::shared_ptr<PrinterTarget> printer = SystemPrinter(state);
    out << "Print of subject " << kSubject << " (" << visits << " visits, " << info.VariableCount()
        << " variables) on the CUPS queue " << printer->DeviceName() << ", " << rounds << " rounds" << Qt::endl;

    std::vector<double> spooled, finished, rendered;
    qint32 printedPages = 0;
    QString renderedLine;
    for (int round = 0; round < rounds; ++round)
    {
        QElapsedTimer timer;
        timer.start();
        if (!PrintReportJob(*printer, info, kReport, false))
            qFatal("Print printed nothing");
        spooled.push_back(elapsedMs(timer));
        if (!waitForQueue(printer->DeviceName()))
            qFatal("the queue did not finish the job");
        finished.push_back(elapsedMs(timer));

        PreparedReport report;
        PrepareReport(info, false, report);
        SetUpReportPages(*printer, report);
        printedPages = ReportPageCount(report);

        const QString pdf = dir.filePath(QStringLiteral("rendered.pdf"));
        int exitCode = -1;
        timer.restart();
        renderedLine =
            run(renderer,
                {QStringLiteral("--tab"), QStringLiteral("PF"), QStringLiteral("--report"), kReport,
                 QStringLiteral("--subject"), kSubject, QStringLiteral("--to"), to, QStringLiteral("--out"), pdf},
                &exitCode)
                .trimmed();
        rendered.push_back(elapsedMs(timer));
        if (exitCode != 0)
            qFatal("calvex-qc-render failed: %s", qPrintable(renderedLine));
    }

    const double spooledMs = median(spooled);
    const double renderMs = median(rendered);
    out << QStringLiteral("Print spooled (PrintReportJob to EndDoc): median %1 ms  (%2 pages)\n")
               .arg(spooledMs, 0, 'f', 0)
               .arg(printedPages)
        << QStringLiteral("job finished by the queue:                median %1 ms\n").arg(median(finished), 0, 'f', 0)
        << QStringLiteral("calvex-qc-render to PDF:                  median %1 ms  (%2)\n")
               .arg(renderMs, 0, 'f', 0)
               .arg(renderedLine)
        << QStringLiteral("spooled / render = %1 (target below 1.20)\n").arg(spooledMs / renderMs, 0, 'f', 2);
    out.flush();
    SuiteDatabase::closeAllConnections();
    return 0;
}
