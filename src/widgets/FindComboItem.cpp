#include "widgets/FindComboItem.h"

#include <QComboBox>

namespace
{
// An entry added without item data carries 0, as list entries always have.
QString itemDataText(const QVariant& data)
{
    return data.isValid() ? data.toString() : QStringLiteral("0");
}
} // namespace

int FindComboItem(QComboBox* combo, const QVariant& value, bool byItemData, bool caseSensitive)
{
    if (!combo)
        return 0;
    const QString wanted = caseSensitive ? value.toString() : value.toString().toUpper();
    // The count is read anew for every entry.
    for (int i = 0; i < combo->count(); ++i)
    {
        const QString entry = byItemData ? itemDataText(combo->itemData(i, Qt::UserRole)) : combo->itemText(i);
        if ((caseSensitive ? entry : entry.toUpper()) == wanted)
            return i;
    }
    return -1;
}
