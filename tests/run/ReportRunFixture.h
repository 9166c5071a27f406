#pragma once

#include "common/ModalDriver.h"
#include "common/ScopedRegistryFile.h"
#include "common/TestStrings.h"
#include "components/QCReportStore.h"
#include "components/modCalcObject.h"
#include "output/RecordingTarget.h"
#include "output/modPrintGlobals.h"
#include "platform/Clock.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"
#include "reports/MainWindowHost.h"
#include "reports/ReportTabsPanel.h"
#include "run/DateRangePanel.h"
#include "run/ReportRunPanel.h"
#include "run/SubjectSearchPanel.h"

#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>

#include <functional>
#include <memory>

// The main window's panels as the report run sees them: subject, dates,
// report tabs and the run buttons, with the window's shared state.
class RunWindow final : public QWidget, public MainWindowHost
{
public:
    explicit RunWindow(ProgramState& state)
        : m_state(state)
    {
        auto* layout = new QVBoxLayout(this);
        search = new SubjectSearchPanel(*this, this);
        dates = new DateRangePanel(this);
        tabs = new ReportTabsPanel(*this, this);
        run = new ReportRunPanel(*this, *search, *dates, *tabs, this);
        for (QWidget* panel : std::initializer_list<QWidget*>{search, dates, tabs, run})
            layout->addWidget(panel);
        for (int tab = 0; tab < ReportTabsPanel::TabCount; ++tab)
            tabs->PrepareGrid(tab);
        resize(960, 680);
    }

    bool IsLoading() const override { return false; }
    void SetLoading(bool) override {}
    bool IsModified(int) const override { return false; }
    void SetReportDirty(int, bool) override {}
    int CurrentTab() const override { return tabs->CurrentTab(); }
    QString MsgTitle() const override { return QStringLiteral("T4052"); }
    bool ConfirmDiscardChanges(int, const QString&) override { return true; }
    QString SelectedPatientName() const override { return search->txtPatientName->text(); }
    QString SelectedPatientID() const override { return m_state.strCurrentPatientID; }
    QString FromDateText() const override { return dates->mskDate[0]->Text(); }
    QString ToDateText() const override { return dates->mskDate[1]->Text(); }
    void ResetDateRange() override {}
    ProgramState& State() override { return m_state; }

    SubjectSearchPanel* search = nullptr;
    DateRangePanel* dates = nullptr;
    ReportTabsPanel* tabs = nullptr;
    ReportRunPanel* run = nullptr;

private:
    ProgramState& m_state;
};

// One row of the variables grid.
struct GridRow
{
    QString table;
    QString name;
    bool inGraph = true;
    bool inTable = true;
};

// A report store for runs: it answers the graph and table data sets from the
// request it is given, fresh for every call (a run closes the data sets it
// let go of), and logs every call with what came with it.
class RunStore final : public QCReportStore
{
public:
    struct Script
    {
        // Visits of every chart and rows of the table.
        int graphVisits = 10;
        int tableVisits = 20;
        // Variables (1-based) whose chart has no data set.
        QList<qint32> noGraphData;
        // The table has no data set.
        bool noTable = false;
        // Throws RuntimeError from the operation whose log entry starts so.
        QString failOn;
        // "GetGraphData 1 si=0", "GetTableData si=0", in order.
        QStringList calls;
        // Per call: the request's variable names, joined by "|".
        QStringList names;
        // Per call: the pointer shape then (-1 = the default pointer).
        QList<int> cursors;
        // Every data set handed out.
        QList<RecordsetPtr> handedOut;
    };

    explicit RunStore(std::shared_ptr<Script> script)
        : m_script(std::move(script))
    {}

    static ComponentFactory::Creator creator(const std::shared_ptr<Script>& script)
    {
        return [script] { return std::make_unique<RunStore>(script); };
    }

    static QDate VisitDate(int n) { return QDate(2024, 1, 1).addDays(7 * (n - 1)); }

    RecordsetPtr GetGraphData(const ReportInfo& info, qint32 index, bool siUnits, double& mean, double& sd,
                              double& cv) override
    {
        call(QStringLiteral("GetGraphData %1 si=%2").arg(index).arg(int(siUnits)), info);
        if (m_script->noGraphData.contains(index))
            return nullptr;
        mean = 4.1;
        sd = 0.08;
        cv = 0.02;
        auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
        for (int n = 1; n <= m_script->graphVisits; ++n)
            data->AppendRow({QVariant(VisitDate(n)), QVariant(4.0 + 0.1 * (n % 3))});
        m_script->handedOut.append(data);
        return data;
    }

    RecordsetPtr GetTableData(const ReportInfo& info, bool siUnits) override
    {
        call(QStringLiteral("GetTableData si=%1").arg(int(siUnits)), info);
        if (m_script->noTable)
            return nullptr;
        QStringList fields{QStringLiteral("VisitDate")};
        for (const ReportVariable& variable : info.Variables)
        {
            if (variable.ShowInTable)
                fields.append(variable.VarName);
        }
        auto data = std::make_shared<Recordset>(fields);
        for (int n = 1; n <= m_script->tableVisits; ++n)
        {
            QVariantList row{QVariant(VisitDate(n))};
            for (int f = 1; f < fields.size(); ++f)
                row.append(QVariant(3.0 + f + n / 100.0));
            data->AppendRow(row);
        }
        m_script->handedOut.append(data);
        return data;
    }

