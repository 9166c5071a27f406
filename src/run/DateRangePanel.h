#pragma once

#include "run/frmChooseDate.h"
#include "widgets/MaskEdBox.h"

#include <QGroupBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QWidget>

#include <array>
#include <map>

// The date range of the main window: From and To date boxes, each with a
// button that opens a calendar. Dates travel as the boxes' month-first texts;
// only ValidateDateRange reads them as dates.
class DateRangePanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DateRangePanel)

public:
    explicit DateRangePanel(QWidget* parent = nullptr);

    // Opens the calendar for box Index (0 From, 1 To), captioned
    // 4042 "<4041 or 4043>" 4053, on the box's date when it holds one. OK
    // writes the chosen day into the box as "mm/dd/yyyy".
    void cmdDate_Click(int Index);

    // The change event of either box: the window refreshes the report
    // buttons of the current tab.
    void mskDate_Change(int Index);

    // The range is acceptable: To is a date, and From is empty or a date
    // strictly before To.
    bool ValidateDateRange() const;

    // The calendar window, once a button has loaded it (nullptr before).
    frmChooseDate* ChooseDateWindow() const { return m_chooseDate; }

    QGroupBox* fraDateRange = nullptr;
    std::array<MaskEdBox*, 2> mskDate{};   // 0 From, 1 To
    std::array<QPushButton*, 2> cmdDate{}; // 0 From, 1 To
    // The labels of this panel by their index in the window's label array: 2 (From), 3 (To).
    std::map<int, QLabel*> Label1;

signals:
    // A box's text changed, by typing or by the program.
    void DateChanged(int Index);

private:
    QPointer<frmChooseDate> m_chooseDate;
};
