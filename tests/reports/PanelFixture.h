#pragma once

#include "common/FakeCatalogue.h"
#include "common/FakeReportStore.h"
#include "common/ScopedRegistryFile.h"
#include "common/TestStrings.h"
#include "components/modCalcObject.h"
#include "platform/MessageService.h"
#include "platform/RecordingMessageService.h"
#include "platform/ScopedComponentRegistration.h"
#include "platform/modResource.h"
#include "reports/MainWindowHost.h"
#include "reports/ReportTabsPanel.h"

#include <QStringList>

#include <memory>

// The main window as the report panel sees it, with the window's rules for
// the shared state and a log of the actions asked of it.
class TestHost final : public MainWindowHost
{
public:
    bool IsLoading() const override { return loading; }
    void SetLoading(bool value) override { loading = value; }
    bool IsModified(int tab) const override { return modified.at(std::size_t(tab)); }
    void SetReportDirty(int tab, bool value) override { modified.at(std::size_t(tab)) = value && !loading; }
    int CurrentTab() const override { return panel ? panel->CurrentTab() : 0; }
    QString MsgTitle() const override { return QStringLiteral("T4052"); }
    bool ConfirmDiscardChanges(int tab, const QString& title) override
    {
        actions.append(QStringLiteral("ConfirmDiscardChanges %1 %2").arg(tab).arg(title));
        if (!modified.at(std::size_t(tab)))
            return true;
        if (MsgBox(GetResourceText(4082), MsgStyle::YesNo + MsgStyle::Question, title) != MsgAnswer::Yes)
            return false;
        SetReportDirty(tab, false);
        return true;
    }
    QString SelectedPatientName() const override { return QString(); }
    QString SelectedPatientID() const override { return QString(); }
    QString FromDateText() const override { return from; }
    QString ToDateText() const override { return to; }
    void ResetDateRange() override
    {
        actions.append(QStringLiteral("ResetDateRange"));
        from.clear();
        to = QStringLiteral("06/15/2024");
    }
    ProgramState& State() override { return state; }

    bool loading = false;
    std::array<bool, 2> modified{};
    QString from = QStringLiteral("01/01/2024");
    QString to = QStringLiteral("02/01/2024");
    QStringList actions;
    const ReportTabsPanel* panel = nullptr;
    ProgramState state;
};

// The report panel over the scripted store and the fake catalogue, with the
// edit right, conventional units and the test strings.
struct PanelFixture
{
    PanelFixture()
    {
        FakeCatalogue::install(*store);
        host.panel = &panel;
        host.state.blnCanEditReports = true;
        panel.resize(900, 600);
    }

    // What the start-up does for the panel: grids, catalogues, lists, then
    // the first definition of each tab.
    void load()
    {
        host.loading = true;
        for (int t = 0; t < 2; ++t)
        {
            panel.PrepareGrid(t);
            panel.LoadVariableCatalogue(t);
        }
        panel.ListSavedReports();
        host.loading = false;
        panel.SelectFirstReports();
    }

    FlexGrid& grid(int tab) { return *panel.msfgVariable[std::size_t(tab)]; }

    ScopedTestStrings strings;
    RecordingMessageService boxes;
    ScopedRegistryFile registry{{{QStringLiteral("SI Unit"), QStringLiteral("0")}}};
    std::shared_ptr<FakeReportStore::Script> store = std::make_shared<FakeReportStore::Script>();
    ScopedComponentRegistration storeRegistration{QCReportStore::ClassId, FakeReportStore::creator(store)};
    TestHost host;
    ReportTabsPanel panel{host};
};
