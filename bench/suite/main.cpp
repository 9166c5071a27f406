// calvex-suite-bench [visits] [rounds]
//
// Times the suite's data layer on SQLite, in a temporary folder:
//  1. creating the embedded demo database as "NorrixDBQuery auto" does
//     (schema, catalogue, demo data, integrity check);
//  2. GetGraphData for each of 9 variables and GetTableData with those 9
//     variables, for one subject with `visits` daily visits (default 10,000),
//     each call through a fresh store object, as the report run makes them.
// Prints the figures; it passes or fails nothing.

#include "../common/BenchFigures.h"
#include "../common/BenchSubject.h"
#include "components/ReportInfo.h"
#include "suite/DemoData.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSetup.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <vector>

namespace
{
QTextStream out(stdout);

void print(const QString& what, const Figures& figures)
{
    printFigures(out, what, figures, 54);
}

SuiteSettings sqliteAt(const QString& path, bool demo)
{
    SuiteSettings settings;
    settings.databaseName = path;
    settings.demo = demo;
    return settings;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int visits = arguments.size() > 1 ? arguments.at(1).toInt() : 10000;
    const int rounds = arguments.size() > 2 ? arguments.at(2).toInt() : 5;
    if (visits < 1 || rounds < 1)
    {
        QTextStream(stderr) << "usage: calvex-suite-bench [visits] [rounds]" << Qt::endl;
        return 2;
    }
    QTemporaryDir dir;

    out << "Suite data on SQLite, " << rounds << " rounds" << Qt::endl;

    Figures demo;
    for (int round = 0; round < rounds; ++round)
    {
        const SuiteSettings settings = sqliteAt(dir.filePath(QStringLiteral("demo-%1.sqlite").arg(round)), true);
        QElapsedTimer timer;
        timer.start();
        SuiteSetup::runAuto(settings);
        demo.add(elapsedMs(timer));
        SuiteDatabase::closeAllConnections();
    }
    print(QStringLiteral("demo database created"), demo);

    const SuiteSettings settings = sqliteAt(dir.filePath(QStringLiteral("long.sqlite")), false);
    SuiteDatabase db(settings, SuiteDatabase::OpenMode::CreateIfMissing);
    SuiteSchema::migrate(db);
    QElapsedTimer load;
    load.start();
    DemoData::addLongSeries(db, QStringLiteral("QC999"), visits);
    const double loadMs = elapsedMs(load);
    const ReportInfo info = nineVariables(db, QStringLiteral("QC999"));
    out << "subject QC999: " << visits << " visits x " << info.VariableCount() << " variables, loaded in "
        << QString::number(loadMs, 'f', 0) << " ms" << Qt::endl;

    for (const bool si : {false, true})
    {
        Figures graph;
        Figures table;
        qint32 rows = 0;
        qint32 tableRows = 0;
        for (int round = 0; round < rounds; ++round)
        {
            for (qint32 index = 1; index <= info.VariableCount(); ++index)
            {
                double mean = 0, sd = 0, cv = 0;
                QElapsedTimer timer;
                timer.start();
                RecordsetPtr rs = NorrixReportStore(settings).GetGraphData(info, index, si, mean, sd, cv);
                graph.add(elapsedMs(timer));
                rows = rs->RecordCount();
            }
            QElapsedTimer timer;
            timer.start();
            RecordsetPtr rs = NorrixReportStore(settings).GetTableData(info, si);
            table.add(elapsedMs(timer));
            tableRows = rs->RecordCount();
        }
        const QString units = si ? QStringLiteral("SI") : QStringLiteral("conventional");
        print(QStringLiteral("GetGraphData, %1 rows, %2").arg(rows).arg(units), graph);
        print(QStringLiteral("GetTableData, %1 rows x %2 fields, %3")
                  .arg(tableRows)
                  .arg(info.VariableCount() + 1)
                  .arg(units),
              table);
    }
    SuiteDatabase::closeAllConnections();
    return 0;
}
