#pragma once

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
