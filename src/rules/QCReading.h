#pragma once

#include <QDate>

#include <optional>

// One visit of a chart as the QC rules see it: its date and its value, or no
// value when the reading is missing (an empty or non-numeric field).
struct QCReading
{
    QDate Date;
    std::optional<double> Value;
};
