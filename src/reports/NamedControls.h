#pragma once

#include <QComboBox>
#include <QString>
#include <QWidget>

// Controls of the report tabs, named as the window's control arrays name
// them: objectName "name(index)".
namespace NamedControls
{
inline QString IndexedName(const char* name, int index)
{
    return QLatin1String(name) + QLatin1Char('(') + QString::number(index) + QLatin1Char(')');
}

template <class W> W* Make(QWidget* parent, const char* name, int index)
{
    auto* control = new W(parent);
    control->setObjectName(IndexedName(name, index));
    return control;
}

// A drop-down list wide enough for a dozen characters.
inline QComboBox* MakeList(QWidget* parent, const char* name, int index)
{
    auto* list = Make<QComboBox>(parent, name, index);
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setMinimumContentsLength(12);
    return list;
}
} // namespace NamedControls
