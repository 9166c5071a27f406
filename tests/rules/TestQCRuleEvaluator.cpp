#include "common/TestMain.h"

#include "rules/QCRuleEvaluator.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <optional>

using Dlco = QCRuleEvaluator::DlcoChart;

namespace
{
// The chart of every test but the DLCO ones: mean 10, SD 1, so the limits
// are 7, 8, 9 | 10 | 11, 12, 13.
constexpr double kMean = 10;
constexpr double kSD = 1;

// The next double above or below a value: a reading just beyond a limit.
double Above(double value)
{
    return std::nextafter(value, std::numeric_limits<double>::infinity());
}
double Below(double value)
{
    return std::nextafter(value, -std::numeric_limits<double>::infinity());
}

// One reading a week from January 1, 2024 for each value; a value of 0 is a
// zero reading, NaN a missing one.
QList<QCReading> Weekly(const QList<double>& values)
{
    QList<QCReading> readings;
    for (qsizetype i = 0; i < values.size(); ++i)
    {
        const double value = values.at(i);
        readings.append(QCReading{QDate(2024, 1, 1).addDays(7 * i),
                                  std::isnan(value) ? std::nullopt : std::optional<double>(value)});
    }
    return readings;
}

QList<QCViolation> Evaluate(const QCRuleSet& rules, const QList<double>& values, double mean = kMean, double sd = kSD,
                            Dlco dlco = Dlco::No)
{
    return QCRuleEvaluator(rules).evaluate(Weekly(values), mean, sd, dlco);
}

// The positions of the readings that broke a rule.
QList<qsizetype> Flagged(const QList<QCViolation>& violations)
{
    QList<qsizetype> positions;
    for (const QCViolation& violation : violations)
        positions.append(violation.Reading);
    return positions;
}

QList<qsizetype> Flagged(QCRule rule, const QList<double>& values, double mean = kMean, double sd = kSD,
                         Dlco dlco = Dlco::No)
{
    return Flagged(Evaluate(QCRuleSet{rule}, values, mean, sd, dlco));
}

using Positions = QList<qsizetype>;

const double kMissing = std::numeric_limits<double>::quiet_NaN();
} // namespace

// Each QC rule at its edges, on hand-made series.
class TestQCRuleEvaluator : public QObject
{
    Q_OBJECT

private slots:
    void oneTwoSIsOneReadingBeyondTwoSD()
    {
        QCOMPARE(Flagged(QCRule::Rule12s, {12, 8, 11.9}), Positions());
        QCOMPARE(Flagged(QCRule::Rule12s, {Above(12), 10, Below(8)}), Positions({0, 2}));
        const QList<QCViolation> violations = Evaluate(QCRuleSet{QCRule::Rule12s}, {10, Above(12)});
        QCOMPARE(violations.size(), 1);
        QCOMPARE(violations.first().Date, QDate(2024, 1, 8));
        QCOMPARE(violations.first().Value, Above(12));
        QCOMPARE(violations.first().Rules, QCRuleSet({QCRule::Rule12s}));
    }

    void oneThreeSIsOneReadingBeyondThreeSD()
    {
        QCOMPARE(Flagged(QCRule::Rule13s, {13, 7, 12.5}), Positions());
        QCOMPARE(Flagged(QCRule::Rule13s, {Above(13), 10, Below(7)}), Positions({0, 2}));
    }

    void twoTwoSIsTwoInARowBeyondTwoSDOnOneSide()
    {
        // The second just inside, then just outside.
        QCOMPARE(Flagged(QCRule::Rule22s, {12.5, 12}), Positions());
        QCOMPARE(Flagged(QCRule::Rule22s, {12.5, Above(12)}), Positions({0, 1}));
        QCOMPARE(Flagged(QCRule::Rule22s, {8, 7.5}), Positions());
        QCOMPARE(Flagged(QCRule::Rule22s, {10, Below(8), 7.5, 10}), Positions({1, 2}));
        // Not in a row, or on opposite sides.
        QCOMPARE(Flagged(QCRule::Rule22s, {12.5, 11, 12.5}), Positions());
        QCOMPARE(Flagged(QCRule::Rule22s, {12.5, 7.5}), Positions());
        // Three in a row: each pair completes the rule.
        QCOMPARE(Flagged(QCRule::Rule22s, {12.5, 12.5, 12.5}), Positions({0, 1, 2}));
        // A zero or missing reading between them is no reading.
        QCOMPARE(Flagged(QCRule::Rule22s, {12.5, 0, kMissing, 12.5}), Positions({0, 3}));
    }

