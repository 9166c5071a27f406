// calvex-bench-lab-data [--patients N] [--seed S]
//
// Fills the empty suite database that NORRIX_REGISTRY names (SQLite or
// PostgreSQL) with a laboratory-sized data set (see LabDataGenerator.h;
// default 200,000 other patients besides the 20 QC subjects), the same rows
// for the same seed. SQLite takes the rows in one transaction; PostgreSQL
// through COPY (psql must be on the PATH). Prints what it wrote and the last
// name of patient P000123, for the benchmark's name searches.

#include "LabDataGenerator.h"
#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSettings.h"
#include "suite/SuiteTransaction.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTextStream>
#include <map>

#include <memory>

namespace
{
QTextStream out(stdout);

[[noreturn]] void fail(const QString& message)
{
    QTextStream(stderr) << "calvex-bench-lab-data: " << message << Qt::endl;
    std::exit(1);
}

// A value as PostgreSQL's CSV format reads it: an unquoted empty field is null.
void appendCsv(QByteArray& line, const QVariant& value)
{
    if (value.isNull())
        return;
    switch (value.typeId())
    {
    case QMetaType::Int:
    case QMetaType::Short:
        line += QByteArray::number(value.toInt());
        return;
    case QMetaType::Double:
        line += QByteArray::number(value.toDouble(), 'g', 12);
        return;
    case QMetaType::QDate:
        line += value.toDate().toString(Qt::ISODate).toLatin1();
        return;
    default:
        break;
    }
    QByteArray text = value.toString().toUtf8();
    text.replace('"', "\"\"");
    line += '"' + text + '"';
}

// Rows of each table written to a CSV file, then copied in by psql.
class CsvFiles
{
public:
    explicit CsvFiles(const QString& folder)
        : m_folder(folder)
    {}

    void write(const QString& table, const QStringList& columns, const std::vector<QVariantList>& rows)
    {
        auto& file = m_files[table];
        if (!file)
        {
            file = std::make_unique<QFile>(QDir(m_folder).filePath(table + QStringLiteral(".csv")));
            if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate))
                fail(QStringLiteral("cannot write %1").arg(file->fileName()));
            m_order.append(table);
            m_columns.insert(table, columns);
        }
        QByteArray text;
        for (const QVariantList& row : rows)
        {
            for (qsizetype i = 0; i < row.size(); ++i)
            {
                if (i > 0)
                    text += ',';
                appendCsv(text, row.at(i));
            }
            text += '\n';
        }
        if (file->write(text) != text.size())
            fail(QStringLiteral("cannot write %1").arg(file->fileName()));
    }

    void copyInto(const SuiteSettings& settings)
    {
        for (const QString& table : m_order)
        {
            m_files[table]->close();
            const QString command = QStringLiteral("\\copy %1 (%2) FROM '%3' WITH (FORMAT csv)")
                                        .arg(table, m_columns.value(table).join(u','), m_files[table]->fileName());
            QProcess psql;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            if (!settings.password.isEmpty())
                environment.insert(QStringLiteral("PGPASSWORD"), settings.password);
            psql.setProcessEnvironment(environment);
            psql.setProcessChannelMode(QProcess::ForwardedChannels);
            psql.start(QStringLiteral("psql"),
                       {QStringLiteral("-X"), QStringLiteral("-q"), QStringLiteral("-v"),
                        QStringLiteral("ON_ERROR_STOP=1"), QStringLiteral("-h"), settings.host, QStringLiteral("-p"),
                        QString::number(settings.port), QStringLiteral("-U"), settings.user, QStringLiteral("-d"),
                        settings.databaseName, QStringLiteral("-c"), command});
            if (!psql.waitForFinished(-1) || psql.exitStatus() != QProcess::NormalExit || psql.exitCode() != 0)
                fail(QStringLiteral("psql could not copy %1").arg(table));
        }
    }

private:
    QString m_folder;
    QStringList m_order;
    QHash<QString, QStringList> m_columns;
    std::map<QString, std::unique_ptr<QFile>> m_files;
};

int generate(int patients, quint64 seed)
{
    const SuiteSettings settings = SuiteSettings::fromRegistry();
    SuiteDatabase db(settings, SuiteDatabase::OpenMode::CreateIfMissing);
    if (SuiteSchema::version(db) != 0)
        fail(QStringLiteral("the database %1 is not empty").arg(settings.describe()));
    SuiteSchema::migrate(db);

    QElapsedTimer timer;
    timer.start();
    LabDataGenerator generator(patients, seed);
    LabDataGenerator::Counts counts;
    if (db.isPostgres())
    {
        QTemporaryDir folder;
        CsvFiles files(folder.path());
        counts =
            generator.generate(db, [&](const QString& table, const QStringList& columns,
                                       const std::vector<QVariantList>& rows) { files.write(table, columns, rows); });
        files.copyInto(settings);
        // The rows came with their keys: the numbering goes on after them.
        for (const QString& table : {QStringLiteral("patients"), QStringLiteral("visits")})
        {
            const QString key =
                table == QLatin1String("patients") ? QStringLiteral("patient_id") : QStringLiteral("visit_id");
            db.exec(QStringLiteral("SELECT setval(pg_get_serial_sequence('%1', '%2'), (SELECT MAX(%2) FROM %1))")
                        .arg(table, key));
        }
    }
    else
    {
        // A new file: nothing to lose if the machine fails in the middle.
        db.exec(QStringLiteral("PRAGMA synchronous = OFF"));
        db.exec(QStringLiteral("PRAGMA journal_mode = MEMORY"));
        SuiteTransaction transaction(db);
        counts =
            generator.generate(db, [&](const QString& table, const QStringList& columns,
                                       const std::vector<QVariantList>& rows) { db.insertRows(table, columns, rows); });
        transaction.commit();
        db.exec(QStringLiteral("PRAGMA synchronous = FULL"));
    }
    LabDataGenerator::saveDefinitions(db);
    SuiteSchema::refreshStatistics(db);
    out << QStringLiteral("%1 patients, %2 visits, %3 readings written in %4 s to %5")
               .arg(counts.patients)
               .arg(counts.visits)
               .arg(counts.results)
               .arg(double(timer.elapsed()) / 1000, 0, 'f', 1)
               .arg(settings.describe())
        << Qt::endl;
    if (patients >= 123)
        out << "last name of P000123: " << generator.lastNameOf(123) << Qt::endl;
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    int patients = 200000;
    quint64 seed = 20160627;
    for (qsizetype i = 1; i < arguments.size(); ++i)
    {
        if (arguments.at(i) == QLatin1String("--patients") && i + 1 < arguments.size())
            patients = arguments.at(++i).toInt();
        else if (arguments.at(i) == QLatin1String("--seed") && i + 1 < arguments.size())
            seed = arguments.at(++i).toULongLong();
        else
        {
            QTextStream(stderr) << "usage: calvex-bench-lab-data [--patients N] [--seed S]" << Qt::endl;
            return 2;
        }
    }
    try
    {
        const int status = generate(patients, seed);
        SuiteDatabase::closeAllConnections();
        return status;
    }
    catch (const RuntimeError& error)
    {
        fail(error.description());
    }
}
