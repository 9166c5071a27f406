#include "PanelDriving.h"
#include "PanelFixture.h"

#include "common/TestMain.h"
#include "platform/RuntimeError.h"

#include <QTest>

using namespace PanelDriving;

namespace
{
RecordsetPtr parameterRows(std::vector<QVariantList> rows)
{
    auto rs = std::make_shared<Recordset>(FakeCatalogue::parameterFields());
    for (QVariantList& row : rows)
        rs->AppendRow(std::move(row));
    return rs;
}

// The subject and period the host reports.
class SubjectHost final : public MainWindowHost
{
public:
    explicit SubjectHost(TestHost& inner)
        : m_inner(inner)
    {}
    bool IsLoading() const override { return m_inner.IsLoading(); }
    void SetLoading(bool loading) override { m_inner.SetLoading(loading); }
    bool IsModified(int tab) const override { return m_inner.IsModified(tab); }
    void SetReportDirty(int tab, bool value) override { m_inner.SetReportDirty(tab, value); }
    int CurrentTab() const override { return m_inner.CurrentTab(); }
    QString MsgTitle() const override { return m_inner.MsgTitle(); }
    bool ConfirmDiscardChanges(int tab, const QString& title) override
    {
        return m_inner.ConfirmDiscardChanges(tab, title);
    }
    QString SelectedPatientName() const override { return QStringLiteral("Ada Q Control"); }
    QString SelectedPatientID() const override { return QStringLiteral("QC-0042"); }
    QString FromDateText() const override { return m_inner.FromDateText(); }
    QString ToDateText() const override { return m_inner.ToDateText(); }
    void ResetDateRange() override { m_inner.ResetDateRange(); }
    ProgramState& State() override { return m_inner.State(); }

private:
    TestHost& m_inner;
};

// A second panel over the same store, whose host has chosen a subject.
struct SubjectPanel
{
    SubjectPanel()
    {
        inner.panel = &panel;
        inner.loading = true;
        for (int t = 0; t < 2; ++t)
        {
            panel.PrepareGrid(t);
            panel.LoadVariableCatalogue(t);
        }
        panel.ListSavedReports();
        inner.loading = false;
        panel.SelectFirstReports();
    }

    TestHost inner;
    SubjectHost host{inner};
    ReportTabsPanel panel{host};
};

void showPanel(PanelFixture& f, int tab)
{
    f.load();
    f.panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&f.panel));
    clickTab(f.panel, tab);
}
} // namespace

class TestReportRequest : public QObject
{
    Q_OBJECT

private slots:
    void recordCarriesWhatTheGridAndTheBoxesSay()
    {
        PanelFixture f;
        SubjectPanel subject;
        ReportTabsPanel& panel = subject.panel;
        QCOMPARE(panel.CurrentTab(), 1);

        ReportInfo info;
        QCOMPARE(panel.BuildReportInfo(1, info), 3);
        QCOMPARE(info.TestTab, qint16(1));
        QCOMPARE(info.PatientName, QStringLiteral("Ada Q Control"));
        QCOMPARE(info.PatientID, QStringLiteral("QC-0042"));
        QCOMPARE(info.FromDate, QStringLiteral("01/01/2024"));
        QCOMPARE(info.ToDate, QStringLiteral("02/01/2024"));
        QCOMPARE(info.VariableCount(), 3);

        const ReportVariable& vo2 = info.Variable(1);
        QCOMPARE(vo2.TableID, 11);
        QCOMPARE(vo2.ParamsDefID, 201);
        QCOMPARE(vo2.TableName, QStringLiteral("Rest"));
        QCOMPARE(vo2.VarName, QStringLiteral("VO2"));
        QCOMPARE(vo2.Unit, QStringLiteral("mL/min"));
        QVERIFY(vo2.ShowInGraph);
        QVERIFY(vo2.ShowInTable);
        QCOMPARE(vo2.DecimalPlaces, 0);
        QVERIFY(vo2.Spare1.isEmpty());
        QVERIFY(vo2.Note.isEmpty());
        QVERIFY(vo2.Spare2.isEmpty());

        const ReportVariable& hr = info.Variable(2);
        QCOMPARE(hr.TableID, 12);
        QCOMPARE(hr.TableName, QStringLiteral("Exercise"));
        QVERIFY(hr.ShowInGraph);
        QVERIFY(!hr.ShowInTable);

        const ReportVariable& rer = info.Variable(3);
        QCOMPARE(rer.VarName, QStringLiteral("RER"));
        QVERIFY(rer.Unit.isEmpty());
        QVERIFY(!rer.ShowInGraph);
        QCOMPARE(rer.DecimalPlaces, 2);
    }

