#pragma once

#include "components/QCReportStore.h"
#include "components/ReportInfo.h"
#include "platform/ComponentFactory.h"
#include "platform/Recordset.h"

// One chart of a request as the report store gives it: the statistics of the
// chart and its visits (date, value).
struct StoredChart
{
    double mean = 0;
    double sd = 0;
    double cv = 0;
    RecordsetPtr data;

    // Variable i (1-based) of info, in SI or conventional units, through a new store object.
    static StoredChart read(const ReportInfo& info, qint32 i, bool siUnits)
    {
        StoredChart chart;
        chart.data = ComponentFactory::create<QCReportStore>(QCReportStore::ClassId)
                         ->GetGraphData(info, i, siUnits, chart.mean, chart.sd, chart.cv);
        return chart;
    }
};
