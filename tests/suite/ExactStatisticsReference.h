#pragma once

#include "platform/VbConversions.h"

#include <gmpxx.h>

#include <QString>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

// The tests' own exact statistics of a series, straight from the definitions
// in rational arithmetic: mean = sum / n, variance = sum of (x - mean)^2 over
// n - 1, CV = SD / mean. Every double is a rational number, so nothing is
// rounded until the 15-digit texts are made.
class ExactStatisticsReference
{
public:
    explicit ExactStatisticsReference(const std::vector<double>& readings)
    {
        const auto n = static_cast<long>(readings.size());
        if (n == 0)
            return;
        mpq_class sum = 0;
        for (const double reading : readings)
            sum += mpq_class(reading);
        m_mean = sum / n;
        if (n < 2)
            return;
        mpq_class squares = 0;
        for (const double reading : readings)
        {
            const mpq_class deviation = mpq_class(reading) - m_mean;
            squares += deviation * deviation;
        }
        m_variance = squares / (n - 1);
    }

    // The texts the chart's statistics line prints for the exact values.
    QString meanText() const { return GeneralNumberText(roundedDouble(m_mean, false)); }
    QString sdText() const { return GeneralNumberText(roundedDouble(m_variance, true)); }
    // CV x 100, the per cent the chart prints.
    QString cvPercentText() const
    {
        if (m_mean == 0)
            return GeneralNumberText(0);
        const mpq_class squared = m_variance * 10000 / (m_mean * m_mean);
        const double percent = roundedDouble(squared, true);
        return GeneralNumberText(m_mean < 0 ? -percent : percent);
    }

    const mpq_class& mean() const { return m_mean; }
    const mpq_class& variance() const { return m_variance; }

private:
    static mpq_class powerOfTen(long exponent)
    {
        mpz_class power;
        mpz_ui_pow_ui(power.get_mpz_t(), 10, static_cast<unsigned long>(std::labs(exponent)));
        return exponent >= 0 ? mpq_class(power) : mpq_class(mpz_class(1), power);
    }

    // The value (or the square root of a non-negative value) rounded to 15
    // significant digits, ties to even, as the double of that decimal.
    static double roundedDouble(const mpq_class& value, bool root)
    {
        if (value == 0)
            return 0;
        const bool negative = value < 0;
        const mpq_class magnitude = negative ? mpq_class(-value) : value;
        // The decimal exponent k with 10^k <= result < 10^(k+1).
        const double estimate = root ? std::sqrt(magnitude.get_d()) : magnitude.get_d();
        long k = long(std::floor(std::log10(estimate)));
        const auto atLeast = [&](long exponent) {
            return root ? magnitude >= powerOfTen(2 * exponent) : magnitude >= powerOfTen(exponent);
        };
        while (!atLeast(k))
            --k;
        while (atLeast(k + 1))
            ++k;

        const long shift = 14 - k;
        const mpq_class scaled = magnitude * powerOfTen(root ? 2 * shift : shift);
        mpz_class whole;
        mpz_fdiv_q(whole.get_mpz_t(), scaled.get_num_mpz_t(), scaled.get_den_mpz_t());
        int againstHalf = 0;
        if (root)
        {
            const mpz_class floorOfScaled = whole;
            mpz_sqrt(whole.get_mpz_t(), floorOfScaled.get_mpz_t());
            const mpq_class middle = mpq_class(whole) + mpq_class(1, 2);
            againstHalf = cmp(scaled, middle * middle);
        }
        else
        {
            againstHalf = cmp(scaled - whole, mpq_class(1, 2));
        }
        if (againstHalf > 0 || (againstHalf == 0 && mpz_odd_p(whole.get_mpz_t())))
            ++whole;
        const std::string decimal = whole.get_str() + "e" + std::to_string(-shift);
        const double rounded = std::strtod(decimal.c_str(), nullptr);
        return negative ? -rounded : rounded;
    }

    mpq_class m_mean = 0;
    mpq_class m_variance = 0;
};
