// calvex-bench-render: how fast the report layouts draw on the PDF printer
// target, without a database. It builds a QC report of nine variables and N
// daily visits in memory, draws it through the program's own layouts (three
// chart pages, then the value table) on a PDF target, and prints the wall time
// of each phase and the process's peak resident memory.
//
//   calvex-bench-render --visits 10000 --out /tmp/bench.pdf [--printer]
//
// The target is the PDF file target that the batch renderer writes through,
// or with --printer the program's PDF printer (a QPrinter, as Print uses).
//
// The visits are reproducible random readings around fixed targets, so that two runs
// draw the same pages.

#include "components/ReportInfo.h"
#include "output/PdfFileTarget.h"
#include "output/PrinterTarget.h"
#include "output/modPrintGraph.h"
#include "output/modPrintTable.h"
#include "platform/ComponentFactory.h"
#include "platform/StringServer.h"
#include "platform/VbConversions.h"
#include "platform/modResource.h"
#include "suite/NorrixStrings.h"

#include <QCommandLineParser>
#include <QDate>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPageSize>
#include <QTextStream>

#include <sys/resource.h>

#include <cmath>
#include <random>

namespace
{
struct Variable
{
    const char* table;
    const char* name;
    const char* unit;
    qint32 decimals;
    double target;
    double cvPercent;
};

// Nine lung-function variables of a biological QC subject.
constexpr Variable kVariables[] = {
    {"Spirometry", "FVC", "L", 2, 4.60, 3.0},
    {"Spirometry", "FEV1", "L", 2, 3.50, 3.0},
    {"Spirometry", "FEV1/FVC", "%", 1, 76.0, 2.0},
    {"Spirometry", "PEF", "L/s", 2, 8.50, 5.0},
    {"Bodybox", "TLC", "L", 2, 6.50, 4.0},
    {"Bodybox", "RV", "L", 2, 1.90, 8.0},
    {"Bodybox", "FRCpleth", "L", 2, 3.20, 6.0},
    {"Bodybox", "sRaw", "kPa*s", 2, 0.90, 12.0},
    {"Diffusion", "TLCO", "mmol/min/kPa", 2, 9.50, 5.0},
};
constexpr int kVariableCount = int(std::size(kVariables));

const QDate kLastVisit(2024, 12, 31);

double RoundTo(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

// readings[v][i]: variable v at visit i (the visit of day first + i).
std::vector<std::vector<double>> MakeReadings(int visits)
{
    std::mt19937_64 random(20240101);
    std::vector<std::vector<double>> readings(kVariableCount, std::vector<double>(size_t(visits)));
    for (int i = 0; i < visits; ++i)
    {
        for (int v = 0; v < kVariableCount; ++v)
        {
            const Variable& var = kVariables[v];
            std::normal_distribution<double> reading(var.target, var.target * var.cvPercent / 100);
            readings[size_t(v)][size_t(i)] = RoundTo(reading(random), var.decimals);
        }
    }
    return readings;
}

ReportInfo MakeInfo(const QDate& first)
{
    ReportInfo info;
    info.TestTab = 0;
    info.PatientName = QStringLiteral("QC-001, Benchmark");
    info.PatientID = QStringLiteral("QC-001");
    info.FromDate = FormatMonthDayYear(first);
    info.ToDate = FormatMonthDayYear(kLastVisit);
    for (const Variable& var : kVariables)
    {
        ReportVariable variable;
        variable.TableName = QString::fromLatin1(var.table);
        variable.VarName = QString::fromLatin1(var.name);
        variable.Unit = QString::fromLatin1(var.unit);
        variable.ShowInGraph = true;
        variable.ShowInTable = true;
        variable.DecimalPlaces = var.decimals;
        info.Variables.append(variable);
    }
    return info;
}

// The series the report store would hand over: visits by date with the
// period's mean, sample SD and CV.
GraphSeriesArray MakeSeries(const ReportInfo& info, const std::vector<std::vector<double>>& readings,
                            const QDate& first)
{
    GraphSeriesArray series(static_cast<size_t>(kVariableCount));
    for (int v = 0; v < kVariableCount; ++v)
    {
        const std::vector<double>& values = readings[size_t(v)];
        const ReportVariable& variable = info.Variables.at(v);
        GraphSeries& one = series[size_t(v)];
        one.TableName = variable.TableName;
        one.VarName = variable.VarName;
        one.Unit = variable.Unit;
        one.DecimalPlaces = variable.DecimalPlaces;

        double sum = 0;
        for (double x : values)
            sum += x;
        one.Mean = sum / double(values.size());
        double squares = 0;
        for (double x : values)
            squares += (x - one.Mean) * (x - one.Mean);
        one.SD = values.size() > 1 ? std::sqrt(squares / double(values.size() - 1)) : 0;
        one.CV = one.Mean != 0 ? one.SD / one.Mean : 0;

        std::vector<QVariantList> rows;
        rows.reserve(values.size());
        for (size_t i = 0; i < values.size(); ++i)
            rows.push_back({first.addDays(qint64(i)), values[i]});
        one.Data =
            std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), variable.VarName}, std::move(rows));
    }
    return series;
}

// The table's data set as the report store returns it: the visit date, then one
// field per variable named after it.
RecordsetPtr MakeTableData(const ReportInfo& info, const std::vector<std::vector<double>>& readings, const QDate& first)
{
    QStringList fields{QStringLiteral("VisitDate")};
    for (const ReportVariable& variable : info.Variables)
        fields.append(variable.VarName);
    const size_t visits = readings.front().size();
    std::vector<QVariantList> rows;
    rows.reserve(visits);
    for (size_t i = 0; i < visits; ++i)
    {
        QVariantList row{first.addDays(qint64(i))};
        for (int v = 0; v < kVariableCount; ++v)
            row.append(readings[size_t(v)][i]);
        rows.push_back(std::move(row));
    }
    return std::make_shared<Recordset>(fields, std::move(rows));
}

