#pragma once

#include "run/SubjectSearchPanel.h"

#include <QTest>

// Types text into the panel's subject box, chooses the kind of search (by ID
// or by last name) and presses Find, as a user does.
inline void FindSubject(SubjectSearchPanel& panel, const QString& text, bool byId = false)
{
    panel.txtPatient->setText(text);
    panel.optFindBy[byId ? 0 : 1]->setChecked(true);
    QTest::mouseClick(panel.cmdFind, Qt::LeftButton);
}
