#pragma once

#include "reports/MainWindowHost.h"
#include "run/frmSelPatient.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QWidget>

#include <array>
#include <map>

// The QC subject part of the main window: the search text, search by ID or by
// last name, Find, and the chosen subject's ID and name.
//
// The chosen subject's ID lives in strCurrentPatientID (ProgramState), the
// one place that the report run and the shutdown's release of the subject
// read; it changes only through a successful choice.
class SubjectSearchPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubjectSearchPanel)

public:
    explicit SubjectSearchPanel(MainWindowHost& host, QWidget* parent = nullptr);

    // Searches the patient query for txtPatient's text (at least 3 characters
    // after trimming; 4060 otherwise), by ID or by last name: no match shows
    // 4061, one match is taken at once, several are offered in frmSelPatient
    // (4062 when that list stays empty). The engine hears of a new subject.
    // A run-time error ends the search, keeps the earlier choice and is shown
    // in one box with its description. Enter in txtPatient runs it too.
    void cmdFind_Click();

    // The result window, once a search has loaded it (nullptr before).
    frmSelPatient* SelPatientWindow() const { return m_selPatient; }

    QLineEdit* txtPatient = nullptr;
    std::array<QRadioButton*, 2> optFindBy{}; // 0 by ID, 1 by last name
    QPushButton* cmdFind = nullptr;
    QGroupBox* fraSelectedPatient = nullptr;
    QLineEdit* txtPatientID = nullptr;
    QLineEdit* txtPatientName = nullptr;
    // The labels of this panel by their index in the window's label array: 0, 10, 11.
    std::map<int, QLabel*> Label1;

private:
    // Loads the result window on first use; afterwards the same, hidden window.
    frmSelPatient& SelPatient();
    // Shows the chosen subject and makes it the selected one.
    void ShowSubject(const QString& id, const QString& firstName, const QString& midName, const QString& lastName);

    MainWindowHost& m_host;
    QPointer<frmSelPatient> m_selPatient;
};
