#pragma once

#include <QString>

// A saved QC report definition as the report store lists it.
struct SavedDefinition
{
    qint32 id = 0;
    qint16 tab = 0; // 0 PF, 1 GX
    QString name;   // as stored, blanks around it dropped
};
