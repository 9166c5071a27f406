// calvex-bench-lab --subject ID --id TEXT --name TEXT [--rounds N]
//
// Times, on the suite database that NORRIX_REGISTRY names, what a report run
// asks of the data layer: the QC subject search by ID, by last name, and
// with a text that finds nobody (by ID and by name), each through a fresh
// patient query as the search window makes them; then GetGraphData for each
// of the nine Pre variables FVC ... KCO and GetTableData with all nine, for
// the subject's whole period, each through a fresh report store. The
// database's connection is opened before the first timed call, as the
// program has it open when the user searches. Prints median, minimum and
// maximum of N rounds (default 30); it passes or fails nothing.

#include "../common/BenchFigures.h"
#include "../common/BenchSubject.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>

#include <functional>

namespace
{
QTextStream out(stdout);

// Times call rounds times after one untimed call; returns the figures and
// the number of rows of the last call.
Figures timeCalls(int rounds, const std::function<qint32()>& call, qint32& rows)
{
    Figures figures;
    rows = call();
    for (int round = 0; round < rounds; ++round)
    {
        QElapsedTimer timer;
        timer.start();
        rows = call();
        figures.add(elapsedMs(timer));
    }
    return figures;
}

void print(const QString& what, const Figures& figures, qint32 rows)
{
    printFigures(out, QStringLiteral("%1 (%2 rows)").arg(what).arg(rows), figures, 52);
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QString subject, id, name;
    int rounds = 30;
    for (qsizetype i = 1; i + 1 < arguments.size(); i += 2)
    {
        const QString& option = arguments.at(i);
        if (option == QLatin1String("--subject"))
            subject = arguments.at(i + 1);
        else if (option == QLatin1String("--id"))
            id = arguments.at(i + 1);
        else if (option == QLatin1String("--name"))
            name = arguments.at(i + 1);
        else if (option == QLatin1String("--rounds"))
            rounds = arguments.at(i + 1).toInt();
    }
    if (subject.isEmpty() || id.isEmpty() || name.isEmpty() || rounds < 1)
    {
        QTextStream(stderr) << "usage: calvex-bench-lab --subject ID --id TEXT --name TEXT [--rounds N]" << Qt::endl;
        return 2;
    }

    const SuiteSettings settings = SuiteSettings::fromRegistry();
    SuiteDatabase db(settings);
    db.open();
    out << "database: " << settings.describe() << ", " << rounds << " rounds" << Qt::endl;

    const QString nobody = QStringLiteral("Zzq");
    qint32 rows = 0;
    Figures f = timeCalls(
        rounds, [&] { return NorrixPatientQuery().FindByIdNum(id)->RecordCount(); }, rows);
    print(QStringLiteral("search by ID \"%1\"").arg(id), f, rows);
    f = timeCalls(
        rounds, [&] { return NorrixPatientQuery().FindByName(name, QString(), QString())->RecordCount(); }, rows);
    print(QStringLiteral("search by name \"%1\"").arg(name), f, rows);
    f = timeCalls(
        rounds, [&] { return NorrixPatientQuery().FindByIdNum(nobody)->RecordCount(); }, rows);
    print(QStringLiteral("search by ID, no hit \"%1\"").arg(nobody), f, rows);
    f = timeCalls(
        rounds, [&] { return NorrixPatientQuery().FindByName(nobody, QString(), QString())->RecordCount(); }, rows);
    print(QStringLiteral("search by name, no hit \"%1\"").arg(nobody), f, rows);

    const ReportInfo info = nineVariables(db, subject);
    f = timeCalls(
        rounds,
        [&] {
            qint32 count = 0;
            for (qint32 index = 1; index <= info.VariableCount(); ++index)
            {
                double mean = 0, sd = 0, cv = 0;
                count = NorrixReportStore(settings).GetGraphData(info, index, false, mean, sd, cv)->RecordCount();
            }
            return count;
        },
        rows);
    // The mean of the nine calls of each round.
    for (double& ms : f.ms)
        ms /= info.VariableCount();
    print(QStringLiteral("GetGraphData of %1, per variable").arg(subject), f, rows);
    f = timeCalls(
        rounds, [&] { return NorrixReportStore(settings).GetTableData(info, false)->RecordCount(); }, rows);
    print(QStringLiteral("GetTableData of %1, 9 variables").arg(subject), f, rows);
    SuiteDatabase::closeAllConnections();
    return 0;
}
