#include "rules/QCRuleEvaluator.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace
{
// Where a reading lies against the limits k SD away from the mean.
struct Position
{
    bool above = false; // above mean + k SD
    bool below = false; // below mean - k SD
};

Position PositionOf(double value, double mean, double sd, double k)
{
    return Position{value > mean + k * sd, value < mean - k * sd};
}

// Counts the readings in a row on one side and flags the whole run from the
// reading that makes it long enough on.
class RunCounter
{
public:
    explicit RunCounter(qsizetype length)
        : m_length(length)
    {}

    // The next reading in a row lies above (+1), below (-1) or on neither
    // side (0). Returns how many readings back from this one (itself
    // included) complete the rule: 0 when the run is still too short, the
    // whole length when it has just become long enough, 1 for every further
    // reading of the same run.
    qsizetype next(int side)
    {
        if (side == 0 || side != m_side)
        {
            m_side = side;
            m_run = side == 0 ? 0 : 1;
        }
        else
        {
            ++m_run;
        }
        if (m_run < m_length)
            return 0;
        return m_run == m_length ? m_length : 1;
    }

private:
    qsizetype m_length;
    int m_side = 0;
    qsizetype m_run = 0;
};

int SideOf(const Position& position)
{
    return position.above ? 1 : (position.below ? -1 : 0);
}
} // namespace

QCRuleEvaluator::QCRuleEvaluator(QCRuleSet rules)
    : m_rules(std::move(rules))
{}

bool QCRuleEvaluator::counts(const QCReading& reading)
{
    return reading.Date.isValid() && reading.Value.has_value() && std::isfinite(*reading.Value) && *reading.Value != 0;
}

qsizetype QCRuleEvaluator::countingReadings(const QList<QCReading>& readings)
{
    return std::count_if(readings.cbegin(), readings.cend(), [](const QCReading& reading) { return counts(reading); });
}

QList<QCViolation> QCRuleEvaluator::evaluate(const QList<QCReading>& readings, double mean, double sd,
                                             DlcoChart dlco) const
{
    if (m_rules.isEmpty())
        return {};

    // The readings that count, in date order.
    std::vector<qsizetype> order;
    order.reserve(size_t(readings.size()));
    for (qsizetype i = 0; i < readings.size(); ++i)
    {
        if (counts(readings.at(i)))
            order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(),
                     [&readings](qsizetype a, qsizetype b) { return readings.at(a).Date < readings.at(b).Date; });

    std::vector<QCRuleSet> broken(order.size());
    const auto flagBack = [&broken](size_t last, qsizetype count, QCRule rule) {
        for (qsizetype back = 0; back < count; ++back)
            broken[last - size_t(back)].add(rule);
    };

    const bool dlcoChecked = dlco != DlcoChart::No && m_rules.contains(QCRule::RuleDlco12);
    const double dlcoAbsolute = dlco == DlcoChart::SI ? DlcoSILimit : DlcoConventionalLimit;
    const double dlcoRelative = DlcoRelativeLimit * std::abs(mean);

    RunCounter fourOneS(4);
    RunCounter tenX(10);
    Position previousTwoSD;
    for (size_t k = 0; k < order.size(); ++k)
    {
        const double value = *readings.at(order[k]).Value;
        const Position oneSD = PositionOf(value, mean, sd, 1);
        const Position twoSD = PositionOf(value, mean, sd, 2);
        const Position threeSD = PositionOf(value, mean, sd, 3);
        const Position ofMean = PositionOf(value, mean, sd, 0);

        if (m_rules.contains(QCRule::Rule12s) && (twoSD.above || twoSD.below))
            broken[k].add(QCRule::Rule12s);
        if (m_rules.contains(QCRule::Rule13s) && (threeSD.above || threeSD.below))
            broken[k].add(QCRule::Rule13s);
        if (k > 0)
        {
            if (m_rules.contains(QCRule::Rule22s) &&
                ((previousTwoSD.above && twoSD.above) || (previousTwoSD.below && twoSD.below)))
                flagBack(k, 2, QCRule::Rule22s);
            if (m_rules.contains(QCRule::RuleR4s) &&
                ((previousTwoSD.above && twoSD.below) || (previousTwoSD.below && twoSD.above)))
                flagBack(k, 2, QCRule::RuleR4s);
        }
        previousTwoSD = twoSD;

        const qsizetype fourRun = fourOneS.next(SideOf(oneSD));
        if (m_rules.contains(QCRule::Rule41s) && fourRun > 0)
            flagBack(k, fourRun, QCRule::Rule41s);
        const qsizetype tenRun = tenX.next(SideOf(ofMean));
        if (m_rules.contains(QCRule::Rule10x) && tenRun > 0)
            flagBack(k, tenRun, QCRule::Rule10x);

        if (dlcoChecked)
        {
            const double distance = std::abs(value - mean);
            if (distance > dlcoRelative || distance > dlcoAbsolute)
                broken[k].add(QCRule::RuleDlco12);
        }
    }

    QList<QCViolation> violations;
    for (size_t k = 0; k < order.size(); ++k)
    {
        if (broken[k].isEmpty())
            continue;
        const QCReading& reading = readings.at(order[k]);
        violations.append(QCViolation{reading.Date, *reading.Value, broken[k], order[k]});
    }
    return violations;
}
