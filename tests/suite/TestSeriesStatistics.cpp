#include "common/TestMain.h"

#include "ExactStatisticsReference.h"
#include "platform/VbConversions.h"
#include "suite/SeriesStatistics.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

// The report store's statistics against exact rational arithmetic: every
// printed figure of a chart's statistics line must be the exact value of the
// readings rounded to its 15 significant digits.
class TestSeriesStatistics : public QObject
{
    Q_OBJECT

private:
    using Series = std::vector<double>;

    std::mt19937_64 m_random{20261124};

    // A reading as a laboratory stores it: the double of a decimal text.
    static double decimal(long long units, int places)
    {
        return std::strtod((std::to_string(units) + "e-" + std::to_string(places)).c_str(), nullptr);
    }

    long long between(long long low, long long high)
    {
        return std::uniform_int_distribution<long long>(low, high)(m_random);
    }

    // Any finite double of magnitude between 2^lowExponent and 2^highExponent, either sign.
    double anyDouble(int lowExponent, int highExponent)
    {
        const double fraction = std::uniform_real_distribution<double>(0.5, 1.0)(m_random);
        const double value = std::ldexp(fraction, int(between(lowExponent, highExponent)));
        return between(0, 1) ? -value : value;
    }

    // The kinds of series a lab's charts meet, and the hard ones.
    Series generated(int kind, size_t size)
    {
        Series series;
        series.reserve(size);
        switch (kind % 8)
        {
        case 0: { // equal decimal readings
            const int places = int(between(0, 4));
            const double value = decimal(between(1, 9'999'999), places);
            series.assign(size, value);
            break;
        }
        case 1: { // a large offset with a small spread: 1,000,000.01 ... 1,000,000.09
            const long long offset = between(1, 10) * 100'000'000;
            for (size_t i = 0; i < size; ++i)
                series.push_back(decimal(offset + between(1, 9), 2));
            break;
        }
        case 2: // negative and mixed signs
            for (size_t i = 0; i < size; ++i)
                series.push_back(decimal(between(-9'999'999, 9'999'999), int(between(0, 5))));
            break;
        case 3: // readings as a lab stores them: 0 to 4 decimal places, up to 1e7
            for (size_t i = 0; i < size; ++i)
            {
                const int places = int(between(0, 4));
                const long long limit = std::min<long long>(99'999'999, 10'000'000LL * (places + 1));
                series.push_back(decimal(between(1, limit), places));
            }
            break;
        case 4: // binary doubles of any bits, up to 1e7
            for (size_t i = 0; i < size; ++i)
                series.push_back(anyDouble(-20, 23));
            break;
        case 5: // wide spread of magnitudes
            for (size_t i = 0; i < size; ++i)
                series.push_back(anyDouble(-60, 23));
            break;
        case 6: { // one value almost everywhere, one step off somewhere
            const double value = decimal(between(1, 9'999'999), int(between(1, 6)));
            series.assign(size, value);
            series[size_t(between(0, static_cast<long long>(size) - 1))] = std::nextafter(value, 1e8);
            break;
        }
        default: { // a drifting instrument: a ramp of decimals around a level
            const long long level = between(1'000, 9'000'000);
            for (size_t i = 0; i < size; ++i)
                series.push_back(decimal(level + static_cast<long long>(i) * between(0, 3) - between(0, 50), 3));
            break;
        }
        }
        series.erase(std::remove(series.begin(), series.end(), 0.0), series.end());
        if (series.empty())
            series.push_back(1.25);
        return series;
    }

    size_t sizeOf(int index)
    {
        switch (index % 5)
        {
        case 0:
            return 1;
        case 1:
            return 2;
        case 2:
            return size_t(between(3, 10));
        case 3:
            return size_t(between(11, 60));
        default:
            return size_t(between(61, 600));
        }
    }

    // The printed texts of the store's figures, or where the first differs.
    static QString mismatch(const Series& series, const SeriesStatistics& actual)
    {
        const ExactStatisticsReference exact(series);
        const QString texts[3][2] = {
            {GeneralNumberText(actual.Mean), exact.meanText()},
            {GeneralNumberText(actual.SD), exact.sdText()},
            {GeneralNumberText(actual.CV * 100), exact.cvPercentText()},
        };
        const char* names[3] = {"Mean", "SD", "CV%"};
        for (int i = 0; i < 3; ++i)
        {
            if (texts[i][0] != texts[i][1])
                return QStringLiteral("%1 printed %2, exact %3 (n = %4, first %5)")
                    .arg(QLatin1String(names[i]), texts[i][0], texts[i][1])
                    .arg(series.size())
                    .arg(series.front(), 0, 'g', 17);
        }
        return {};
    }

    // What a plain running sum divided by n prints: the way that loses digits.
    static QString plainMeanText(const Series& series)
    {
        double sum = 0;
        for (const double reading : series)
            sum += reading;
        return GeneralNumberText(sum / double(series.size()));
    }

private slots:
    void everyPrintedFigureIsTheExactValueRounded()
    {
        constexpr int kSeries = 12'000;
        int plainWouldMisprint = 0;
        for (int i = 0; i < kSeries; ++i)
        {
            const Series series = generated(i, sizeOf(i / 8));
            const SeriesStatistics actual = SeriesStatistics::of(series);
            const QString failure = mismatch(series, actual);
            QVERIFY2(failure.isEmpty(), qPrintable(QStringLiteral("series %1: %2").arg(i).arg(failure)));
            if (plainMeanText(series) != ExactStatisticsReference(series).meanText())
                ++plainWouldMisprint;
        }
        // The series are hard enough to tell an exact method from a plain one.
        QVERIFY2(plainWouldMisprint > 100, qPrintable(QString::number(plainWouldMisprint)));
    }

    void longSeriesOfAHundredThousand()
    {
        for (int kind : {0, 1, 3, 4})
        {
            const Series series = generated(kind, 100'000);
            const QString failure = mismatch(series, SeriesStatistics::of(series));
            QVERIFY2(failure.isEmpty(), qPrintable(QStringLiteral("kind %1: %2").arg(kind).arg(failure)));
        }
    }

    void equalReadingsHaveNoSpreadAtAll()
    {
        for (const double value : {3.7, 3.33, 0.1, 1000000.01, -2.2, 9999999.99})
        {
            for (const size_t n : {size_t(2), size_t(3), size_t(6), size_t(52), size_t(100'000)})
            {
                const SeriesStatistics s = SeriesStatistics::of(Series(n, value));
                QCOMPARE(s.Mean, value);
                QCOMPARE(s.SD, 0.0);
                QCOMPARE(s.CV, 0.0);
            }
        }
    }

    void aLargeOffsetWithASmallSpread()
    {
        Series series;
        for (int cents = 1; cents <= 9; ++cents)
            series.push_back(decimal(100'000'000 + cents, 2)); // 1,000,000.01 ... 1,000,000.09
        const SeriesStatistics s = SeriesStatistics::of(series);
        const ExactStatisticsReference exact(series);
        QCOMPARE(GeneralNumberText(s.Mean), exact.meanText());
        QCOMPARE(GeneralNumberText(s.SD), exact.sdText());
        QCOMPARE(GeneralNumberText(s.CV * 100), exact.cvPercentText());
        // The decimals' own figures, as far as the doubles hold them:
        // mean 1,000,000.05, SD sqrt(0.00075) = 0.02738612787...
        QCOMPARE(GeneralNumberText(s.Mean), QStringLiteral("1000000.05"));
        QVERIFY2(GeneralNumberText(s.SD).startsWith(QStringLiteral("0.0273861278")),
                 qPrintable(GeneralNumberText(s.SD)));
        QVERIFY2(GeneralNumberText(s.CV * 100).startsWith(QStringLiteral("2.7386126")),
                 qPrintable(GeneralNumberText(s.CV * 100)));
    }

    void fewReadings()
    {
        QCOMPARE(SeriesStatistics::of(Series{}).Mean, 0.0);
        const SeriesStatistics one = SeriesStatistics::of(Series{4.2});
        QCOMPARE(one.Mean, 4.2);
        QCOMPARE(one.SD, 0.0);
        QCOMPARE(one.CV, 0.0);
        const SeriesStatistics two = SeriesStatistics::of(Series{1.0, 2.0});
        QCOMPARE(two.Mean, 1.5);
        QCOMPARE(GeneralNumberText(two.SD), QStringLiteral("0.707106781186548"));
        QCOMPARE(GeneralNumberText(two.CV * 100), QStringLiteral("47.1404520791032"));
        const SeriesStatistics opposite = SeriesStatistics::of(Series{-1.0, 1.0});
        QCOMPARE(opposite.Mean, 0.0);
        QCOMPARE(opposite.CV, 0.0);
        QCOMPARE(GeneralNumberText(opposite.SD), QStringLiteral("1.4142135623731")); // sqrt(2)
        const SeriesStatistics negative = SeriesStatistics::of(Series{-2.0, -4.0});
        QCOMPARE(negative.Mean, -3.0);
        QVERIFY(negative.CV < 0);
        const SeriesStatistics notNumbers = SeriesStatistics::of(Series{NAN, 2.0, HUGE_VAL, 4.0});
        QCOMPARE(notNumbers.Mean, 3.0);
    }

    void theOrderOfTheReadingsChangesNothing()
    {
        for (int i = 0; i < 200; ++i)
        {
            Series series = generated(i, 50);
            const SeriesStatistics before = SeriesStatistics::of(series);
            std::shuffle(series.begin(), series.end(), m_random);
            const SeriesStatistics after = SeriesStatistics::of(series);
            QCOMPARE(after.Mean, before.Mean);
            QCOMPARE(after.SD, before.SD);
            QCOMPARE(after.CV, before.CV);
        }
    }

    // The figures are the nearest doubles but for the rare step that keeps
    // the printed text right: within two steps of the exact value.
    void theFiguresStayNextToTheExactValues()
    {
        for (int i = 0; i < 2'000; ++i)
        {
            const Series series = generated(i, sizeOf(i / 8));
            const SeriesStatistics s = SeriesStatistics::of(series);
            const ExactStatisticsReference exact(series);
            const mpq_class step(std::nextafter(std::fabs(s.Mean), HUGE_VAL) - std::fabs(s.Mean));
            const mpq_class distance = abs(mpq_class(s.Mean) - exact.mean());
            QVERIFY2(distance <= 2 * step, qPrintable(QStringLiteral("series %1").arg(i)));
            const mpq_class sd(s.SD);
            const mpq_class sdStep(std::nextafter(s.SD, HUGE_VAL) - s.SD);
            const mpq_class low = sd > 2 * sdStep ? sd - 2 * sdStep : mpq_class(0);
            const mpq_class high = sd + 2 * sdStep;
            QVERIFY2(low * low <= exact.variance() && exact.variance() <= high * high,
                     qPrintable(QStringLiteral("series %1").arg(i)));
        }
    }
};

CALVEX_TEST(TestSeriesStatistics)
#include "TestSeriesStatistics.moc"
