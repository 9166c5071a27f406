// calvex-bench-export-peer-data: every report of a night's batch as a data
// file of the other report generators (bench/peers), so that they draw the
// very reports calvex-qc-render --all draws.
//
//   calvex-bench-export-peer-data FOLDER [--from MM/DD/YYYY] --to MM/DD/YYYY
//
// Reads the suite database that NORRIX_REGISTRY names. The QC subjects are
// the patients whose ID starts with "QC" (the demo's QC001 to QC003); the
// reports are every saved definition of both tabs for each of them, in the
// order --all takes them. For each report with visits in the period it
// writes FOLDER/report-NN.sqlite with the generators' two tables:
//
//   variables(var_id, tbl, name, unit, decimals, target, cv_pct): the
//     definition's variables in its order, with its units and decimals;
//   visits(subject, visit_date, var_id, value): every reading the report's
//     table shows (GetTableData, with every variable of the definition in the
//     table), dates yyyy-mm-dd; zero and missing readings are left out, as
//     the report leaves them out.
//
// It writes FOLDER/subjects.txt (the subjects, for --subjects-file) and prints
// one line a report, tab-separated: file, subject, tab, definition, visits.

#include "RenderFailure.h"
#include "RenderRequest.h"
#include "components/PatientQuery.h"
#include "components/QCReportStore.h"
#include "platform/ComponentFactory.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "suite/SuiteComponents.h"
#include "suite/SuiteDatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTextStream>

#include <stdexcept>

namespace
{
[[noreturn]] void fail(const QString& message)
{
    throw std::runtime_error(message.toStdString());
}

QStringList qcSubjects()
{
    const std::unique_ptr<PatientQuery> query = ComponentFactory::create<PatientQuery>(PatientQuery::ClassId);
    QStringList ids;
    for (RecordsetPtr found = query->FindByIdNum(QStringLiteral("QC")); found && !found->IsEOF(); found->MoveNext())
        ids.append(TextOf(found->Value(QStringLiteral("PatientIDNum"))).trimmed());
    ids.sort();
    return ids;
}

void exec(QSqlQuery& query, const QString& sql)
{
    if (!query.exec(sql))
        fail(QStringLiteral("%1: %2").arg(sql, query.lastError().text()));
}

// One report's data file; returns the number of visits.
qint32 writeDataFile(const QString& path, const ReportInfo& request)
{
    QFile::remove(path);
    ReportInfo everyVariable = request;
    for (ReportVariable& variable : everyVariable.Variables)
        variable.ShowInTable = true;
    const RecordsetPtr data =
        ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)->GetTableData(everyVariable, false);
    if (!data || data->RecordCount() == 0)
        return 0;

    const QString connection = QStringLiteral("peer-") + path;
    qint32 visits = 0;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(path);
        if (!db.open())
            fail(QStringLiteral("cannot make %1: %2").arg(path, db.lastError().text()));
        QSqlQuery query(db);
        exec(query, QStringLiteral("CREATE TABLE variables(var_id INTEGER PRIMARY KEY, tbl TEXT, name TEXT, "
                                   "unit TEXT, decimals INT, target REAL, cv_pct REAL)"));
        exec(query, QStringLiteral("CREATE TABLE visits(subject TEXT, visit_date TEXT, var_id INT, value REAL)"));
        db.transaction();
        query.prepare(QStringLiteral("INSERT INTO variables VALUES (?, ?, ?, ?, ?, NULL, NULL)"));
        for (qsizetype v = 0; v < request.Variables.size(); ++v)
        {
            const ReportVariable& variable = request.Variables.at(v);
            query.addBindValue(qint32(v + 1));
            query.addBindValue(variable.TableName);
            query.addBindValue(variable.VarName);
            query.addBindValue(variable.Unit);
            query.addBindValue(variable.DecimalPlaces);
            if (!query.exec())
                fail(query.lastError().text());
        }
        query.prepare(QStringLiteral("INSERT INTO visits VALUES (?, ?, ?, ?)"));
        for (data->MoveFirst(); !data->IsEOF(); data->MoveNext())
        {
            const QString day = data->Value(0).toDate().toString(Qt::ISODate);
            for (int f = 1; f < data->FieldCount(); ++f)
            {
                const QVariant value = data->Value(f);
                if (value.isNull() || value.toDouble() == 0)
                    continue;
                query.addBindValue(request.PatientID);
                query.addBindValue(day);
                query.addBindValue(f);
                query.addBindValue(value.toDouble());
                if (!query.exec())
                    fail(query.lastError().text());
            }
            ++visits;
        }
        exec(query, QStringLiteral("CREATE INDEX visits_subject_date ON visits(subject, visit_date)"));
        db.commit();
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return visits;
}

void exportReports(const QString& folder, const QString& from, const QString& to)
{
    if (!QDir().mkpath(folder))
        fail(QStringLiteral("cannot make the folder ") + folder);
    const QStringList subjects = qcSubjects();
    if (subjects.isEmpty())
        fail(QStringLiteral("the database has no QC subject"));
    QFile list(QDir(folder).filePath(QStringLiteral("subjects.txt")));
    if (!list.open(QIODevice::WriteOnly | QIODevice::Truncate))
        fail(QStringLiteral("cannot write ") + list.fileName());
    list.write(subjects.join(QLatin1Char('\n')).toUtf8() + '\n');
    list.close();

    const QList<SavedDefinition> definitions = ListSavedDefinitions();
    QTextStream out(stdout);
    int n = 0;
    for (const QString& id : subjects)
    {
        ReportInfo subject;
        FindRenderSubject(id, subject);
        for (const SavedDefinition& definition : definitions)
        {
            ReportInfo request;
            LoadDefinitionVariables(definition, false, request);
            request.PatientID = subject.PatientID;
            request.PatientName = subject.PatientName;
            request.FromDate = from;
            request.ToDate = to;
            const QString path =
                QDir(folder).filePath(QStringLiteral("report-%1.sqlite").arg(++n, 2, 10, QLatin1Char('0')));
            const qint32 visits = writeDataFile(path, request);
            if (visits == 0)
                continue;
            out << path << '\t' << subject.PatientID << '\t' << (definition.tab == 0 ? "PF" : "GX") << '\t'
                << definition.name << '\t' << visits << Qt::endl;
        }
    }
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    QString folder;
    QString from;
    QString to;
    for (qsizetype i = 0; i < arguments.size(); ++i)
    {
        if (arguments.at(i) == QLatin1String("--from") && i + 1 < arguments.size())
            from = arguments.at(++i);
        else if (arguments.at(i) == QLatin1String("--to") && i + 1 < arguments.size())
            to = arguments.at(++i);
        else if (folder.isEmpty())
            folder = arguments.at(i);
        else
            folder.clear();
    }
    if (folder.isEmpty() || to.isEmpty())
    {
        QTextStream(stderr) << "usage: calvex-bench-export-peer-data FOLDER [--from MM/DD/YYYY] --to MM/DD/YYYY"
                            << Qt::endl;
        return 2;
    }
    try
    {
        RegisterSuiteComponents();
        exportReports(folder, from, to);
    }
    catch (const RuntimeError& error)
    {
        QTextStream(stderr) << error.description() << Qt::endl;
        return 1;
    }
    catch (const std::exception& error)
    {
        QTextStream(stderr) << QString::fromLocal8Bit(error.what()) << Qt::endl;
        return 1;
    }
    catch (const RenderFailure& failure)
    {
        QTextStream(stderr) << failure.message << Qt::endl;
        return 1;
    }
    SuiteDatabase::closeAllConnections();
    return 0;
}
