#include "suite/NorrixReportStore.h"

#include "components/CalcEngine.h"
#include "platform/Clock.h"
#include "platform/ControlCharacters.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"
#include "suite/QueryRecordset.h"
#include "suite/SeriesStatistics.h"
#include "suite/SuiteText.h"
#include "suite/SuiteTransaction.h"
#include "suite/SuiteUser.h"

#include <QHash>
#include <QSqlQuery>

#include <algorithm>

namespace
{
using Field = QueryRecordset::Field;
using Kind = QueryRecordset::Kind;

const QString kSource = QStringLiteral("NorrixQCReports.QCReportStore");

[[noreturn]] void fail(qint32 number, const QString& description)
{
    throw RuntimeError(number, kSource, description);
}

struct Conversion
{
    double factor = 1;
    double offset = 0;

    QVariant apply(const QVariant& value) const
    {
        if (value.isNull())
            return value;
        const double v = value.toDouble();
        return QVariant(v == 0 ? 0.0 : v * factor + offset);
    }
};

// The SI conversions of the catalogue's variables.
QHash<qint32, Conversion> conversions(SuiteDatabase& db)
{
    QHash<qint32, Conversion> all;
    QSqlQuery query = db.exec(QStringLiteral("SELECT var_id, si_factor, si_offset FROM variables"));
    while (query.next())
        all.insert(query.value(0).toInt(), Conversion{query.value(1).toDouble(), query.value(2).toDouble()});
    return all;
}

Conversion conversionOf(const QHash<qint32, Conversion>& all, qint32 varId, bool siUnits)
{
    if (!siUnits)
        return Conversion();
    const auto it = all.constFind(varId);
    if (it == all.cend())
        fail(ErrorNumber::InvalidPropertyValue,
             QStringLiteral("The variable with ID %1 is not in the catalogue.").arg(varId));
    return *it;
}

QString unitColumn(bool siUnits)
{
    return siUnits ? QStringLiteral("v.si_unit") : QStringLiteral("v.unit");
}
} // namespace

NorrixReportStore::NorrixReportStore()
    : NorrixReportStore(SuiteSettings::fromRegistry())
{}

NorrixReportStore::NorrixReportStore(SuiteSettings settings)
    : m_db(std::move(settings))
{}

NorrixReportStore::~NorrixReportStore()
{
    // A store released inside BeginTrans keeps nothing of what it began.
    while (m_openTransactions > 0)
    {
        --m_openTransactions;
        try
        {
            m_db.rollback();
        }
        catch (const RuntimeError&)
        {
            // The connection is gone, and the server dropped the transaction with it.
        }
    }
}

void NorrixReportStore::checkTab(qint32 tab)
{
    if (tab != 0 && tab != 1)
        fail(ErrorNumber::InvalidPropertyValue, QStringLiteral("There is no report tab %1.").arg(tab));
}

RecordsetPtr NorrixReportStore::ListReports()
{
    const QList<Field> fields{{QStringLiteral("QCReportName"), Kind::Text},
                              {QStringLiteral("QCReportType"), Kind::Integer},
                              {QStringLiteral("QCReportID"), Kind::Integer}};
    QSqlQuery query = m_db.exec(QStringLiteral("SELECT name, tab, report_id FROM qc_reports"));
    std::vector<QVariantList> rows = QueryRecordset::rows(query, fields);
    std::stable_sort(rows.begin(), rows.end(), [](const QVariantList& a, const QVariantList& b) {
        const int byName = QString::compare(a.at(0).toString(), b.at(0).toString(), Qt::CaseInsensitive);
        if (byName != 0)
            return byName < 0;
        return a.at(2).toInt() < b.at(2).toInt();
    });
    return QueryRecordset::make(fields, std::move(rows));
}

RecordsetPtr NorrixReportStore::OpenReport(qint32 reportId, bool siUnits, qint32& tab)
{
    const QVariant storedTab =
        m_db.scalar(QStringLiteral("SELECT tab FROM qc_reports WHERE report_id = ?"), {reportId});
    if (storedTab.isNull())
        return nullptr;
    tab = storedTab.toInt();
    QSqlQuery query =
        m_db.exec(QStringLiteral("SELECT t.name, v.name, %1, p.show_in_graph, p.show_in_table, p.table_id, p.var_id, "
                                 "p.decimal_places "
                                 "FROM qc_report_params p "
                                 "JOIN test_tables t ON t.table_id = p.table_id "
                                 "JOIN variables v ON v.var_id = p.var_id "
                                 "WHERE p.report_id = ? ORDER BY p.param_order")
                      .arg(unitColumn(siUnits)),
                  {reportId});
    return QueryRecordset::read(query, {{QStringLiteral("QCUserName"), Kind::Text},
                                        {QStringLiteral("ParamsUserName"), Kind::Text},
                                        {QStringLiteral("ParamsUnit"), Kind::Text},
                                        {QStringLiteral("ShowInGraph"), Kind::Boolean},
                                        {QStringLiteral("ShowInTable"), Kind::Boolean},
                                        {QStringLiteral("QCTableID"), Kind::Integer},
                                        {QStringLiteral("ParamsDefID"), Kind::Integer},
                                        {QStringLiteral("Decimal"), Kind::Integer}});
}