    RecordsetPtr ListReports() override { return nullptr; }
    RecordsetPtr OpenReport(qint32, bool, qint32&) override { return nullptr; }
    qint32 SaveReport(const QString&, const ReportInfo&) override { return 0; }
    qint32 DeleteReport(qint32, const QString&) override { return 0; }
    bool CanDeleteReport(qint32, const QString&) override { return false; }
    qint32 CountReportsNamed(const QString&) override { return 0; }
    RecordsetPtr ListTables(qint16) override { return nullptr; }
    RecordsetPtr ListVariables(bool, qint16) override { return nullptr; }
    void BeginTrans() override {}
    void CommitTrans() override {}
    void RollbackTrans() override {}

private:
    void call(const QString& what, const ReportInfo& info)
    {
        m_script->calls.append(what);
        QStringList names;
        for (const ReportVariable& variable : info.Variables)
            names.append(variable.VarName);
        m_script->names.append(names.join(QLatin1Char('|')));
        const QCursor* cursor = QApplication::overrideCursor();
        m_script->cursors.append(cursor ? int(cursor->shape()) : -1);
        if (!m_script->failOn.isEmpty() && what.startsWith(m_script->failOn))
            throw RuntimeError(-2147467259, QStringLiteral("RunStore"),
                               QStringLiteral("The store failed in ") + m_script->failOn);
    }

    std::shared_ptr<Script> m_script;
};

// The report run ready to go: a fresh program state, the panels with a chosen
// subject and dates, the scripted store, the test strings and message
// recorder, a recording printer, printing possible, and conventional units in
// the settings.
struct ReportRunFixture
{
    ReportRunFixture()
    {
        Clock::pin(QDateTime(QDate(2024, 7, 1), QTime(9, 0)));
        window.search->txtPatientID->setText(QStringLiteral("QC001"));
        window.search->txtPatientName->setText(QStringLiteral("Adam Q Control"));
        state.strCurrentPatientID = QStringLiteral("QC001");
        window.dates->mskDate[0]->SetText(QStringLiteral("01/01/2024"));
        window.dates->mskDate[1]->SetText(QStringLiteral("06/30/2024"));
        printer->setDeviceName(QStringLiteral("Test Printer"));
        state.objPrint = printer;
        state.blnAppReady = true;
    }

    ~ReportRunFixture()
    {
        while (QApplication::overrideCursor())
            QApplication::restoreOverrideCursor();
        Clock::pin(QDateTime());
    }

    ReportRunFixture(const ReportRunFixture&) = delete;
    ReportRunFixture& operator=(const ReportRunFixture&) = delete;

    // Fills the grid of tab with rows (table ID 1, variable IDs 1.., two decimals).
    void setRows(int tab, const QList<GridRow>& rows)
    {
        FlexGrid& grid = *window.tabs->msfgVariable[std::size_t(tab)];
        grid.SetRows(int(rows.size()) + 2);
        for (int r = 1; r <= rows.size(); ++r)
        {
            const GridRow& row = rows.at(r - 1);
            const QStringList cells{row.table,
                                    row.name,
                                    QStringLiteral("L"),
                                    row.inGraph ? QStringLiteral("True") : QStringLiteral("False"),
                                    row.inTable ? QStringLiteral("True") : QStringLiteral("False"),
                                    QStringLiteral("1"),
                                    QString::number(r),
                                    QStringLiteral("2")};
            for (int c = 0; c < cells.size(); ++c)
                grid.SetTextMatrix(r, c, cells.at(c));
        }
        for (int c = 0; c < ReportTabsPanel::GridCols; ++c)
            grid.SetTextMatrix(int(rows.size()) + 1, c, QString());
    }

    // Names the definition of tab in the tab's list, as a saved one shows there.
    void setDefinitionName(int tab, const QString& name)
    {
        // Nothing is opened: the grid keeps the rows the test gives it.
        QComboBox* list = window.tabs->cboReports[std::size_t(tab)];
        const QSignalBlocker blocker(list);
        list->addItem(name);
        list->setCurrentIndex(list->count() - 1);
    }

    // FVC1.. in the graph and the table, then the table-only ones after them.
    void setVariables(int graphAndTable, int tableOnly = 0)
    {
        QList<GridRow> rows;
        for (int i = 1; i <= graphAndTable + tableOnly; ++i)
            rows.append({QStringLiteral("Pre"), QStringLiteral("FVC%1").arg(i), i <= graphAndTable, true});
        setRows(0, rows);
    }

    // The footers the recording printer saw, in order ("T4084 1", ...).
    static QStringList Footers(const RecordingTarget& target)
    {
        return target.texts().filter(QRegularExpression(QStringLiteral("^T4084 \\d+$")));
    }

    // Every operation a recording target saw as one line of text, so that two
    // targets' logs compare as lists.
    static QStringList Describe(const RecordingTarget& target)
    {
        QStringList lines;
        for (const RecordedOp& op : target.ops())
            lines.append(QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9")
                             .arg(int(op.kind))
                             .arg(op.x1)
                             .arg(op.y1)
                             .arg(op.x2)
                             .arg(op.y2)
                             .arg(op.text, op.color.name(), op.font)
                             .arg(op.fontSize));
        return lines;
    }

    ScopedTestStrings strings;
    RecordingMessageService boxes;
    ScopedRegistryFile registry{{{QStringLiteral("SI Unit"), QStringLiteral("0")}}};
    std::shared_ptr<RunStore::Script> store = std::make_shared<RunStore::Script>();
    ScopedComponentRegistration storeRegistration{QCReportStore::ClassId, RunStore::creator(store)};
    std::shared_ptr<RecordingTarget> printer = std::make_shared<RecordingTarget>();
    ProgramState state;
    RunWindow window{state};
};
