#pragma once

#include "widgets/FlexGrid.h"

#include <QStringList>

// The texts of a grid row's cells, from the first column to the last.
inline QStringList GridRowTexts(const FlexGrid& grid, int row)
{
    QStringList texts;
    for (int c = 0; c < grid.Cols(); ++c)
        texts.append(grid.TextMatrix(row, c));
    return texts;
}
