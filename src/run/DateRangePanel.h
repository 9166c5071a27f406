#pragma once

#include "widgets/MaskEdBox.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include <array>
#include <map>

// The date range of the main window: From and To date boxes, each with a
// button that opens a calendar.
class DateRangePanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DateRangePanel)

public:
    explicit DateRangePanel(QWidget* parent = nullptr);

    QGroupBox* fraDateRange = nullptr;
    std::array<MaskEdBox*, 2> mskDate{};   // 0 From, 1 To
    std::array<QPushButton*, 2> cmdDate{}; // 0 From, 1 To
    // The labels of this panel by their index in the window's label array: 2 (From), 3 (To).
    std::map<int, QLabel*> Label1;
};