void NorrixReportStore::checkName(const QString& name)
{
    if (name.isEmpty())
        fail(ErrorNumber::InvalidPropertyValue, QStringLiteral("A QC report definition needs a name."));
    if (name.toUcs4().size() > MaxNameLength)
        fail(ErrorNumber::InvalidPropertyValue,
             QStringLiteral("The name of a QC report definition has at most %1 characters.").arg(MaxNameLength));
    for (const QChar c : name)
    {
        if (IsControlCharacter(c))
            fail(ErrorNumber::InvalidPropertyValue,
                 QStringLiteral("The name of a QC report definition cannot hold control characters such as tabs "
                                "or line breaks."));
    }
}

QString NorrixReportStore::requireEditRight()
{
    const SuiteUser user = SuiteUser::signedIn(m_db);
    if (user.disabled)
        fail(SuiteDatabase::ErrorPermissionDenied,
             QStringLiteral("The user \"%1\" is disabled in the QC database, so report definitions cannot be "
                            "changed.")
                 .arg(user.name));
    if (!user.hasRight(CalcEngine::RightEditReports))
        fail(SuiteDatabase::ErrorPermissionDenied,
             QStringLiteral("The user \"%1\" may not change QC report definitions (right 501); nothing was "
                            "changed.")
                 .arg(user.name));
    if (m_db.isReadOnly())
        fail(SuiteDatabase::ErrorReadOnly,
             QStringLiteral("The QC database is read-only, so report definitions cannot be changed (%1).")
                 .arg(m_db.settings().describe()));
    return user.name;
}

qint32 NorrixReportStore::SaveReport(const QString& name, const ReportInfo& info)
{
    checkName(name);
    checkTab(info.TestTab);
    return m_db.runWhole([&] {
        const QString user = requireEditRight();
        try
        {
            return storeDefinition(m_db, name, info, user);
        }
        catch (const RuntimeError& error)
        {
            if (error.number() != SuiteDatabase::ErrorDuplicateKey)
                throw;
            throw RuntimeError(ErrorNameTaken, kSource,
                               QStringLiteral("A QC report definition named \"%1\" exists already; choose another "
                                              "name.")
                                   .arg(name),
                               error.detail());
        }
    });
}

qint32 NorrixReportStore::storeDefinition(SuiteDatabase& db, const QString& name, const ReportInfo& info,
                                          const QString& savedBy)
{
    checkName(name);
    checkTab(info.TestTab);
    SuiteTransaction transaction(db);
    const qint32 reportId =
        db.scalar(QStringLiteral("INSERT INTO qc_reports (name, name_key, tab, saved_by, saved_at) "
                                 "VALUES (?, ?, ?, ?, ?) RETURNING report_id"),
                  {name, SuiteText::searchKey(name), qint32(info.TestTab), savedBy, SuiteText::timestamp(Clock::now())})
            .toInt();
    std::vector<QVariantList> params;
    qint32 order = 0;
    for (const ReportVariable& variable : info.Variables)
    {
        params.push_back({reportId, ++order, variable.TableID, variable.ParamsDefID, qint32(variable.ShowInGraph),
                          qint32(variable.ShowInTable), variable.DecimalPlaces});
    }
    db.insertRows(QStringLiteral("qc_report_params"),
                  {QStringLiteral("report_id"), QStringLiteral("param_order"), QStringLiteral("table_id"),
                   QStringLiteral("var_id"), QStringLiteral("show_in_graph"), QStringLiteral("show_in_table"),
                   QStringLiteral("decimal_places")},
                  params);
    transaction.commit();
    return reportId;
}

