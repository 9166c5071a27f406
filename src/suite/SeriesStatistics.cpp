#include "suite/SeriesStatistics.h"

#include <gmpxx.h>

#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <vector>

namespace
{
// A value > 0 known exactly: Numerator / Denominator, or the square root of that.
struct ExactValue
{
    mpz_class Numerator;
    mpz_class Denominator;
    bool Root = false;
};

// 15 significant digits: the value is about Digits × 10^(Exponent - 14), with
// 10^14 <= Digits < 10^15.
struct SignificantDigits
{
    std::int64_t Digits = 0;
    long Exponent = 0;

    bool operator==(const SignificantDigits&) const = default;
};

constexpr int kPrintedDigits = 15;

mpz_class power(unsigned long base, unsigned long exponent)
{
    mpz_class result;
    mpz_ui_pow_ui(result.get_mpz_t(), base, exponent);
    return result;
}

mpz_class timesPowerOfTwo(const mpz_class& value, long exponent)
{
    mpz_class result;
    mpz_mul_2exp(result.get_mpz_t(), value.get_mpz_t(), mp_bitcnt_t(exponent));
    return result;
}

// value × base^shift split into its whole part and how the rest compares with
// one half (-1 below, 0 exactly, 1 above).
struct Scaled
{
    mpz_class Whole;
    int RestAgainstHalf = 0;
};

int signOf(int comparison)
{
    return (comparison > 0) - (comparison < 0);
}

Scaled scale(const ExactValue& value, unsigned long base, long shift)
{
    mpz_class numerator = value.Numerator;
    mpz_class denominator = value.Denominator;
    // Under a root the factor is squared: sqrt(x) × b^s = sqrt(x × b^2s).
    const mpz_class factor = power(base, (unsigned long)(std::labs(shift)) * (value.Root ? 2 : 1));
    if (shift >= 0)
        numerator *= factor;
    else
        denominator *= factor;

    Scaled scaled;
    if (!value.Root)
    {
        mpz_class rest;
        mpz_fdiv_qr(scaled.Whole.get_mpz_t(), rest.get_mpz_t(), numerator.get_mpz_t(), denominator.get_mpz_t());
        scaled.RestAgainstHalf = signOf(cmp(2 * rest, denominator));
        return scaled;
    }
    // floor(sqrt(n / d)) = floor(sqrt(floor(n / d))); the root lies above
    // whole + 1/2 exactly when 4n > (2 whole + 1)^2 d.
    const mpz_class quotient = numerator / denominator;
    mpz_sqrt(scaled.Whole.get_mpz_t(), quotient.get_mpz_t());
    const mpz_class odd = 2 * scaled.Whole + 1;
    scaled.RestAgainstHalf = signOf(cmp(4 * numerator, odd * odd * denominator));
    return scaled;
}

// Rounds to the nearest whole number, ties to even.
void roundHalfEven(Scaled& scaled)
{
    if (scaled.RestAgainstHalf > 0 || (scaled.RestAgainstHalf == 0 && mpz_odd_p(scaled.Whole.get_mpz_t())))
        ++scaled.Whole;
}

// floor(log2(value)), give or take one.
long binaryMagnitude(const ExactValue& value)
{
    const long bits =
        long(mpz_sizeinbase(value.Numerator.get_mpz_t(), 2)) - long(mpz_sizeinbase(value.Denominator.get_mpz_t(), 2));
    return value.Root ? bits / 2 : bits;
}

SignificantDigits exactDigits(const ExactValue& value)
{
    static const mpz_class lowest = power(10, kPrintedDigits - 1);
    static const mpz_class beyond = power(10, kPrintedDigits);
    long exponent = long(std::floor(double(binaryMagnitude(value)) * 0.30102999566398120));
    for (;;)
    {
        Scaled scaled = scale(value, 10, kPrintedDigits - 1 - exponent);
        if (scaled.Whole >= beyond)
        {
            ++exponent;
            continue;
        }
        if (scaled.Whole < lowest)
        {
            --exponent;
            continue;
        }
        roundHalfEven(scaled);
        if (scaled.Whole == beyond)
            return {lowest.get_si(), exponent + 1};
        return {scaled.Whole.get_si(), exponent};
    }
}

// The double nearest the value, ties to even; infinity beyond the doubles' range.
double nearestDouble(const ExactValue& value)
{
    constexpr long kMantissaBits = 53;
    constexpr long kFinestShift = 1074; // 2^-1074 is the smallest subnormal step
    static const mpz_class lowest = power(2, kMantissaBits - 1);
    static const mpz_class beyond = power(2, kMantissaBits);
    long exponent = binaryMagnitude(value);
    for (;;)
    {
        long shift = kMantissaBits - 1 - exponent;
        const bool subnormal = shift > kFinestShift;
        if (subnormal)
            shift = kFinestShift;
        Scaled scaled = scale(value, 2, shift);
        if (scaled.Whole >= beyond)
        {
            ++exponent;
            continue;
        }
        if (!subnormal && scaled.Whole < lowest)
        {
            --exponent;
            continue;
        }
        roundHalfEven(scaled);
        // At most 2^53 here, so the conversion is exact.
        return std::ldexp(scaled.Whole.get_d(), int(-shift));
    }
}

SignificantDigits printedDigits(double value)
{
    char text[40];
    const auto written =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, kPrintedDigits - 1);
    SignificantDigits digits;
    const char* at = text;
    for (; at < written.ptr && *at != 'e'; ++at)
    {
        if (*at != '.')
            digits.Digits = digits.Digits * 10 + (*at - '0');
    }
    ++at; // 'e'
    const bool negative = at < written.ptr && *at == '-';
    if (at < written.ptr && (*at == '-' || *at == '+'))
        ++at;
    int exponent = 0;
    std::from_chars(at, written.ptr, exponent);
    digits.Exponent = negative ? -exponent : exponent;
    return digits;
}

