#pragma once

#include <QtGlobal>

// The drawable rectangle of a page, in the target's units. The page frame and
// the layouts move its edges inward as they use room, each change rounded to
// a whole unit (half to even).
struct PageRect
{
    qint32 Left = 0;
    qint32 Top = 0;
    qint32 Right = 0;
    qint32 Bottom = 0;
};
