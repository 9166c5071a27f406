#pragma once

#include "rules/QCRuleSet.h"

#include <QDate>

// One reading of a chart that broke at least one QC rule.
struct QCViolation
{
    QDate Date;
    double Value = 0;
    QCRuleSet Rules;       // every rule the reading broke
    qsizetype Reading = 0; // its position in the readings given to the evaluator
};
