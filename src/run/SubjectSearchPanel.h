#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QWidget>

#include <array>
#include <map>

// The QC subject part of the main window: the search text, search by ID or by
// last name, Find, and the chosen subject's ID and name.
class SubjectSearchPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubjectSearchPanel)

public:
    explicit SubjectSearchPanel(QWidget* parent = nullptr);

    QLineEdit* txtPatient = nullptr;
    std::array<QRadioButton*, 2> optFindBy{}; // 0 by ID, 1 by last name
    QPushButton* cmdFind = nullptr;
    QGroupBox* fraSelectedPatient = nullptr;
    QLineEdit* txtPatientID = nullptr;
    QLineEdit* txtPatientName = nullptr;
    // The labels of this panel by their index in the window's label array: 0, 10, 11.
    std::map<int, QLabel*> Label1;
};
