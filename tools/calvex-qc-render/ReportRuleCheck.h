#pragma once

#include "output/PreparedReport.h"
#include "output/ReportViolation.h"
#include "rules/QCRuleSet.h"
#include "rules/QCViolation.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// The QC rule check of one render request (one subject and one definition):
// what --check prints for it. Made from the report prepared with the rules,
// so the figures are those the report's pages print.
class ReportRuleCheck
{
public:
    // One charted variable: its figures over the period and its violations.
    struct Chart
    {
        QString TableName;
        QString VarName;
        QString Unit;
        qint32 DecimalPlaces = 0;
        qsizetype Readings = 0; // n: the readings that count (not missing, not 0)
        double Mean = 0;
        double SD = 0;
        double CV = 0; // a fraction, as the report store gives it
        QList<QCViolation> Violations;
    };

    // The check of report, prepared with the rules to check, for the saved
    // definition of that name. Reads the charts' data sets again (they are
    // left on their first record).
    static ReportRuleCheck of(PreparedReport& report, const QString& definitionName);

    // At least one reading broke a rule.
    bool anyRuleFired() const { return !m_violations.isEmpty(); }

    // One line per violation, in date order (charts in the report's order
    // within a day), its fields separated by tabs: the subject's ID, the
    // definition, the table, the variable, the date "mm/dd/yyyy", the value
    // with the variable's decimal places and a point, the rules
    // ("2-2s, 4-1s"). Tabs and line breaks within a field become blanks.
    QStringList lines() const;

    // The check as JSON: subject, subjectName, tab, definition, the period
    // (from, to: "yyyy-mm-dd"; from null for an open start), and variables,
    // one per chart: table, variable, unit, decimalPlaces, n, mean, sd, cv
    // (a fraction) at full precision, and violations (date, value, rules).
    QJsonObject toJson() const;

    // The one document --json prints for a run: the rules checked, the unit
    // system ("conventional" or "SI") and every check of the run (reports).
    static QJsonDocument document(const QCRuleSet& rules, bool siUnits, const QList<ReportRuleCheck>& checks);

private:
    QString m_subjectId;
    QString m_subjectName;
    QString m_definition;
    qint16 m_tab = 0;
    QString m_from;
    QString m_to;
    QList<Chart> m_charts;
    QList<ReportViolation> m_violations;
};
