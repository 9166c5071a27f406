#pragma once

#include "rules/QCReading.h"
#include "rules/QCRuleSet.h"
#include "rules/QCViolation.h"

#include <QList>

// Checks the readings of one chart against a set of QC rules, with the
// chart's own mean and SD: the figures its statistics line prints, taken
// over the period shown. The limits are mean + k x SD and mean - k x SD,
// computed in double precision as the chart draws its lines.
//
// Which readings count: those with a valid date and a value other than 0.
// A missing value or a 0 is no reading, exactly as the chart leaves it out:
// it does not count towards a run of readings, and it does not break one.
// The readings that count are taken in date order (readings of the same date
// keep the order they were given in); "in a row" means one after the other
// in that order.
//
// "Beyond" is strictly beyond: a reading exactly on a limit is inside it.
//
// - 1-2s: a reading above mean + 2 SD or below mean - 2 SD. The warning
//   rule: by chance alone about one reading in twenty breaks it.
// - 1-3s: a reading above mean + 3 SD or below mean - 3 SD.
// - 2-2s: two readings in a row both above mean + 2 SD, or both below
//   mean - 2 SD. Both readings are flagged.
// - R-4s: two readings in a row, one above mean + 2 SD and the other below
//   mean - 2 SD (in either order). Both readings are flagged.
// - 4-1s: four readings in a row all above mean + 1 SD, or all below
//   mean - 1 SD. All four are flagged; in a longer run every reading of it
//   is, since each completes a run of four with the three before it.
// - 10x: ten readings in a row all above the mean, or all below it (a
//   reading equal to the mean ends the run). All ten are flagged, and in a
//   longer run every reading of it.
// - DLCO-12: only on a chart of the catalogue variable DLCO. A reading whose
//   distance from the mean is more than 12 % of the mean, or more than the
//   absolute limit of the unit system (3 mL/min/mmHg conventional, 1
//   mmol/min/kPa SI); either is enough.
//
// Every reading that breaks a rule is flagged with that rule, whether or not
// it also completes another; a rule that is not in the set is not checked.
class QCRuleEvaluator
{
public:
    // What DLCO-12 applies to: a chart of another variable, or a DLCO chart
    // in one of the two unit systems.
    enum class DlcoChart
    {
        No,
        Conventional,
        SI
    };

    // DLCO-12's limits.
    static constexpr double DlcoRelativeLimit = 0.12;
    static constexpr double DlcoConventionalLimit = 3; // mL/min/mmHg
    static constexpr double DlcoSILimit = 1;           // mmol/min/kPa

    explicit QCRuleEvaluator(QCRuleSet rules);

    // The reading counts for the rules (and for the chart's statistics): a
    // valid date and a finite value other than 0.
    static bool counts(const QCReading& reading);
    // How many of the readings count.
    static qsizetype countingReadings(const QList<QCReading>& readings);

    // Every reading that broke a rule of the set, in date order, with the
    // rules it broke and its position in readings. Nothing when the set is
    // empty.
    QList<QCViolation> evaluate(const QList<QCReading>& readings, double mean, double sd,
                                DlcoChart dlco = DlcoChart::No) const;

private:
    QCRuleSet m_rules;
};
