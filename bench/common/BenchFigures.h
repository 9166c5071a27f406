#pragma once

// Timing figures the benchmarks print: median, minimum and maximum of a
// series of runs in milliseconds.

#include <QElapsedTimer>
#include <QString>
#include <QTextStream>

#include <algorithm>
#include <vector>

struct Figures
{
    std::vector<double> ms;

    void add(double value) { ms.push_back(value); }
    double min() const { return *std::min_element(ms.begin(), ms.end()); }
    double max() const { return *std::max_element(ms.begin(), ms.end()); }
    double median() const
    {
        std::vector<double> sorted = ms;
        std::sort(sorted.begin(), sorted.end());
        return sorted[sorted.size() / 2];
    }
};

// One line: what was measured, padded to labelWidth, then its figures.
inline void printFigures(QTextStream& out, const QString& what, const Figures& figures, int labelWidth)
{
    out << qSetFieldWidth(labelWidth) << Qt::left << what << qSetFieldWidth(0) << Qt::right
        << QStringLiteral("median %1 ms   min %2 ms   max %3 ms   (n=%4)")
               .arg(figures.median(), 8, 'f', 2)
               .arg(figures.min(), 8, 'f', 2)
               .arg(figures.max(), 8, 'f', 2)
               .arg(figures.ms.size())
        << Qt::endl;
}

inline double elapsedMs(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}
