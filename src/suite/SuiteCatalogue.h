#pragma once

#include <QList>
#include <QString>

class SuiteDatabase;

// The test tables and variables the suite's instruments report, per tab
// (0 = pulmonary function, 1 = gas exchange). Values are stored in the
// conventional unit; the SI value is value * siFactor + siOffset.
class SuiteCatalogue
{
public:
    struct Table
    {
        qint16 tab;
        QString name;
    };

    struct Variable
    {
        qint16 tab;
        QString name;
        QString unit;   // conventional
        QString siUnit; // SI
        double siFactor;
        double siOffset;
        qint32 decimalPlaces;
    };

    static const QList<Table>& tables();
    static const QList<Variable>& variables();

    // Writes the catalogue into a database that has none yet.
    static void install(SuiteDatabase& db);
};
