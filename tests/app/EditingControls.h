#pragma once

// The main window's controls that change a definition: disabled without the
// edit right and while the database cannot be written.
inline constexpr const char* kEditingControls[] = {
    "cmdNew",          "cmdSave",         "cmdSaveAs",    "cmdDelete",    "cboTable(0)",     "cboTable(1)",
    "cboVariable(0)",  "cboVariable(1)",  "cmdVarAdd(0)", "cmdVarAdd(1)", "cmdVarUpdate(0)", "cmdVarUpdate(1)",
    "cmdVarRemove(0)", "cmdVarRemove(1)", "chkShowIn(0)", "chkShowIn(1)", "chkShowIn(2)",    "chkShowIn(3)",
};
