// calvex-bench-load-peer-data: turns a data file of the other report
// generators (the visits and variables tables that their gen_data.py writes)
// into a suite database that calvex-qc-render reports from, so that both
// render the same visits in one benchmark run.
//
//   calvex-bench-load-peer-data PEER.sqlite SUITE.sqlite REGISTRY.reg
//
// - SUITE.sqlite is made anew: the current schema and catalogue, as
//   NorrixDBQuery auto makes them, without the demo data.
// - The peer file's test tables and variables (tbl, name, unit) join the PF
//   catalogue where it lacks them; a variable the catalogue has with another
//   unit is refused, since the two reports would then disagree.
// - Every subject of the peer file becomes a QC subject (last name
//   "Control"), each of its visit days one PF visit with the day's values, in
//   bulk through the suite's data loader.
// - A saved PF definition named "Peer Benchmark" shows every variable in the
//   graph and in the table, with the peer file's decimals, in var_id order.
// - REGISTRY.reg is a registry key file naming SUITE.sqlite, for
//   NORRIX_REGISTRY.

#include "components/ReportInfo.h"
#include "platform/RuntimeError.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSettings.h"
#include "suite/SuiteSetup.h"
#include "suite/SuiteTransaction.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTextStream>

#include <stdexcept>

namespace
{
constexpr qint16 kPF = 0;
const QString kDefinitionName = QStringLiteral("Peer Benchmark");
const QString kPeerConnection = QStringLiteral("peer-data");

struct PeerVariable
{
    qint32 peerId;
    QString table;
    QString name;
    QString unit;
    qint32 decimals;
    qint32 tableId = 0;
    qint32 varId = 0;
};

[[noreturn]] void fail(const QString& message)
{
    throw std::runtime_error(message.toStdString());
}

QSqlQuery peerQuery(const QString& sql)
{
    QSqlQuery query(QSqlDatabase::database(kPeerConnection));
    if (!query.exec(sql))
        fail(QStringLiteral("reading the peer file: ") + query.lastError().text());
    return query;
}

QList<PeerVariable> readVariables()
{
    QList<PeerVariable> variables;
    QSqlQuery query =
        peerQuery(QStringLiteral("SELECT var_id, tbl, name, unit, decimals FROM variables ORDER BY var_id"));
    while (query.next())
        variables.append({query.value(0).toInt(), query.value(1).toString(), query.value(2).toString(),
                          query.value(3).toString(), query.value(4).toInt()});
    if (variables.isEmpty())
        fail(QStringLiteral("the peer file has no variables"));
    return variables;
}

qint32 nextSortOrder(SuiteDatabase& db, const QString& table)
{
    return db.scalar(QStringLiteral("SELECT COALESCE(MAX(sort_order), 0) + 1 FROM ") + table).toInt();
}

// The catalogue IDs of every peer variable, adding the tables and variables
// the catalogue lacks.
void joinCatalogue(SuiteDatabase& db, QList<PeerVariable>& variables)
{
    for (PeerVariable& variable : variables)
    {
        QVariant tableId = db.scalar(QStringLiteral("SELECT table_id FROM test_tables WHERE tab = ? AND name = ?"),
                                     {qint32(kPF), variable.table});
        if (tableId.isNull())
            tableId = db.scalar(QStringLiteral("INSERT INTO test_tables (tab, name, sort_order) VALUES (?, ?, ?) "
                                               "RETURNING table_id"),
                                {qint32(kPF), variable.table, nextSortOrder(db, QStringLiteral("test_tables"))});
        variable.tableId = tableId.toInt();

        QSqlQuery known = db.exec(QStringLiteral("SELECT var_id, unit FROM variables WHERE tab = ? AND name = ?"),
                                  {qint32(kPF), variable.name});
        if (known.next())
        {
            if (known.value(1).toString() != variable.unit)
                fail(QStringLiteral("the catalogue's %1 is in %2, the peer file's in %3")
                         .arg(variable.name, known.value(1).toString(), variable.unit));
            variable.varId = known.value(0).toInt();
            continue;
        }
        // Same unit in both systems: the peers report in one.
        variable.varId =
            db.scalar(QStringLiteral("INSERT INTO variables (tab, name, unit, si_unit, si_factor, si_offset, "
                                     "decimal_places, sort_order) VALUES (?, ?, ?, ?, 1, 0, ?, ?) RETURNING var_id"),
                      {qint32(kPF), variable.name, variable.unit, variable.unit, variable.decimals,
                       nextSortOrder(db, QStringLiteral("variables"))})
                .toInt();
    }
}

// Every subject's visits, one PF visit a day; returns the number of visits.
qint64 loadVisits(SuiteDatabase& db, const QList<PeerVariable>& variables)
{
    QMap<qint32, const PeerVariable*> byPeerId;
    for (const PeerVariable& variable : variables)
        byPeerId.insert(variable.peerId, &variable);

    SuiteDataLoader loader(db);
    QMap<QString, std::vector<SuiteDataLoader::Visit>> visitsBySubject;
    QSqlQuery query = peerQuery(
        QStringLiteral("SELECT subject, visit_date, var_id, value FROM visits ORDER BY subject, visit_date, var_id"));
    while (query.next())
    {
        const QString subject = query.value(0).toString();
        const QDate day = QDate::fromString(query.value(1).toString(), Qt::ISODate);
        const PeerVariable* variable = byPeerId.value(query.value(2).toInt());
        if (!day.isValid() || !variable)
            fail(QStringLiteral("the peer file has a visit that is no day or no variable: %1 %2")
                     .arg(query.value(1).toString(), query.value(2).toString()));
        std::vector<SuiteDataLoader::Visit>& visits = visitsBySubject[subject];
        if (visits.empty() || visits.back().date != day)
            visits.push_back({day, kPF, {}});
        visits.back().results.append({variable->tableId, variable->varId, query.value(3)});
    }

    qint64 count = 0;
    for (auto it = visitsBySubject.cbegin(); it != visitsBySubject.cend(); ++it)
    {
        const qint32 key =
            loader.addPatient({it.key(), QStringLiteral("Control"), QStringLiteral("Peer"), QString(), QDate()});
        loader.addVisits(key, it.value());
        count += qint64(it.value().size());
    }
    return count;
}

void saveDefinition(SuiteDatabase& db, const QList<PeerVariable>& variables)
{
    ReportInfo info;
    info.TestTab = kPF;
    for (const PeerVariable& variable : variables)
    {
        ReportVariable reportVariable;
        reportVariable.TableID = variable.tableId;
        reportVariable.ParamsDefID = variable.varId;
        reportVariable.TableName = variable.table;
        reportVariable.VarName = variable.name;
        reportVariable.Unit = variable.unit;
        reportVariable.ShowInGraph = true;
        reportVariable.ShowInTable = true;
        reportVariable.DecimalPlaces = variable.decimals;
        info.Variables.append(reportVariable);
    }
    // The store's own save, on the loader's connection and transaction.
    NorrixReportStore store(db.settings());
    store.SaveReport(kDefinitionName, info);
}

void writeRegistryFile(const QString& path, const QString& database)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    QTextStream out(&file);
    out << "Windows Registry Editor Version 5.00\n\n"
        << "; The peer benchmark's suite database.\n"
        << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n"
        << "\"SI Unit\"=\"0\"\n"
        << "\"Database Driver\"=\"QSQLITE\"\n"
        << "\"Database Name\"=\"" << database << "\"\n"
        << "\"Demo Database\"=dword:00000000\n"
        << "\"Default Rights\"=\"500,501\"\n"
        << "\"Default Auto Logout Minutes\"=dword:00000000\n";
}

