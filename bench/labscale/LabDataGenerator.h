#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <vector>

class SuiteDatabase;

// A laboratory-sized suite database, the same rows on every run for a seed:
//
// - QC subjects QC001 to QC020 ("Control"), each with a PF visit every week
//   for ten years (522 visits from June 27, 2016 to June 26, 2026) that reads every
//   PF variable of the Pre table;
// - `patients` other patients (IDs P000001, ...), with made-up last names of
//   three syllables (about 14 patients share each), first names and some
//   middle names; each has one or two visits (PF Pre, or GX Rest) on random
//   days of the same ten years, reading 10 to 18 variables;
// - the saved definitions "Lab Spirometry" (PF, nine Pre variables) and
//   "Lab Exercise" (GX, nine Rest variables), in graph and table.
//
// Visits are numbered by day, as a laboratory enters them, so a subject's
// visits are spread over the whole results table. Rows go to a sink table by
// table in batches, in key order.
class LabDataGenerator
{
public:
    static constexpr int QcSubjects = 20;
    static constexpr int QcVisitsEach = 522;
    static inline const QDate FirstDay = QDate(2016, 6, 27);
    static inline const QDate LastDay = QDate(2026, 6, 30);

    // Receives rows for one table: its name, its columns and a batch of rows.
    using Sink =
        std::function<void(const QString& table, const QStringList& columns, const std::vector<QVariantList>& rows)>;

    struct Counts
    {
        qint64 patients = 0;
        qint64 visits = 0;
        qint64 results = 0;
    };

    LabDataGenerator(int otherPatients, quint64 seed);

    // Writes patients, visits and results (with their keys) through sink;
    // the catalogue IDs come from db, whose schema must be current.
    Counts generate(SuiteDatabase& db, const Sink& sink);

    // Saves the two definitions through the report store.
    static void saveDefinitions(SuiteDatabase& db);

    // The last name of the other patient with the given number (1-based).
    QString lastNameOf(int patientNumber) const;

private:
    int m_otherPatients;
    quint64 m_seed;
};
