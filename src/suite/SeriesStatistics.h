#pragma once

#include <span>

// Mean, sample standard deviation and coefficient of variation of a series of
// readings, as a control chart prints them.
//
// The sums are kept exactly (as integers over the readings' binary values), so
// the result does not depend on the order of the readings or on how far they
// lie from zero: equal readings give an SD and a CV of exactly 0, and a large
// offset with a small spread loses nothing. Each result is the double nearest
// the exact value whose text with 15 significant digits is the exact value
// correctly rounded (ties to even): Mean and SD as they are, CV as the chart
// prints it, CV × 100 in per cent.
//
// - Mean: the sum over n.
// - SD: the sample standard deviation, with n - 1; 0 for a single reading.
// - CV: SD / Mean as a fraction, negative for a negative mean; 0 for a mean of 0.
// - No readings: all three are 0.
// - Readings that are not finite numbers are left out.
struct SeriesStatistics
{
    double Mean = 0;
    double SD = 0;
    double CV = 0;

    static SeriesStatistics of(std::span<const double> readings);
};
