#pragma once

#include "output/OutputTarget.h"
#include "output/PageRect.h"

#include <QString>

// The page frame shared by every report page: print area, header, footer and
// the three report fonts.

// Half-inch margins on an 8.5 x 11 inch page, scaled to the page's real extent.
void GetPrintArea(OutputTarget& target, PageRect& area, double& height, double& width);

// Title (text 4104) with today's date at the right, the period line and the
// patient line; moves area.Top below the header.
void PrintPageHeader(OutputTarget& target, const QString& patientName, const QString& fromDate, const QString& toDate,
                     PageRect& area);

// "Page n" or "Page n of N" centred at the bottom; moves area.Bottom above the footer.
void PrintPageFooter(OutputTarget& target, qint32 pageNumber, PageRect& area, qint32 pageTotal);

double HeaderHeight(OutputTarget& target);
double FooterHeight(OutputTarget& target);

void SetTitleFont(OutputTarget& target);
void SetHeadingFont(OutputTarget& target);
void SetSmallFont(OutputTarget& target);
