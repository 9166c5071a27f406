#pragma once

#include <QVariant>

class QComboBox;

// The index of the first entry of combo whose text (or, with byItemData, whose
// item data: Qt::UserRole, 0 where an entry has none) reads as value, both
// taken as text and, unless caseSensitive, compared without regard to case;
// -1 when none matches.
// A missing list gives 0, as it always has; callers rely on it.
int FindComboItem(QComboBox* combo, const QVariant& value, bool byItemData, bool caseSensitive);
