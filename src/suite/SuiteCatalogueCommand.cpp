#include "suite/SuiteCatalogueCommand.h"

#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteSchema.h"
#include "suite/SuiteSettings.h"

#include <QList>
#include <QSqlQuery>
#include <QTextStream>

namespace
{
struct VariableRow
{
    QString name;
    QString unit;
    QString siUnit;
    QString decimals;
};

const QString kTabTitles[2] = {QStringLiteral("PF (pulmonary function)"), QStringLiteral("GX (gas exchange)")};

QString unitText(const QString& unit)
{
    return unit.isEmpty() ? QStringLiteral("-") : unit;
}

qsizetype widest(const QList<VariableRow>& rows, qsizetype least, QString VariableRow::*field)
{
    qsizetype width = least;
    for (const VariableRow& row : rows)
        width = qMax(width, (row.*field).size());
    return width;
}
} // namespace

int SuiteCatalogueCommand::run(QTextStream& out, QTextStream& err)
{
    try
    {
        SuiteDatabase db(SuiteSettings::fromRegistry());
        if (SuiteSchema::version(db) == 0)
            throw RuntimeError(SuiteDatabase::ErrorQueryFailed, SuiteDatabase::ErrorSource,
                               QStringLiteral("The QC database has no schema yet; run \"NorrixDBQuery auto\" first."));
        QList<QString> tables[2];
        QSqlQuery tableQuery = db.exec(QStringLiteral("SELECT tab, name FROM test_tables ORDER BY tab, sort_order"));
        while (tableQuery.next())
            tables[tableQuery.value(0).toInt() == 1 ? 1 : 0].append(tableQuery.value(1).toString());
        QList<VariableRow> variables[2];
        QSqlQuery variableQuery = db.exec(
            QStringLiteral("SELECT tab, name, unit, si_unit, decimal_places FROM variables ORDER BY tab, sort_order"));
        while (variableQuery.next())
            variables[variableQuery.value(0).toInt() == 1 ? 1 : 0].append(
                {variableQuery.value(1).toString(), unitText(variableQuery.value(2).toString()),
                 unitText(variableQuery.value(3).toString()), variableQuery.value(4).toString()});

        const QString nameTitle = QStringLiteral("Variable");
        const QString unitTitle = QStringLiteral("Unit");
        const QString siTitle = QStringLiteral("SI unit");
        for (int tab = 0; tab < 2; ++tab)
        {
            if (tab > 0)
                out << Qt::endl;
            out << QStringLiteral("Tab ") << kTabTitles[tab] << Qt::endl;
            out << QStringLiteral("  Table") << Qt::endl;
            for (const QString& table : tables[tab])
                out << QStringLiteral("    ") << table << Qt::endl;
            const QList<VariableRow>& rows = variables[tab];
            const qsizetype nameWidth = widest(rows, nameTitle.size(), &VariableRow::name) + 2;
            const qsizetype unitWidth = widest(rows, unitTitle.size(), &VariableRow::unit) + 2;
            const qsizetype siWidth = widest(rows, siTitle.size(), &VariableRow::siUnit) + 2;
            out << QStringLiteral("  ") << nameTitle.leftJustified(nameWidth + 2) << unitTitle.leftJustified(unitWidth)
                << siTitle.leftJustified(siWidth) << QStringLiteral("Decimals") << Qt::endl;
            for (const VariableRow& row : rows)
                out << QStringLiteral("    ") << row.name.leftJustified(nameWidth) << row.unit.leftJustified(unitWidth)
                    << row.siUnit.leftJustified(siWidth) << row.decimals << Qt::endl;
        }
        return 0;
    }
    catch (const RuntimeError& error)
    {
        QString text = SuiteDatabase::fullText(error);
        err << text.replace(u'\n', u' ') << Qt::endl;
        return ExitFailed;
    }
}
