#pragma once

#include <QList>
#include <QtGlobal>

// One of the "QC Rule Violations" pages: a band of the violation list.
struct ViolationPage
{
    qint32 PageNumber = 0; // 1-based, within the violation pages
    qint32 FirstRow = 0;   // 1-based positions in the list, inclusive; both 0 on
    qint32 LastRow = 0;    // the one page of a period without violations
};

// The violation pages in printing order.
using ViolationPageList = QList<ViolationPage>;
