#pragma once

#include <QHash>
#include <QString>

// Makes the variable names of one report request unique, because the table's
// data set names its value fields by VarName and the table layout finds each
// variable by that name. The first occurrence of a name is kept as it is;
// every later one gets " (1)", " (2)" ... counted per name without regard to
// case, while each occurrence keeps its own spelling: X, x, X become X, x (1),
// X (2). Only the names as given are counted, not the suffixed results.
class UniqueVarNames
{
public:
    // The name to use for this occurrence of name.
    QString MakeUnique(const QString& name);
    // Forgets every name seen so far.
    void Clear() { m_counters.clear(); }

private:
    QHash<QString, qint32> m_counters; // case-folded name -> occurrences after the first
};
