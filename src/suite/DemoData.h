#pragma once

#include <QDate>
#include <QString>

class SuiteDatabase;

// The demo database: a deterministic, reproducible data set that shows every part
// of the program on a fresh installation.
//
// - Users: "labmanager" (rights 500 and 501, auto-logout after 30 minutes),
//   "labtech" (500 only, 15 minutes), "formerstaff" (disabled).
// - QC subjects QC001 (Adam Q. Control), QC002 (Beth Control) and QC003
//   (Carl R. Control): healthy adults with within-subject CVs of 2-6 %.
//   Weekly PF visits on Mondays (QC001), Tuesdays (QC002) and Wednesdays
//   (QC003) from the first such day of January 2023 to June 30, 2026; GX
//   visits every other week on Thursdays (QC001 from January 5, QC003 from
//   January 12) and Fridays (QC002 from January 6). PF visits fill Pre and
//   Predicted, Post for spirometry, and Challenge every fourth week; GX
//   visits fill Rest, Anaerobic Threshold, Peak and Recovery.
// - Deliberate faults: a drift of QC001's DLCO and KCO (rising to +12 % from
//   September 2 to October 14, 2024) and of QC002's VO2 and VCO2 (+9 % from
//   March 3 to April 11, 2025); a handful of outliers; a few readings
//   missing and a few stored as zero.
// - More than 300 other patients; several share a last name (Smith, Jones,
//   O'Brien, ...), some have no middle name and one ("Nakamura") has only a
//   last name.
// - Saved definitions: on PF "Spirometry", "Lung Volumes", "DLCO",
//   "Plethysmography", "Volume QC"; on GX "Exercise Peak",
//   "Anaerobic Threshold", "Resting".
class DemoData
{
public:
    static constexpr quint64 DefaultSeed = 20230102;
    static constexpr int OtherPatients = 320;
    static inline const QDate LastDay = QDate(2026, 6, 30);

    // Fills a database whose schema is current and which holds no patients
    // yet, in one transaction.
    static void fill(SuiteDatabase& db, quint64 seed = DefaultSeed);

    // Adds a QC subject (last name "Control") with visitCount daily PF
    // visits ending on LastDay, each with every PF variable of the Pre table
    // (for benchmarks at sizes the demo does not have).
    static void addLongSeries(SuiteDatabase& db, const QString& idNum, int visitCount, quint64 seed = DefaultSeed);
};
