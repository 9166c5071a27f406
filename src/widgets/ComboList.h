#pragma once

#include <QComboBox>
#include <QString>

// Drop-down lists with the classic list semantics on QComboBox:
//
// - filling and clearing a list never selects an item and never runs the
//   list's selection handler (a new list has no selection, position -1);
// - choosing a position that does not exist raises RuntimeError 380
//   (invalid property value) instead of quietly selecting nothing;
// - every item carries a 32-bit item data value (Qt::UserRole); reading or
//   writing the data of an item that does not exist raises 381.
namespace ComboList
{
void AddItem(QComboBox* combo, const QString& text);
void Clear(QComboBox* combo);

// -1 .. ListCount - 1; raises 380 for anything else.
void SetListIndex(QComboBox* combo, int index);

qint32 ItemData(const QComboBox* combo, int index);
void SetItemData(QComboBox* combo, int index, qint32 value);
} // namespace ComboList