qint32 NorrixReportStore::DeleteReport(qint32 reportId, const QString& reserved)
{
    Q_UNUSED(reserved);
    return m_db.runWhole([&] {
        requireEditRight();
        // Inside a transaction begun by the caller the delete is the first
        // half of replacing the definition (Save).
        const bool replacing = m_db.inTransaction();
        SuiteTransaction transaction(m_db);
        const QVariant tab = m_db.scalar(QStringLiteral("SELECT tab FROM qc_reports WHERE report_id = ?"), {reportId});
        m_db.exec(QStringLiteral("DELETE FROM qc_report_params WHERE report_id = ?"), {reportId});
        const int deleted =
            m_db.exec(QStringLiteral("DELETE FROM qc_reports WHERE report_id = ?"), {reportId}).numRowsAffected();
        if (deleted > 0)
        {
            // Looked at when the whole transaction commits: Save deletes the
            // stored copy and saves it anew inside one.
            m_db.checkBeforeCommit([db = m_db, tab = tab.toInt()]() mutable { requireDefinitionOn(db, tab); });
        }
        else if (replacing && reportId > 0)
        {
            // The definition opened here is gone: another workstation deleted
            // it, or saved it, which replaces it under a new ID. Saving this
            // copy now would put a second one beside the other's.
            fail(ErrorDefinitionChanged,
                 QStringLiteral("The report definition was changed or deleted on another workstation after it was "
                                "opened here, so it was not saved. The changes are still here: save them under "
                                "another name with Save As, or open the definition again to see the other "
                                "workstation's version."));
        }
        transaction.commit();
        return deleted > 0 ? 0 : 1;
    });
}