// The double nearest the value such that value × printScale prints (with 15
// significant digits) as the exact value × printScale rounded. The nearest
// double itself nearly always does; when a rounding boundary of the 15th digit
// falls between it and the exact value, a neighbour a step or two away does.
double printableDouble(const ExactValue& value, const ExactValue& printed, double printScale)
{
    const double nearest = nearestDouble(value);
    const SignificantDigits wanted = exactDigits(printed);
    const auto printsRight = [&](double candidate) {
        const double shown = candidate * printScale;
        return std::isfinite(shown) && shown > 0 && printedDigits(shown) == wanted;
    };
    if (!std::isfinite(nearest) || printsRight(nearest))
        return nearest;
    double below = nearest;
    double above = nearest;
    for (int step = 1; step <= 64; ++step)
    {
        below = std::nextafter(below, 0.0);
        if (printsRight(below))
            return below;
        above = std::nextafter(above, HUGE_VAL);
        if (printsRight(above))
            return above;
    }
    return nearest;
}

double printableDouble(const ExactValue& value)
{
    return printableDouble(value, value, 1);
}

// A non-negative numerator and a positive denominator for value × 2^exponent.
ExactValue withPowerOfTwo(const mpz_class& numerator, const mpz_class& denominator, long exponent, bool root)
{
    if (exponent >= 0)
        return {timesPowerOfTwo(numerator, exponent), denominator, root};
    return {numerator, timesPowerOfTwo(denominator, -exponent), root};
}
} // namespace

SeriesStatistics SeriesStatistics::of(std::span<const double> readings)
{
    // Every finite reading is Mantissa × 2^Exponent with a whole Mantissa of at
    // most 53 bits; over the lowest exponent the sums are whole numbers.
    struct Reading
    {
        std::int64_t Mantissa;
        int Exponent;
    };
    std::vector<Reading> exact;
    exact.reserve(readings.size());
    int lowest = INT_MAX;
    for (const double reading : readings)
    {
        if (!std::isfinite(reading))
            continue;
        int exponent = 0;
        const double fraction = std::frexp(reading, &exponent);
        const auto mantissa = static_cast<std::int64_t>(std::ldexp(fraction, 53));
        exact.push_back({mantissa, exponent - 53});
        if (mantissa != 0 && exponent - 53 < lowest)
            lowest = exponent - 53;
    }
    if (lowest == INT_MAX)
        return {}; // no readings, or only zeros

    mpz_class sum;
    mpz_class squares;
    mpz_class term;
    for (const Reading& reading : exact)
    {
        if (reading.Mantissa == 0)
            continue;
        mpz_set_si(term.get_mpz_t(), reading.Mantissa);
        mpz_mul_2exp(term.get_mpz_t(), term.get_mpz_t(), mp_bitcnt_t(reading.Exponent - lowest));
        sum += term;
        mpz_addmul(squares.get_mpz_t(), term.get_mpz_t(), term.get_mpz_t());
    }

    // With S the sum and Q the sum of squares in units of 2^lowest:
    //   mean = S 2^lowest / n
    //   variance = (n Q - S^2) 2^(2 lowest) / (n (n - 1))
    //   CV = SD / mean = sign(S) sqrt((n Q - S^2) n / ((n - 1) S^2))
    const mpz_class n = static_cast<unsigned long>(exact.size());
    SeriesStatistics statistics;
    const bool negative = sum < 0;
    if (sum != 0)
    {
        statistics.Mean = printableDouble(withPowerOfTwo(abs(sum), n, lowest, false));
        if (negative)
            statistics.Mean = -statistics.Mean;
    }
    if (n < 2)
        return statistics;
    const mpz_class spread = n * squares - sum * sum;
    if (spread == 0)
        return statistics;
    statistics.SD = printableDouble(withPowerOfTwo(spread, n * (n - 1), 2L * lowest, true));
    if (sum == 0)
        return statistics; // CV 0 for a mean of 0
    const ExactValue cv{spread * n, (n - 1) * sum * sum, true};
    const ExactValue percent{cv.Numerator * 10000, cv.Denominator, true};
    statistics.CV = printableDouble(cv, percent, 100);
    if (negative)
        statistics.CV = -statistics.CV;
    return statistics;
}
