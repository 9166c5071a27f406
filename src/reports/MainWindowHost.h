#pragma once

#include "components/ProgramState.h"

#include <QString>

// What the report panels need of the main window that holds them: the state
// the window's panels share and the few actions that belong to other panels.
class MainWindowHost
{
public:
    virtual ~MainWindowHost() = default;

    // Set while the program itself fills lists and grids; changes made then
    // never mark a definition modified, and the saved-report lists ignore
    // their selection changes.
    virtual bool IsLoading() const = 0;
    virtual void SetLoading(bool loading) = 0;

    // The definition on tab 0 or 1 has unsaved changes.
    virtual bool IsModified(int tab) const = 0;
    // Stores value And Not loading.
    virtual void SetReportDirty(int tab, bool value) = 0;

    // The tab shown: 0 pulmonary function, 1 gas exchange.
    virtual int CurrentTab() const = 0;

    // The title of every message box of the main window.
    virtual QString MsgTitle() const = 0;

    // Asks before the tab's modified definition is replaced: true when there
    // is nothing to lose or the user agreed to discard it.
    virtual bool ConfirmDiscardChanges(int tab, const QString& title) = 0;

    // The chosen QC subject ("" while none is chosen).
    virtual QString SelectedPatientName() const = 0;
    virtual QString SelectedPatientID() const = 0;

    // The date range as the boxes show it.
    virtual QString FromDateText() const = 0;
    virtual QString ToDateText() const = 0;
    // From empty, To today.
    virtual void ResetDateRange() = 0;

    // The program's state, which the window was given by the program's owner.
    virtual ProgramState& State() = 0;
};
