#include "widgets/ComboList.h"

#include "platform/RuntimeError.h"

#include <QSignalBlocker>

namespace ComboList
{
namespace
{
constexpr qint32 InvalidPropertyArrayIndex = 381;

[[noreturn]] void invalidIndex(const QComboBox* combo)
{
    throw RuntimeError(ErrorNumber::InvalidPropertyValue, combo->objectName(),
                       QStringLiteral("Invalid property value"));
}

[[noreturn]] void invalidItem(const QComboBox* combo)
{
    throw RuntimeError(InvalidPropertyArrayIndex, combo->objectName(), QStringLiteral("Invalid property array index"));
}
} // namespace

void AddItem(QComboBox* combo, const QString& text)
{
    // QComboBox selects the first item added to an empty list; a list here
    // keeps its selection as it was.
    const QSignalBlocker blocker(combo);
    const int before = combo->currentIndex();
    combo->addItem(text, QVariant(qint32(0)));
    combo->setCurrentIndex(before);
}

void Clear(QComboBox* combo)
{
    const QSignalBlocker blocker(combo);
    combo->clear();
}

void SetListIndex(QComboBox* combo, int index)
{
    if (index < -1 || index >= combo->count())
        invalidIndex(combo);
    combo->setCurrentIndex(index);
}

qint32 ItemData(const QComboBox* combo, int index)
{
    if (index < 0 || index >= combo->count())
        invalidItem(combo);
    return combo->itemData(index).toInt();
}

void SetItemData(QComboBox* combo, int index, qint32 value)
{
    if (index < 0 || index >= combo->count())
        invalidItem(combo);
    combo->setItemData(index, QVariant(value));
}
} // namespace ComboList
