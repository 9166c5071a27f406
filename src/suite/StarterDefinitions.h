#pragma once

class SuiteDatabase;

// The saved definitions a tab starts with when it has none: the program
// cannot start on a tab without a definition, and the store never takes a
// tab's last one, so a tab gets them once, when the database is new.
//
// - PF "Spirometry": FVC, FEV1, FEV1/FVC and PEF of the Pre table;
// - GX "Exercise": VO2, VCO2, VE and RER of the Peak table.
//
// A catalogue without one of these names gives the definition what it has;
// one without any of them gives the first four variables of the tab's first
// table.
class StarterDefinitions
{
public:
    // Saves the starter definition of every tab that has no definition;
    // returns how many it saved.
    static int addWhereMissing(SuiteDatabase& db);
};
