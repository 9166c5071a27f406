#pragma once

struct SuiteSettings;

// What the database tool does with "auto" at every start of the program:
// creates or migrates the schema, fills the demo data into the embedded demo
// database while it holds no patients (a new one, or one whose first filling
// was interrupted), gives a tab without a saved definition its starter
// definition (a new laboratory database), and checks the database's integrity.
class SuiteSetup
{
public:
    struct Outcome
    {
        int versionBefore = 0;
        int version = 0;
        bool demoFilled = false;
        int startersAdded = 0; // starter definitions saved on tabs without one
    };

    // Raises RuntimeError with a one-sentence description when anything fails.
    static Outcome runAuto(const SuiteSettings& settings);

    // Brings up the embedded demo database of settings as runAuto does, when
    // it does not exist yet (before the database tool's first run); true when
    // it was made. Any other database that is missing stays missing.
    static bool createMissingDemo(const SuiteSettings& settings);
};
