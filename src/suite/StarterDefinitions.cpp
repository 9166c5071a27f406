#include "suite/StarterDefinitions.h"

#include "components/ReportInfo.h"
#include "suite/NorrixReportStore.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteText.h"
#include "suite/SuiteTransaction.h"
#include "suite/SuiteUser.h"

#include <QSqlQuery>
#include <QStringList>

#include <algorithm>

namespace
{
struct Starter
{
    qint16 tab;
    QString name;
    QString table;
    QStringList variables;
};

const QList<Starter>& starters()
{
    static const QList<Starter> all{
        {0,
         QStringLiteral("Spirometry"),
         QStringLiteral("Pre"),
         {QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("FEV1/FVC"), QStringLiteral("PEF")}},
        {1,
         QStringLiteral("Exercise"),
         QStringLiteral("Peak"),
         {QStringLiteral("VO2"), QStringLiteral("VCO2"), QStringLiteral("VE"), QStringLiteral("RER")}},
    };
    return all;
}

// The tab's catalogue table of that name, else its first table; 0 for none.
qint32 tableOf(SuiteDatabase& db, qint16 tab, const QString& name, QString& chosenName)
{
    QSqlQuery query =
        db.exec(QStringLiteral("SELECT table_id, name FROM test_tables WHERE tab = ? ORDER BY sort_order, table_id"),
                {qint32(tab)});
    qint32 first = 0;
    while (query.next())
    {
        if (first == 0)
        {
            first = query.value(0).toInt();
            chosenName = query.value(1).toString();
        }
        if (query.value(1).toString() == name)
        {
            chosenName = name;
            return query.value(0).toInt();
        }
    }
    return first;
}

// The starter's name, or "name (2)", "name (3)" ... when a definition of
// the other tab bears it: the database keeps one definition per name.
QString freeName(SuiteDatabase& db, const QString& name)
{
    QString candidate = name;
    for (int number = 2;
         !db.scalar(QStringLiteral("SELECT 1 FROM qc_reports WHERE name_key = ?"), {SuiteText::searchKey(candidate)})
              .isNull();
         ++number)
        candidate = SuiteText::numberedName(name, number, QCReportStore::MaxNameLength);
    return candidate;
}

ReportInfo starterRequest(SuiteDatabase& db, const Starter& starter)
{
    ReportInfo info;
    info.TestTab = starter.tab;
    QString tableName;
    const qint32 tableId = tableOf(db, starter.tab, starter.table, tableName);
    if (tableId == 0)
        return info;

    struct CatalogueVariable
    {
        qint32 id;
        QString name;
        qint32 decimals;
    };
    QList<CatalogueVariable> catalogue;
    QSqlQuery query = db.exec(QStringLiteral("SELECT var_id, name, decimal_places FROM variables WHERE tab = ? "
                                             "ORDER BY sort_order, var_id"),
                              {qint32(starter.tab)});
    while (query.next())
        catalogue.append({query.value(0).toInt(), query.value(1).toString(), query.value(2).toInt()});

    QList<CatalogueVariable> chosen;
    for (const QString& wanted : starter.variables)
    {
        for (const CatalogueVariable& variable : catalogue)
        {
            if (variable.name == wanted)
                chosen.append(variable);
        }
    }
    if (chosen.isEmpty())
        chosen = catalogue.mid(0, starter.variables.size());

    for (const CatalogueVariable& variable : chosen)
    {
        ReportVariable row;
        row.TableID = tableId;
        row.TableName = tableName;
        row.ParamsDefID = variable.id;
        row.VarName = variable.name;
        row.ShowInGraph = true;
        row.ShowInTable = true;
        row.DecimalPlaces = variable.decimals;
        info.Variables.append(row);
    }
    return info;
}
} // namespace

int StarterDefinitions::addWhereMissing(SuiteDatabase& db)
{
    const auto missing = [&db](const Starter& starter) {
        return db.scalar(QStringLiteral("SELECT 1 FROM qc_reports WHERE tab = ? LIMIT 1"), {qint32(starter.tab)})
            .isNull();
    };
    // Nearly every start finds a definition on each tab and writes nothing,
    // so a database that is read-only serves it too.
    if (std::none_of(starters().cbegin(), starters().cend(), missing))
        return 0;

    SuiteTransaction transaction(db);
    const QString savedBy = SuiteUser::signedInName(db);
    int saved = 0;
    for (const Starter& starter : starters())
    {
        // Asked again inside the transaction: another workstation may have
        // saved one meanwhile.
        if (!missing(starter))
            continue;
        NorrixReportStore::storeDefinition(db, freeName(db, starter.name), starterRequest(db, starter), savedBy);
        ++saved;
    }
    transaction.commit();
    return saved;
}
