#pragma once

// The request and settings the benchmarks share: nine PF variables of the Pre
// table over every visit of one long-series subject, on a SQLite database
// that a key file names for the benchmark and the programs it starts.

#include "components/ReportInfo.h"
#include "suite/DemoData.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteDatabase.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>

// The nine variables, in graph and in table, with two decimals; an open start
// up to the demo data's last day.
inline ReportInfo nineVariables(SuiteDatabase& db, const QString& idNum)
{
    const QStringList names{QStringLiteral("FVC"), QStringLiteral("FEV1"),     QStringLiteral("FEV1/FVC"),
                            QStringLiteral("PEF"), QStringLiteral("FEF25-75"), QStringLiteral("SVC"),
                            QStringLiteral("TLC"), QStringLiteral("DLCO"),     QStringLiteral("KCO")};
    SuiteDataLoader loader(db);
    ReportInfo info;
    info.TestTab = 0;
    info.PatientID = idNum;
    info.PatientName = QStringLiteral("Control, Long Series");
    info.ToDate = DemoData::LastDay.toString(QStringLiteral("MM/dd/yyyy"));
    for (const QString& name : names)
    {
        ReportVariable v;
        v.TableID = loader.tableId(0, QStringLiteral("Pre"));
        v.TableName = QStringLiteral("Pre");
        v.ParamsDefID = loader.variableId(0, name);
        v.VarName = name;
        v.Unit = QStringLiteral("L");
        v.ShowInGraph = true;
        v.ShowInTable = true;
        v.DecimalPlaces = 2;
        info.Variables.append(v);
    }
    return info;
}

// The suite's key for a SQLite database at path (conventional units, a site
// database, both rights), in the key file the program reads.
inline void writeSqliteKeyFile(const QString& keyFile, const QString& database)
{
    QFile file(keyFile);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(keyFile));
    QString escaped = QDir::toNativeSeparators(database);
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    file.write(QStringLiteral("Windows Registry Editor Version 5.00\n\n"
                              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n"
                              "\"SI Unit\"=\"0\"\n"
                              "\"Database Driver\"=\"QSQLITE\"\n"
                              "\"Database Name\"=\"%1\"\n"
                              "\"Demo Database\"=dword:00000000\n"
                              "\"Default Rights\"=\"500,501\"\n")
                   .arg(escaped)
                   .toUtf8());
}
