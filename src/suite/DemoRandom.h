#pragma once

#include <QtGlobal>

// A small reproducible random source (SplitMix64) whose sequence is the same on
// every platform and compiler, unlike the distributions of the standard
// library, so that the demo data are the same everywhere.
class DemoRandom
{
public:
    explicit DemoRandom(quint64 seed)
        : m_state(seed)
    {}

    quint64 next();
    // Uniform in [0, 1).
    double uniform();
    // Standard normal (mean 0, SD 1).
    double normal();
    // Uniform whole number in [0, count).
    int below(int count);

private:
    quint64 m_state;
};
