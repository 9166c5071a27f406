#pragma once

#include "components/ReportInfo.h"
#include "platform/ComponentFactory.h"
#include "platform/Recordset.h"

#include <QString>

// The suite's report store: saved QC report definitions, the variable
// catalogue of each tab and the data sets of a report run. A store object is
// created for one operation and released at its end. Failures raise
// RuntimeError with a readable description.
class QCReportStore : public Component
{
public:
    static inline const QString ClassId = QStringLiteral("NorrixQCReports.QCReportStore");
    // The run-time errors a caller tells apart:
    // SaveReport: another definition bears the name already (compared
    // without regard to case), for instance one another workstation saved
    // after the name was checked.
    static constexpr qint32 ErrorNameTaken = 3022;
    // DeleteReport inside BeginTrans (Save replacing a definition): the
    // definition is no longer stored, for another workstation deleted or
    // replaced it after it was opened here.
    static constexpr qint32 ErrorDefinitionChanged = 3197;
    // The longest definition name the store keeps, in characters: the
    // suite's column of the name holds 100 on every database.
    static constexpr qint32 MaxNameLength = 100;

    // All saved definitions: QCReportName, QCReportType, QCReportID.
    virtual RecordsetPtr ListReports() = 0;
    // The definition's parameter rows (QCUserName, ParamsUserName, ParamsUnit,
    // ShowInGraph, ShowInTable, QCTableID, ParamsDefID, Decimal) with units of
    // the chosen system, and its tab; nullptr when there is no such definition.
    virtual RecordsetPtr OpenReport(qint32 reportId, bool siUnits, qint32& tab) = 0;
    // Stores the variables of info under name on info.TestTab; returns the new
    // QCReportID. Only for a user who may edit definitions (right 501); a name
    // that is taken raises ErrorNameTaken.
    virtual qint32 SaveReport(const QString& name, const ReportInfo& info) = 0;
    // Only for a user who may edit definitions (right 501). Inside BeginTrans
    // a definition that is no longer stored raises ErrorDefinitionChanged.
    virtual qint32 DeleteReport(qint32 reportId, const QString& reserved) = 0;
    virtual bool CanDeleteReport(qint32 reportId, const QString& reserved) = 0;
    // Compared without regard to case.
    virtual qint32 CountReportsNamed(const QString& name) = 0;

    // Tables of a tab: QCTableID, QCUserName.
    virtual RecordsetPtr ListTables(qint16 tab) = 0;
    // Variables of a tab: VarID, VarUserName, VarUnit, DecimalPlaces.
    virtual RecordsetPtr ListVariables(bool siUnits, qint16 tab) = 0;

    // Statistics and visits (field 0 the visit date, field 1 the value) of
    // variable `index` (1-based) over the subject and period of info.
    // The statistics are taken over the visits' values that are neither
    // missing nor zero, in the units of siUnits:
    // - mean: their sum over their number n;
    // - sd: the sample standard deviation, dividing by n - 1; 0 for one value;
    // - cv: sd / mean as a fraction (the chart prints it x 100 in per cent);
    //   0 for a mean of 0, negative for a negative mean;
    // - all three 0 when no value counts.
    // Each is exact to the 15 significant digits the chart prints: its text
    // with 15 significant digits (cv's x 100) is the exact value of the
    // values correctly rounded, and equal values give sd and cv exactly 0.
    virtual RecordsetPtr GetGraphData(const ReportInfo& info, qint32 index, bool siUnits, double& mean, double& sd,
                                      double& cv) = 0;
    // One row per visit of the period: field 0 the visit date, then one field
    // per ShowInTable variable in the order of info.Variables, named by VarName.
    virtual RecordsetPtr GetTableData(const ReportInfo& info, bool siUnits) = 0;

    // Several writes as one: Save deletes the stored copy and saves anew inside one transaction.
    virtual void BeginTrans() = 0;
    virtual void CommitTrans() = 0;
    virtual void RollbackTrans() = 0;
};
