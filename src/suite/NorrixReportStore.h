#pragma once

#include "components/QCReportStore.h"
#include "suite/SuiteDatabase.h"

#include <QDate>

// The suite's report store on its database.
//
// - Definitions: SaveReport stores the variables' table and catalogue IDs,
//   flags and decimals in their order and gets a fresh QCReportID on every
//   save; OpenReport reads the table and variable names and the unit (of the
//   chosen system) back from the catalogue, so a definition always shows the
//   catalogue's current names.
// - Names are compared without regard to case (CountReportsNamed, lists in
//   name order), and the database holds one definition per name: a save
//   under a name that is taken raises QCReportStore::ErrorNameTaken, also
//   when another workstation took it a moment before. A name has 1 to 100
//   characters and no control characters.
// - Only a user who may edit definitions (right 501, see SuiteUser) saves or
//   deletes, whoever calls; not in a database that is read-only.
// - A definition may be deleted unless it is the only one of its tab: every
//   tab keeps a definition, for the program cannot start on a tab without
//   one. A transaction that would leave a tab without one is rolled back:
//   DeleteReport alone refuses, and inside BeginTrans (Save deletes and saves
//   anew) CommitTrans does.
// - Save replaces a definition inside BeginTrans: DeleteReport of the ID it
//   was opened with, then SaveReport. When that ID is no longer stored,
//   another workstation deleted or replaced the definition meanwhile, and
//   DeleteReport raises QCReportStore::ErrorDefinitionChanged instead of
//   letting a second copy be saved.
// - Data sets: visits of the report's subject (ReportInfo.PatientID is the
//   identification number) and tab in the period, both ends included; an
//   empty FromDate is an open start, an empty ToDate an open end. Values are
//   stored in conventional units; SI values are value * factor + offset. A
//   zero reading stays zero in both systems (the layouts treat it as no
//   reading).
class NorrixReportStore final : public QCReportStore
{
public:
    NorrixReportStore(); // the database of the registry settings
    explicit NorrixReportStore(SuiteSettings settings);
    ~NorrixReportStore() override;
    NorrixReportStore(const NorrixReportStore&) = delete;
    NorrixReportStore& operator=(const NorrixReportStore&) = delete;

    RecordsetPtr ListReports() override;
    RecordsetPtr OpenReport(qint32 reportId, bool siUnits, qint32& tab) override;
    qint32 SaveReport(const QString& name, const ReportInfo& info) override;
    // 0 when the definition was deleted, 1 when there was none with this ID.
    qint32 DeleteReport(qint32 reportId, const QString& reserved) override;
    bool CanDeleteReport(qint32 reportId, const QString& reserved) override;
    qint32 CountReportsNamed(const QString& name) override;

    RecordsetPtr ListTables(qint16 tab) override;
    RecordsetPtr ListVariables(bool siUnits, qint16 tab) override;

    RecordsetPtr GetGraphData(const ReportInfo& info, qint32 index, bool siUnits, double& mean, double& sd,
                              double& cv) override;
    RecordsetPtr GetTableData(const ReportInfo& info, bool siUnits) override;

    void BeginTrans() override;
    void CommitTrans() override;
    void RollbackTrans() override;

    // Saves a definition as the database's own setup does (the starter and
    // demo definitions): without asking for the user's right. savedBy is
    // stored as the saving user. Returns the new QCReportID.
    static qint32 storeDefinition(SuiteDatabase& db, const QString& name, const ReportInfo& info,
                                  const QString& savedBy);

private:
    struct Period
    {
        QDate from; // invalid = open
        QDate to;   // invalid = open
    };
    static Period periodOf(const ReportInfo& info);
    // The period's conditions on the visits "v" and their order.
    static void appendPeriod(const Period& period, QString& sql, QVariantList& params);
    static void checkTab(qint32 tab);
    static void checkName(const QString& name);
    // RuntimeError unless the signed-in user may change definitions here; the user.
    QString requireEditRight();
    // RuntimeError when the tab has no saved definition.
    static void requireDefinitionOn(SuiteDatabase& db, qint32 tab);

    SuiteDatabase m_db;
    int m_openTransactions = 0; // BeginTrans calls not yet committed or rolled back
};