void load(const QString& peerFile, const QString& suiteFile, const QString& registryFile)
{
    if (!QFileInfo::exists(peerFile))
        fail(QStringLiteral("there is no peer file %1").arg(peerFile));
    {
        QSqlDatabase peer = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kPeerConnection);
        peer.setDatabaseName(peerFile);
        peer.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (!peer.open())
            fail(QStringLiteral("cannot open %1: %2").arg(peerFile, peer.lastError().text()));
    }

    QFile::remove(suiteFile);
    SuiteSettings settings;
    settings.driver = SuiteSettings::SqliteDriver;
    settings.databaseName = suiteFile;
    settings.demo = false;
    settings.defaultRights = QStringLiteral("500,501");
    SuiteSetup::runAuto(settings);

    SuiteDatabase db(settings);
    QList<PeerVariable> variables = readVariables();
    SuiteTransaction transaction(db);
    joinCatalogue(db, variables);
    const qint64 visits = loadVisits(db, variables);
    saveDefinition(db, variables);
    transaction.commit();

    writeRegistryFile(registryFile, suiteFile);
    QTextStream(stdout) << suiteFile << ": " << visits << " PF visits of " << variables.size()
                        << " variables, definition \"" << kDefinitionName << "\"; registry " << registryFile << '\n';
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
    {
        QTextStream(stderr) << "Usage: calvex-bench-load-peer-data PEER.sqlite SUITE.sqlite REGISTRY.reg\n";
        return 2;
    }
    int status = 0;
    try
    {
        load(QFileInfo(arguments.at(1)).absoluteFilePath(), QFileInfo(arguments.at(2)).absoluteFilePath(),
             QFileInfo(arguments.at(3)).absoluteFilePath());
    }
    catch (const RuntimeError& error)
    {
        QTextStream(stderr) << "calvex-bench-load-peer-data: " << error.description() << '\n';
        status = 1;
    }
    catch (const std::exception& error)
    {
        QTextStream(stderr) << "calvex-bench-load-peer-data: " << error.what() << '\n';
        status = 1;
    }
    SuiteDatabase::closeAllConnections();
    QSqlDatabase::removeDatabase(kPeerConnection);
    return status;
}