    void rFourSIsTwoInARowBeyondTwoSDOnOppositeSides()
    {
        QCOMPARE(Flagged(QCRule::RuleR4s, {Above(12), Below(8)}), Positions({0, 1}));
        QCOMPARE(Flagged(QCRule::RuleR4s, {10, Below(8), Above(12)}), Positions({1, 2}));
        // One of the two just inside its limit.
        QCOMPARE(Flagged(QCRule::RuleR4s, {12, 7}), Positions());
        QCOMPARE(Flagged(QCRule::RuleR4s, {13, 8}), Positions());
        // A range of more than 4 SD is not enough without both beyond 2 SD.
        QCOMPARE(Flagged(QCRule::RuleR4s, {14.5, 9.5}), Positions());
        // Not in a row, or on the same side.
        QCOMPARE(Flagged(QCRule::RuleR4s, {12.5, 10, 7.5}), Positions());
        QCOMPARE(Flagged(QCRule::RuleR4s, {12.5, 12.5}), Positions());
        // Across a zero reading the two are in a row.
        QCOMPARE(Flagged(QCRule::RuleR4s, {12.5, 0, 7.5}), Positions({0, 2}));
    }

    void fourOneSIsFourInARowBeyondOneSDOnOneSide()
    {
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 11.5, 11}), Positions());
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 11.5, Above(11)}), Positions({0, 1, 2, 3}));
        QCOMPARE(Flagged(QCRule::Rule41s, {10, 8.5, 8.5, 9, 8.5}), Positions());
        QCOMPARE(Flagged(QCRule::Rule41s, {10, 8.5, 8.5, Below(9), 8.5}), Positions({1, 2, 3, 4}));
        // A run of five: every reading of it.
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 11.5, 11.5, 11.5, 10}), Positions({0, 1, 2, 3, 4}));
        // Broken by a reading inside the limits or beyond the other one.
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 11.5, 10.5, 11.5}), Positions());
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 8.5, 11.5, 11.5}), Positions());
        // A zero or missing reading does not break the run and is not flagged.
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 0, 11.5, 11.5}), Positions({0, 1, 3, 4}));
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, kMissing, 11.5, 11.5, 11.5}), Positions({0, 2, 3, 4}));
        QCOMPARE(Flagged(QCRule::Rule41s, {11.5, 11.5, 0, 11.5}), Positions());
    }

    void tenXIsTenInARowOnOneSideOfTheMean()
    {
        const QList<double> nine(9, 10.1);
        QCOMPARE(Flagged(QCRule::Rule10x, nine), Positions());
        QCOMPARE(Flagged(QCRule::Rule10x, nine + QList<double>{kMean}), Positions());
        QCOMPARE(Flagged(QCRule::Rule10x, nine + QList<double>{Above(kMean)}),
                 Positions({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
        QCOMPARE(Flagged(QCRule::Rule10x, QList<double>(10, Below(kMean))), Positions({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
        // A reading on the mean or on the other side ends the run.
        QCOMPARE(Flagged(QCRule::Rule10x, QList<double>(5, 10.1) + QList<double>{10} + QList<double>(5, 10.1)),
                 Positions());
        QCOMPARE(Flagged(QCRule::Rule10x, QList<double>(5, 10.1) + QList<double>{9.9} + QList<double>(5, 10.1)),
                 Positions());
        // A zero reading in the middle is no reading: ten readings in a row
        // around it, and the zero is not flagged.
        QCOMPARE(Flagged(QCRule::Rule10x, QList<double>(5, 10.1) + QList<double>{0} + QList<double>(5, 10.1)),
                 Positions({0, 1, 2, 3, 4, 6, 7, 8, 9, 10}));
        QCOMPARE(Flagged(QCRule::Rule10x, QList<double>(4, 9.9) + QList<double>{0} + QList<double>(5, 9.9)),
                 Positions());
        // Eleven in a row: every one.
        QCOMPARE(Flagged(QCRule::Rule10x, QList<double>(11, 9.9)).size(), 11);
    }

    void dlcoTwelveConventional()
    {
        // Mean 30: 12 % is 3.6, so the absolute limit of 3 mL/min/mmHg decides.
        QCOMPARE(Flagged(QCRule::RuleDlco12, {33, 27}, 30, 2, Dlco::Conventional), Positions());
        QCOMPARE(Flagged(QCRule::RuleDlco12, {Above(33), Below(27)}, 30, 2, Dlco::Conventional), Positions({0, 1}));
        // Mean 12.5: 12 % is 1.5, below the absolute limit, so it decides.
        QCOMPARE(Flagged(QCRule::RuleDlco12, {14, 11}, 12.5, 1, Dlco::Conventional), Positions());
        QCOMPARE(Flagged(QCRule::RuleDlco12, {Above(14), Below(11)}, 12.5, 1, Dlco::Conventional), Positions({0, 1}));
    }

    void dlcoTwelveSI()
    {
        // Mean 12.5: 12 % is 1.5, so the absolute limit of 1 mmol/min/kPa decides.
        QCOMPARE(Flagged(QCRule::RuleDlco12, {13.5, 11.5}, 12.5, 1, Dlco::SI), Positions());
        QCOMPARE(Flagged(QCRule::RuleDlco12, {Above(13.5), Below(11.5)}, 12.5, 1, Dlco::SI), Positions({0, 1}));
        // Reading 14 is within the conventional limits, not within the SI ones.
        QCOMPARE(Flagged(QCRule::RuleDlco12, {14}, 12.5, 1, Dlco::SI), Positions({0}));
        // Mean 6.25: 12 % is 0.75, below the absolute limit, so it decides.
        QCOMPARE(Flagged(QCRule::RuleDlco12, {7, 5.5}, 6.25, 0.5, Dlco::SI), Positions());
        QCOMPARE(Flagged(QCRule::RuleDlco12, {Above(7), Below(5.5)}, 6.25, 0.5, Dlco::SI), Positions({0, 1}));
    }

    void dlcoTwelveOnlyOnDlcoChartsAndOnlyWhenListed()
    {
        QCOMPARE(Flagged(QCRule::RuleDlco12, {40, 20}, 30, 2, Dlco::No), Positions());
        QCOMPARE(Flagged(Evaluate(QCRuleSet{QCRule::Rule13s}, {40, 31}, 30, 2, Dlco::Conventional)), Positions({0}));
        QCOMPARE(Flagged(QCRule::RuleDlco12, {40, 0, kMissing, 31}, 30, 2, Dlco::Conventional), Positions({0}));
    }

    void aReadingCarriesEveryRuleItBroke()
    {
        const QCRuleSet all{QCRule::Rule12s, QCRule::Rule13s, QCRule::Rule22s,   QCRule::RuleR4s,
                            QCRule::Rule41s, QCRule::Rule10x, QCRule::RuleDlco12};
        const QList<QCViolation> violations = Evaluate(all, {13.5, 12.5, 7.5}, kMean, kSD, Dlco::Conventional);
        QCOMPARE(violations.size(), 3);
        QCOMPARE(violations.at(0).Rules.text(), QStringLiteral("1-2s, 1-3s, 2-2s, DLCO-12"));
        QCOMPARE(violations.at(1).Rules.text(), QStringLiteral("1-2s, 2-2s, R-4s, DLCO-12"));
        QCOMPARE(violations.at(2).Rules.text(), QStringLiteral("1-2s, R-4s, DLCO-12"));
        // A rule left out of the set is not checked.
        QCOMPARE(Evaluate(QCRuleSet{QCRule::Rule13s}, {13.5, 12.5, 7.5}).first().Rules.text(), QStringLiteral("1-3s"));
    }

    void readingsAreTakenInDateOrder()
    {
        // Given out of order: by date they are 12.5, 12.5, 10, in a row.
        const QList<QCReading> readings{
            {QDate(2024, 3, 1), 10.0}, {QDate(2024, 1, 1), 12.5}, {QDate(2024, 2, 1), 12.5}, {QDate(), 12.5}};
        const QList<QCViolation> violations =
            QCRuleEvaluator(QCRuleSet{QCRule::Rule22s}).evaluate(readings, kMean, kSD);
        QCOMPARE(Flagged(violations), Positions({1, 2}));
        QCOMPARE(violations.at(0).Date, QDate(2024, 1, 1));
        QCOMPARE(violations.at(1).Date, QDate(2024, 2, 1));
    }

    void whichReadingsCount()
    {
        QVERIFY(QCRuleEvaluator::counts({QDate(2024, 1, 1), -1.5}));
        QVERIFY(!QCRuleEvaluator::counts({QDate(2024, 1, 1), 0.0}));
        QVERIFY(!QCRuleEvaluator::counts({QDate(2024, 1, 1), std::nullopt}));
        QVERIFY(!QCRuleEvaluator::counts({QDate(), 4.0}));
        QVERIFY(!QCRuleEvaluator::counts({QDate(2024, 1, 1), std::numeric_limits<double>::infinity()}));
        QCOMPARE(QCRuleEvaluator::countingReadings(Weekly({1, 0, kMissing, 2})), 2);
    }

    void noRulesNoViolations()
    {
        QVERIFY(Evaluate(QCRuleSet(), {20, 20, 0, -20}).isEmpty());
        QVERIFY(QCRuleEvaluator(QCRuleSet{QCRule::Rule12s}).evaluate({}, kMean, kSD).isEmpty());
    }
};

CALVEX_TEST(TestQCRuleEvaluator)
#include "TestQCRuleEvaluator.moc"