    void rowsWithNeitherFlagGoIn()
    {
        PanelFixture f;
        showPanel(f, 0);
        click(f.panel.cmdNew);
        addVariable(f.panel, 0, QStringLiteral("Post"), QStringLiteral("Effort"), false, false);
        addVariable(f.panel, 0, QStringLiteral("Post"), QStringLiteral("PEF (L/s)"), true, false);
        ReportInfo info;
        QCOMPARE(f.panel.BuildReportInfo(0, info), 2);
        QCOMPARE(info.TestTab, qint16(0));
        QCOMPARE(info.Variable(1).VarName, QStringLiteral("Effort"));
        QCOMPARE(info.Variable(1).TableID, 2);
        QCOMPARE(info.Variable(1).ParamsDefID, 105);
        QVERIFY(!info.Variable(1).ShowInGraph);
        QVERIFY(!info.Variable(1).ShowInTable);
        QCOMPARE(info.Variable(2).DecimalPlaces, 2);
        // New emptied the From box and put today into To.
        QVERIFY(info.FromDate.isEmpty());
        QCOMPARE(info.ToDate, QStringLiteral("06/15/2024"));
    }

    void anEmptyGridFillsNothing()
    {
        PanelFixture f;
        showPanel(f, 1);
        click(f.panel.cmdNew);
        ReportInfo info;
        info.TestTab = 7;
        info.PatientName = QStringLiteral("before");
        info.Variables.append(ReportVariable{});
        QCOMPARE(f.panel.BuildReportInfo(1, info), 0);
        QCOMPARE(info.TestTab, qint16(7));
        QCOMPARE(info.PatientName, QStringLiteral("before"));
        QCOMPARE(info.VariableCount(), 1);
    }

    void repeatedNamesAreNumberedWithoutRegardToCase()
    {
        PanelFixture f;
        f.store->openReport = [](qint32 id, bool si, qint32& tab) {
            if (id != 3)
                return FakeCatalogue::parameters(id, si, tab);
            tab = 1;
            return parameterRows({{QStringLiteral("Rest"), QStringLiteral("Vx"), QString(), true, true, 11, 201, 0},
                                  {QStringLiteral("Exercise"), QStringLiteral("vx"), QString(), true, true, 12, 201, 0},
                                  {QStringLiteral("Rest"), QStringLiteral("HR"), QString(), true, true, 11, 202, 0},
                                  {QStringLiteral("Rest"), QStringLiteral("Vx"), QString(), true, true, 11, 203, 0}});
        };
        showPanel(f, 1);
        ReportInfo info;
        QCOMPARE(f.panel.BuildReportInfo(1, info), 4);
        QStringList names;
        for (const ReportVariable& variable : info.Variables)
            names.append(variable.VarName);
        QCOMPARE(names, QStringList({QStringLiteral("Vx"), QStringLiteral("vx (1)"), QStringLiteral("HR"),
                                     QStringLiteral("Vx (2)")}));
        // Every build starts counting afresh.
        ReportInfo again;
        QCOMPARE(f.panel.BuildReportInfo(1, again), 4);
        QCOMPARE(again.Variable(2).VarName, QStringLiteral("vx (1)"));
        // The grid keeps the names as they were.
        QCOMPARE(f.grid(1).TextMatrix(2, 1), QStringLiteral("vx"));
    }

    void theSameVariableAddedTwiceGetsTwoNames()
    {
        PanelFixture f;
        showPanel(f, 1);
        click(f.panel.cmdNew);
        for (int i = 0; i < 3; ++i)
            addVariable(f.panel, 1, QStringLiteral("Rest"), QStringLiteral("HR (bpm)"), false, true);
        ReportInfo info;
        QCOMPARE(f.panel.BuildReportInfo(1, info), 3);
        QCOMPARE(info.Variable(1).VarName, QStringLiteral("HR"));
        QCOMPARE(info.Variable(2).VarName, QStringLiteral("HR (1)"));
        QCOMPARE(info.Variable(3).VarName, QStringLiteral("HR (2)"));
    }

    void onlyTheExactWordIsTrue()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.grid(0).SetTextMatrix(1, 3, QStringLiteral("true"));
        f.grid(0).SetTextMatrix(1, 4, QStringLiteral("TRUE"));
        ReportInfo info;
        QCOMPARE(f.panel.BuildReportInfo(0, info), 2);
        QVERIFY(!info.Variable(1).ShowInGraph);
        QVERIFY(!info.Variable(1).ShowInTable);
        QVERIFY(info.Variable(2).ShowInGraph);
    }

    void aCellThatIsNoNumberIsATypeMismatch()
    {
        PanelFixture f;
        showPanel(f, 0);
        f.grid(0).SetTextMatrix(2, 7, QString());
        ReportInfo info;
        try
        {
            f.panel.BuildReportInfo(0, info);
            QFAIL("an empty decimal places cell must not read as a number");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 13);
        }
    }

    void aTabBeyondTheTwoIsAnError()
    {
        PanelFixture f;
        f.load();
        ReportInfo info;
        QVERIFY_THROWS_EXCEPTION(RuntimeError, f.panel.BuildReportInfo(2, info));
    }
};

CALVEX_TEST(TestReportRequest)
#include "TestReportRequest.moc"
