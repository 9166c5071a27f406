#pragma once

#include "components/QCReportStore.h"
#include "platform/RuntimeError.h"

#include <QHash>
#include <QList>

#include <functional>
#include <memory>

// A report store for layout and window tests. Each store object created by
// the factory shares one Script, so a test sets the answers up front and
// reads back what was asked.
class FakeReportStore final : public QCReportStore
{
public:
    struct GraphAnswer
    {
        double mean = 0;
        double sd = 0;
        double cv = 0;
        RecordsetPtr data; // nullptr = no data set
    };

    struct Script
    {
        // GetGraphData answers by 1-based variable index.
        QHash<qint32, GraphAnswer> graph;
        // GetTableData's answer (nullptr = no data set).
        RecordsetPtr table;
        // Throws RuntimeError from the operation of this name ("GetGraphData", "SaveReport", ...).
        QString failOn;
        // The number of that error (QCReportStore::ErrorNameTaken, ...).
        qint32 failNumber = -2147467259;
        // Everything asked, in order: "GetGraphData 2 si=1", "GetTableData si=0", ...
        QStringList calls;
        // Optional answers for the definition and catalogue operations.
        std::function<RecordsetPtr()> listReports;
        std::function<RecordsetPtr(qint32 id, bool si, qint32& tab)> openReport;
        std::function<RecordsetPtr(qint16 tab)> listTables;
        std::function<RecordsetPtr(bool si, qint16 tab)> listVariables;
        qint32 nextId = 100;
        int created = 0;
        // Called with every entry of calls as it is made.
        std::function<void(const QString&)> onCall;
        // CanDeleteReport's answer.
        bool canDelete = true;
        // CountReportsNamed's answer (0 without one).
        std::function<qint32(const QString& name)> countReportsNamed;
        // Every record handed to SaveReport, in order.
        QList<ReportInfo> saved;
    };

    explicit FakeReportStore(std::shared_ptr<Script> script)
        : m_script(std::move(script))
    {
        ++m_script->created;
    }

    // Registers a creator that hands every new store the same script.
    static ComponentFactory::Creator creator(const std::shared_ptr<Script>& script)
    {
        return [script] { return std::make_unique<FakeReportStore>(script); };
    }

    RecordsetPtr ListReports() override
    {
        call(QStringLiteral("ListReports"));
        return m_script->listReports ? m_script->listReports() : nullptr;
    }
    RecordsetPtr OpenReport(qint32 reportId, bool siUnits, qint32& tab) override
    {
        call(QStringLiteral("OpenReport %1 si=%2").arg(reportId).arg(int(siUnits)));
        return m_script->openReport ? m_script->openReport(reportId, siUnits, tab) : nullptr;
    }
    qint32 SaveReport(const QString& name, const ReportInfo& info) override
    {
        call(QStringLiteral("SaveReport %1 tab=%2 n=%3").arg(name).arg(info.TestTab).arg(info.VariableCount()));
        m_script->saved.append(info);
        return m_script->nextId++;
    }
    qint32 DeleteReport(qint32 reportId, const QString&) override
    {
        call(QStringLiteral("DeleteReport %1").arg(reportId));
        return 0;
    }
    bool CanDeleteReport(qint32 reportId, const QString&) override
    {
        call(QStringLiteral("CanDeleteReport %1").arg(reportId));
        return m_script->canDelete;
    }
    qint32 CountReportsNamed(const QString& name) override
    {
        call(QStringLiteral("CountReportsNamed %1").arg(name));
        return m_script->countReportsNamed ? m_script->countReportsNamed(name) : 0;
    }
    RecordsetPtr ListTables(qint16 tab) override
    {
        call(QStringLiteral("ListTables %1").arg(tab));
        return m_script->listTables ? m_script->listTables(tab) : nullptr;
    }
    RecordsetPtr ListVariables(bool siUnits, qint16 tab) override
    {
        call(QStringLiteral("ListVariables si=%1 %2").arg(int(siUnits)).arg(tab));
        return m_script->listVariables ? m_script->listVariables(siUnits, tab) : nullptr;
    }
    RecordsetPtr GetGraphData(const ReportInfo&, qint32 index, bool siUnits, double& mean, double& sd,
                              double& cv) override
    {
        call(QStringLiteral("GetGraphData %1 si=%2").arg(index).arg(int(siUnits)));
        const GraphAnswer answer = m_script->graph.value(index);
        mean = answer.mean;
        sd = answer.sd;
        cv = answer.cv;
        return answer.data;
    }
    RecordsetPtr GetTableData(const ReportInfo&, bool siUnits) override
    {
        call(QStringLiteral("GetTableData si=%1").arg(int(siUnits)));
        return m_script->table;
    }
    void BeginTrans() override { call(QStringLiteral("BeginTrans")); }
    void CommitTrans() override { call(QStringLiteral("CommitTrans")); }
    void RollbackTrans() override { call(QStringLiteral("RollbackTrans")); }

private:
    void call(const QString& what)
    {
        m_script->calls.append(what);
        if (m_script->onCall)
            m_script->onCall(what);
        if (!m_script->failOn.isEmpty() && what.startsWith(m_script->failOn))
            throw RuntimeError(m_script->failNumber, QStringLiteral("FakeReportStore"),
                               QStringLiteral("The store failed in ") + m_script->failOn);
    }

    std::shared_ptr<Script> m_script;
};
