#pragma once

#include "components/ReportInfo.h"

// A request of the first tab for QC001 Adam Q Control over the first half of
// 2024, with these variables.
inline ReportInfo HalfYearRequest(QList<ReportVariable> variables)
{
    ReportInfo info;
    info.TestTab = 0;
    info.PatientName = QStringLiteral("Adam Q Control");
    info.PatientID = QStringLiteral("QC001");
    info.FromDate = QStringLiteral("01/01/2024");
    info.ToDate = QStringLiteral("06/30/2024");
    info.Variables = std::move(variables);
    return info;
}
