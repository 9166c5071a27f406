#pragma once

#include "components/ReportVariable.h"

#include <QList>
#include <QString>

// One report request: the tab, the QC subject, the period as the date boxes
// show it (month first; FromDate may be empty for an open start) and the
// selected variables.
struct ReportInfo
{
    qint16 TestTab = 0; // 0 = pulmonary function (PF), 1 = gas exchange (GX)
    QString PatientName;
    QString PatientID;
    QString FromDate;
    QString ToDate;
    QList<ReportVariable> Variables; // Variables[0] is variable 1

    qint32 VariableCount() const { return qint32(Variables.size()); }
    // 1-based access, as the store's GetGraphData numbers the variables.
    const ReportVariable& Variable(qint32 index) const { return Variables.at(index - 1); }
};
