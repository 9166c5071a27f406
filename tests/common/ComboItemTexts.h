#pragma once

#include <QComboBox>
#include <QStringList>

// The texts of a list's items, in their order.
inline QStringList ComboItemTexts(const QComboBox* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts.append(list->itemText(i));
    return texts;
}
