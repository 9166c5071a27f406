#pragma once

#include "common/FakeReportStore.h"
#include "platform/Recordset.h"

#include <QStringList>

#include <memory>

// A small variable catalogue and three saved definitions for window tests,
// answered by FakeReportStore:
//
//   tab 0 tables    1 "Pre", 2 "Post"
//   tab 0 variables 101 FVC (L), 102 FEV1 (L), 103 FEV1/FVC (%), 104 PEF (L/s), 105 Effort (no unit)
//   tab 1 tables    11 "Rest", 12 "Exercise"
//   tab 1 variables 201 VO2 (mL/min, SI: L/min), 202 HR (bpm), 203 RER (no unit)
//   reports         1 "Spirometry QC" (tab 0, 2 rows), 2 "Flow QC" (tab 0, 1 row), 3 "Exercise QC" (tab 1, 3 rows)
namespace FakeCatalogue
{
inline RecordsetPtr tables(qint16 tab)
{
    auto rs = std::make_shared<Recordset>(QStringList{QStringLiteral("QCTableID"), QStringLiteral("QCUserName")});
    if (tab == 0)
    {
        rs->AppendRow({1, QStringLiteral("Pre")});
        rs->AppendRow({2, QStringLiteral("Post")});
    }
    else
    {
        rs->AppendRow({11, QStringLiteral("Rest")});
        rs->AppendRow({12, QStringLiteral("Exercise")});
    }
    return rs;
}

inline RecordsetPtr variables(bool si, qint16 tab)
{
    auto rs = std::make_shared<Recordset>(QStringList{QStringLiteral("VarID"), QStringLiteral("VarUserName"),
                                                      QStringLiteral("VarUnit"), QStringLiteral("DecimalPlaces")});
    if (tab == 0)
    {
        rs->AppendRow({101, QStringLiteral("FVC"), QStringLiteral("L"), 2});
        rs->AppendRow({102, QStringLiteral("FEV1"), QStringLiteral("L"), 2});
        rs->AppendRow({103, QStringLiteral("FEV1/FVC"), QStringLiteral("%"), 0});
        rs->AppendRow({104, QStringLiteral("PEF"), QStringLiteral("L/s"), 2});
        rs->AppendRow({105, QStringLiteral("Effort"), QVariant(), 0});
    }
    else
    {
        rs->AppendRow({201, QStringLiteral("VO2"), si ? QStringLiteral("L/min") : QStringLiteral("mL/min"), 0});
        rs->AppendRow({202, QStringLiteral("HR"), QStringLiteral("bpm"), 0});
        rs->AppendRow({203, QStringLiteral("RER"), QString(), 2});
    }
    return rs;
}

inline RecordsetPtr reports()
{
    auto rs = std::make_shared<Recordset>(
        QStringList{QStringLiteral("QCReportName"), QStringLiteral("QCReportType"), QStringLiteral("QCReportID")});
    rs->AppendRow({QStringLiteral("Spirometry QC"), 0, 1});
    rs->AppendRow({QStringLiteral("Exercise QC"), 1, 3});
    rs->AppendRow({QStringLiteral("Flow QC"), 0, 2});
    return rs;
}

inline QStringList parameterFields()
{
    return {QStringLiteral("QCUserName"),  QStringLiteral("ParamsUserName"), QStringLiteral("ParamsUnit"),
            QStringLiteral("ShowInGraph"), QStringLiteral("ShowInTable"),    QStringLiteral("QCTableID"),
            QStringLiteral("ParamsDefID"), QStringLiteral("Decimal")};
}

inline RecordsetPtr parameters(qint32 id, bool si, qint32& tab)
{
    auto rs = std::make_shared<Recordset>(parameterFields());
    switch (id)
    {
    case 1:
        tab = 0;
        rs->AppendRow({QStringLiteral("Pre"), QStringLiteral("FVC"), QStringLiteral("L"), true, true, 1, 101, 2});
        rs->AppendRow({QStringLiteral("Pre"), QStringLiteral("FEV1"), QStringLiteral("L"), true, false, 1, 102, 2});
        return rs;
    case 2:
        tab = 0;
        rs->AppendRow({QStringLiteral("Post"), QStringLiteral("PEF"), QStringLiteral("L/s"), false, true, 2, 104, 2});
        return rs;
    case 3:
        tab = 1;
        rs->AppendRow({QStringLiteral("Rest"), QStringLiteral("VO2"),
                       si ? QStringLiteral("L/min") : QStringLiteral("mL/min"), true, true, 11, 201, 0});
        rs->AppendRow(
            {QStringLiteral("Exercise"), QStringLiteral("HR"), QStringLiteral("bpm"), true, false, 12, 202, 0});
        rs->AppendRow({QStringLiteral("Rest"), QStringLiteral("RER"), QVariant(), false, true, 11, 203, 2});
        return rs;
    default:
        return nullptr;
    }
}

// Makes script answer from this catalogue.
inline void install(FakeReportStore::Script& script)
{
    script.listTables = [](qint16 tab) { return tables(tab); };
    script.listVariables = [](bool si, qint16 tab) { return variables(si, tab); };
    script.listReports = [] { return reports(); };
    script.openReport = [](qint32 id, bool si, qint32& tab) { return parameters(id, si, tab); };
}
} // namespace FakeCatalogue
