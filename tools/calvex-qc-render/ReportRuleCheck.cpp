#include "ReportRuleCheck.h"

#include "RenderOptions.h"
#include "output/modPrintViolations.h"
#include "platform/VbConversions.h"
#include "rules/QCRuleEvaluator.h"

#include <QJsonArray>

namespace
{
// A field of a tab-separated line: it may hold no tab and no line break.
QString Field(QString text)
{
    for (QChar& c : text)
    {
        if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            c = QLatin1Char(' ');
    }
    return text;
}

QJsonValue IsoDate(const QString& monthFirst)
{
    if (monthFirst.trimmed().isEmpty())
        return QJsonValue(QJsonValue::Null);
    return ToDate(monthFirst).toString(Qt::ISODate);
}

QJsonArray RuleNames(const QCRuleSet& rules)
{
    QJsonArray names;
    for (const QString& name : rules.names())
        names.append(name);
    return names;
}
} // namespace

ReportRuleCheck ReportRuleCheck::of(PreparedReport& report, const QString& definitionName)
{
    ReportRuleCheck check;
    check.m_subjectId = report.Info.PatientID;
    check.m_subjectName = report.Info.PatientName;
    check.m_definition = definitionName;
    check.m_tab = report.Info.TestTab;
    check.m_from = report.Info.FromDate;
    check.m_to = report.Info.ToDate;
    check.m_violations = report.Violations.Rows;
    for (const GraphSeries& series : report.Graphs)
    {
        if (!series.Data || !series.Data->IsOpen())
            continue;
        Chart chart;
        chart.TableName = series.TableName;
        chart.VarName = series.VarName;
        chart.Unit = series.Unit;
        chart.DecimalPlaces = series.DecimalPlaces;
        chart.Readings = QCRuleEvaluator::countingReadings(SeriesReadings(*series.Data));
        chart.Mean = series.Mean;
        chart.SD = series.SD;
        chart.CV = series.CV;
        chart.Violations = series.Violations;
        check.m_charts.append(chart);
    }
    return check;
}

QStringList ReportRuleCheck::lines() const
{
    QStringList lines;
    for (const ReportViolation& violation : m_violations)
    {
        lines.append(QStringList{Field(m_subjectId), Field(m_definition), Field(violation.TableName),
                                 Field(violation.VarName), FormatMonthDayYear(violation.Date),
                                 FormatPlainNumber(violation.Value, std::max(violation.DecimalPlaces, 0)),
                                 violation.Rules.text()}
                         .join(QLatin1Char('\t')));
    }
    return lines;
}

QJsonObject ReportRuleCheck::toJson() const
{
    QJsonArray variables;
    for (const Chart& chart : m_charts)
    {
        QJsonArray violations;
        for (const QCViolation& violation : chart.Violations)
        {
            violations.append(QJsonObject{{QStringLiteral("date"), violation.Date.toString(Qt::ISODate)},
                                          {QStringLiteral("value"), violation.Value},
                                          {QStringLiteral("rules"), RuleNames(violation.Rules)}});
        }
        variables.append(QJsonObject{{QStringLiteral("table"), chart.TableName},
                                     {QStringLiteral("variable"), chart.VarName},
                                     {QStringLiteral("unit"), chart.Unit},
                                     {QStringLiteral("decimalPlaces"), chart.DecimalPlaces},
                                     {QStringLiteral("n"), qint64(chart.Readings)},
                                     {QStringLiteral("mean"), chart.Mean},
                                     {QStringLiteral("sd"), chart.SD},
                                     {QStringLiteral("cv"), chart.CV},
                                     {QStringLiteral("violations"), violations}});
    }
    return QJsonObject{{QStringLiteral("subject"), m_subjectId},
                       {QStringLiteral("subjectName"), m_subjectName},
                       {QStringLiteral("tab"), RenderOptions::tabName(m_tab)},
                       {QStringLiteral("definition"), m_definition},
                       {QStringLiteral("period"),
                        QJsonObject{{QStringLiteral("from"), IsoDate(m_from)}, {QStringLiteral("to"), IsoDate(m_to)}}},
                       {QStringLiteral("variables"), variables}};
}

QJsonDocument ReportRuleCheck::document(const QCRuleSet& rules, bool siUnits, const QList<ReportRuleCheck>& checks)
{
    QJsonArray reports;
    for (const ReportRuleCheck& check : checks)
        reports.append(check.toJson());
    return QJsonDocument(
        QJsonObject{{QStringLiteral("rules"), RuleNames(rules)},
                    {QStringLiteral("units"), siUnits ? QStringLiteral("SI") : QStringLiteral("conventional")},
                    {QStringLiteral("reports"), reports}});
}
