#include "suite/DemoRandom.h"

#include <cmath>
#include <numbers>

quint64 DemoRandom::next()
{
    m_state += 0x9E3779B97F4A7C15ull;
    quint64 z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double DemoRandom::uniform()
{
    return double(next() >> 11) * 0x1.0p-53;
}

double DemoRandom::normal()
{
    // Box-Muller; 1 - u keeps the logarithm away from zero.
    const double u1 = 1.0 - uniform();
    const double u2 = uniform();
    return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * std::numbers::pi * u2);
}

int DemoRandom::below(int count)
{
    return count <= 0 ? 0 : int(next() % quint64(count));
}