// Every tab keeps at least one saved definition: the program cannot start on
// a tab without one.
void NorrixReportStore::requireDefinitionOn(SuiteDatabase& db, qint32 tab)
{
    if (db.scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports WHERE tab = ?"), {tab}).toInt() == 0)
        fail(ErrorNumber::InvalidPropertyValue,
             QStringLiteral("The only saved report of a tab cannot be deleted: save another one on the tab first."));
}

bool NorrixReportStore::CanDeleteReport(qint32 reportId, const QString& reserved)
{
    Q_UNUSED(reserved);
    const QVariant tab = m_db.scalar(QStringLiteral("SELECT tab FROM qc_reports WHERE report_id = ?"), {reportId});
    if (tab.isNull())
        return false;
    if (m_db.scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports WHERE tab = ?"), {tab}).toInt() < 2)
        return false;
    const SuiteUser user = SuiteUser::signedIn(m_db);
    return !user.disabled && user.hasRight(CalcEngine::RightEditReports) && !m_db.isReadOnly();
}

qint32 NorrixReportStore::CountReportsNamed(const QString& name)
{
    return m_db
        .scalar(QStringLiteral("SELECT COUNT(*) FROM qc_reports WHERE name_key = ?"), {SuiteText::searchKey(name)})
        .toInt();
}

RecordsetPtr NorrixReportStore::ListTables(qint16 tab)
{
    QSqlQuery query =
        m_db.exec(QStringLiteral("SELECT table_id, name FROM test_tables WHERE tab = ? ORDER BY sort_order, table_id"),
                  {qint32(tab)});
    return QueryRecordset::read(
        query, {{QStringLiteral("QCTableID"), Kind::Integer}, {QStringLiteral("QCUserName"), Kind::Text}});
}

RecordsetPtr NorrixReportStore::ListVariables(bool siUnits, qint16 tab)
{
    QSqlQuery query = m_db.exec(QStringLiteral("SELECT v.var_id, v.name, %1, v.decimal_places FROM variables v "
                                               "WHERE v.tab = ? ORDER BY v.sort_order, v.var_id")
                                    .arg(unitColumn(siUnits)),
                                {qint32(tab)});
    return QueryRecordset::read(query, {{QStringLiteral("VarID"), Kind::Integer},
                                        {QStringLiteral("VarUserName"), Kind::Text},
                                        {QStringLiteral("VarUnit"), Kind::Text},
                                        {QStringLiteral("DecimalPlaces"), Kind::Integer}});
}

void NorrixReportStore::appendPeriod(const Period& period, QString& sql, QVariantList& params)
{
    if (period.from.isValid())
    {
        sql += QStringLiteral(" AND v.visit_date >= ?");
        params.append(period.from);
    }
    if (period.to.isValid())
    {
        sql += QStringLiteral(" AND v.visit_date <= ?");
        params.append(period.to);
    }
    sql += QStringLiteral(" ORDER BY v.visit_date, v.visit_id");
}

NorrixReportStore::Period NorrixReportStore::periodOf(const ReportInfo& info)
{
    Period period;
    const auto read = [](const QString& text) {
        if (text.trimmed().isEmpty())
            return QDate();
        const QDate date = ToDate(QVariant(text.trimmed()));
        if (!date.isValid())
            fail(ErrorNumber::TypeMismatch, QStringLiteral("\"%1\" is not a date in the form mm/dd/yyyy.").arg(text));
        return date;
    };
    period.from = read(info.FromDate);
    period.to = read(info.ToDate);
    return period;
}

RecordsetPtr NorrixReportStore::GetGraphData(const ReportInfo& info, qint32 index, bool siUnits, double& mean,
                                             double& sd, double& cv)
{
    if (index < 1 || index > info.VariableCount())
        fail(ErrorNumber::SubscriptOutOfRange, QStringLiteral("The report has no variable %1.").arg(index));
    const ReportVariable& variable = info.Variable(index);
    const Period period = periodOf(info);
    const Conversion conversion = siUnits ? conversionOf(conversions(m_db), variable.ParamsDefID, true) : Conversion();

    QString sql = QStringLiteral("SELECT v.visit_date, r.result_value FROM visits v "
                                 "JOIN patients p ON p.patient_id = v.patient_id "
                                 "JOIN results r ON r.visit_id = v.visit_id "
                                 "WHERE p.id_num = ? AND v.tab = ? AND r.table_id = ? AND r.var_id = ? "
                                 "AND r.result_value IS NOT NULL");
    QVariantList params{info.PatientID, qint32(info.TestTab), variable.TableID, variable.ParamsDefID};
    appendPeriod(period, sql, params);

    const QList<Field> fields{{QStringLiteral("VisitDate"), Kind::Date}, {QStringLiteral("Value"), Kind::Double}};
    QSqlQuery query = m_db.exec(sql, params);
    std::vector<QVariantList> rows = QueryRecordset::rows(query, fields);
    std::vector<double> counted;
    counted.reserve(rows.size());
    for (QVariantList& row : rows)
    {
        row[1] = conversion.apply(row.at(1));
        const double value = row.at(1).toDouble();
        if (value != 0)
            counted.push_back(value);
    }
    const SeriesStatistics statistics = SeriesStatistics::of(counted);
    mean = statistics.Mean;
    sd = statistics.SD;
    cv = statistics.CV;
    return QueryRecordset::make(fields, std::move(rows));
}

RecordsetPtr NorrixReportStore::GetTableData(const ReportInfo& info, bool siUnits)
{
    const Period period = periodOf(info);
    const QHash<qint32, Conversion> all = siUnits ? conversions(m_db) : QHash<qint32, Conversion>();

    QList<Field> fields{{QStringLiteral("VisitDate"), Kind::Date}};
    QList<Conversion> columnConversions;
    QString select = QStringLiteral("SELECT v.visit_date");
    QString joins;
    QVariantList params;
    for (const ReportVariable& variable : info.Variables)
    {
        if (!variable.ShowInTable)
            continue;
        const QString alias = QStringLiteral("r") + QString::number(fields.size());
        select += QStringLiteral(", ") + alias + QStringLiteral(".result_value");
        joins += QStringLiteral(" LEFT JOIN results %1 ON %1.visit_id = v.visit_id AND %1.table_id = ? "
                                "AND %1.var_id = ?")
                     .arg(alias);
        params << variable.TableID << variable.ParamsDefID;
        fields.append({variable.VarName, Kind::Double});
        columnConversions.append(conversionOf(all, variable.ParamsDefID, siUnits));
    }

    QString sql = select + QStringLiteral(" FROM visits v JOIN patients p ON p.patient_id = v.patient_id") + joins +
                  QStringLiteral(" WHERE p.id_num = ? AND v.tab = ?");
    params << info.PatientID << qint32(info.TestTab);
    appendPeriod(period, sql, params);

    QSqlQuery query = m_db.exec(sql, params);
    std::vector<QVariantList> rows = QueryRecordset::rows(query, fields);
    if (siUnits)
    {
        for (QVariantList& row : rows)
        {
            for (qsizetype c = 0; c < columnConversions.size(); ++c)
                row[c + 1] = columnConversions.at(c).apply(row.at(c + 1));
        }
    }
    return QueryRecordset::make(fields, std::move(rows));
}

void NorrixReportStore::BeginTrans()
{
    m_db.begin();
    ++m_openTransactions;
}

void NorrixReportStore::CommitTrans()
{
    if (m_openTransactions == 0)
        fail(ErrorNumber::InvalidPropertyValue, QStringLiteral("CommitTrans without BeginTrans."));
    --m_openTransactions;
    m_db.commit();
}

void NorrixReportStore::RollbackTrans()
{
    if (m_openTransactions == 0)
        fail(ErrorNumber::InvalidPropertyValue, QStringLiteral("RollbackTrans without BeginTrans."));
    --m_openTransactions;
    m_db.rollback();
}
