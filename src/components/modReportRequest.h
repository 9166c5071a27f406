#pragma once

#include "components/ReportInfo.h"

#include <QString>

// Rules of a report request that the main window and the batch renderer share.

// The period of a report as the date boxes give it (month-first texts, blanks
// around them ignored): the To text must be a date, and the From text either
// empty (an open start) or a date strictly before To. A From equal to To is
// refused as well as one after it.
bool IsValidDateRange(const QString& fromText, const QString& toText);

// A subject's display name: the non-empty parts among first, middle and last
// name, in that order, joined by single blanks ("" when all are empty).
QString FormatPatientName(const QString& firstName, const QString& midName, const QString& lastName);

// The file name proposed for a report's PDF: the subject (its ID and name),
// the period and the definition, joined by ", ", with ".pdf":
//   "QC001 Adam Q Control, 01-01-2024 to 06-30-2024, Spirometry.pdf"
//   "QC001 Adam Q Control, up to 06-30-2024, Spirometry.pdf" (open start)
// Dates take "-" for "/", and every character a file name cannot hold
// (/ \ : * ? " < > | and control characters) becomes "-"; empty parts are
// left out, and a request that names nothing is text 4087 ("QC Report").
// Print to PDF proposes it in the save dialog; calvex-qc-render --all names
// its files with it.
QString ProposedReportFileName(const ReportInfo& info, const QString& definitionName);