// The whole report on one printer: chart pages, then the table starting on a
// new sheet; returns the number of pages drawn.
int DrawReport(OutputTarget& target, const ReportInfo& info, const GraphSeriesArray& series, TableData& table,
               double& graphSeconds, double& tableSeconds)
{
    QElapsedTimer clock;
    clock.start();
    const qint32 graphPages = GraphPageCount(qint32(series.size()));
    qint32 page = 1;
    while (page >= 1 && page <= graphPages)
    {
        page = PrintGraphPage(&target, info, series, page, graphPages, true);
        if (page == 0)
            throw std::runtime_error("a graph page failed");
    }
    graphSeconds = clock.nsecsElapsed() / 1e9;

    clock.restart();
    TablePageList pages;
    SetUpTablePages(target, table, pages);
    for (const TablePage& one : pages)
    {
        if (PrintTablePage(&target, table, info, one, graphPages, true) == 0)
            throw std::runtime_error("a table page failed");
    }
    target.EndDoc();
    tableSeconds = clock.nsecsElapsed() / 1e9;
    return graphPages + int(pages.size());
}

double PeakResidentMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
}
} // namespace

int main(int argc, char** argv)
{
    QElapsedTimer total;
    total.start();
    QGuiApplication app(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Draws a QC report of N visits on the PDF printer target."));
    parser.addHelpOption();
    const QCommandLineOption visitsOption(QStringLiteral("visits"), QStringLiteral("Visits per variable."),
                                          QStringLiteral("N"), QStringLiteral("1000"));
    const QCommandLineOption outOption(QStringLiteral("out"), QStringLiteral("The PDF file to write."),
                                       QStringLiteral("FILE"), QStringLiteral("bench-render.pdf"));
    const QCommandLineOption printerOption(QStringLiteral("printer"),
                                           QStringLiteral("Draw on the PDF printer instead of the PDF file target."));
    parser.addOption(visitsOption);
    parser.addOption(outOption);
    parser.addOption(printerOption);
    parser.process(app);

    bool ok = false;
    const int visits = parser.value(visitsOption).toInt(&ok);
    QTextStream out(stdout);
    if (!ok || visits < 2)
    {
        QTextStream(stderr) << "--visits needs a whole number of at least 2\n";
        return 2;
    }

    // The built-in texts only: no registry, no translation file.
    ComponentFactory::registerClass(StringServer::ClassId, [] { return std::make_unique<NorrixStrings>(QString()); });

    QElapsedTimer phase;
    phase.start();
    const QDate first = kLastVisit.addDays(-(visits - 1));
    const std::vector<std::vector<double>> readings = MakeReadings(visits);
    const ReportInfo info = MakeInfo(first);
    const GraphSeriesArray series = MakeSeries(info, readings, first);
    TableData table;
    {
        // Columns as BuildTableData describes them, without asking a store.
        table.Data = MakeTableData(info, readings, first);
        table.PatientID = info.PatientID;
        table.FromDate = info.FromDate;
        table.ToDate = info.ToDate;
        table.ColumnCount = qint16(table.Data->FieldCount());
        table.Columns = QList<TableColumn>(table.ColumnCount);
        table.Columns[0].Heading = QStringLiteral("Visit Date");
        for (qint16 c = 1; c < table.ColumnCount; ++c)
        {
            const ReportVariable& variable = info.Variables.at(c - 1);
            TableColumn& column = table.Columns[c];
            column.TableName = variable.TableName;
            column.Heading = variable.VarName;
            column.Unit = variable.Unit;
            column.DecimalPlaces = variable.DecimalPlaces;
            column.FieldIndex = c;
        }
    }
    const double dataSeconds = phase.nsecsElapsed() / 1e9;

    // 600 dpi, the whole sheet; A4 as the other report generators use.
    const QString fileName = parser.value(outOption);
    const QPageSize paper(QPageSize::A4);
    double graphSeconds = 0;
    double tableSeconds = 0;
    int pages = 0;
    try
    {
        std::unique_ptr<OutputTarget> target;
        if (parser.isSet(printerOption))
        {
            auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
            printer->setOutputFormat(QPrinter::PdfFormat);
            printer->setResolution(PdfFileTarget::OfficeDotsPerInch);
            printer->setPageSize(paper);
            printer->setPageOrientation(QPageLayout::Portrait);
            printer->setOutputFileName(fileName);
            target = std::make_unique<PrinterTarget>(std::move(printer));
        }
        else
        {
            target = std::make_unique<PdfFileTarget>(fileName, paper, QPageLayout::Portrait);
        }
        pages = DrawReport(*target, info, series, table, graphSeconds, tableSeconds);
    }
    catch (const std::exception& error)
    {
        QTextStream(stderr) << "drawing failed: " << error.what() << '\n';
        return 1;
    }

    out << "visits " << visits << ", markers " << visits * kVariableCount << ", cells " << visits * (kVariableCount + 1)
        << ", pages " << pages << '\n';
    out << QStringLiteral("data %1 s, graph pages %2 s, table pages %3 s, whole run %4 s, peak RSS %5 MiB\n")
               .arg(dataSeconds, 0, 'f', 3)
               .arg(graphSeconds, 0, 'f', 3)
               .arg(tableSeconds, 0, 'f', 3)
               .arg(total.nsecsElapsed() / 1e9, 0, 'f', 3)
               .arg(PeakResidentMiB(), 0, 'f', 1);
    return 0;
}
