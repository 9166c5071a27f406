#pragma once

#include "components/ReportInfo.h"
#include "reports/MainWindowHost.h"

#include <QTabWidget>

#include <array>

class VariableEditor;

// Builds the report request of a tab from its editor's rows, the chosen
// subject and the date boxes, for the report store and the layouts.
class ReportRequestBuilder
{
public:
    static constexpr int TabCount = 2;

    // tabs: the tab strip, whose current tab the request is filed under.
    ReportRequestBuilder(MainWindowHost& host, const QTabWidget& tabs,
                         const std::array<VariableEditor*, TabCount>& editors);

    // The report request of tab: its grid's rows (names made unique), the
    // subject and the date boxes. The number of variables put in; 0 leaves
    // info as it was.
    qint32 BuildReportInfo(qint16 tab, ReportInfo& info) const;

private:
    MainWindowHost& m_host;
    const QTabWidget& m_tabs;
    std::array<VariableEditor*, TabCount> m_editors;
};
