#pragma once

#include <QString>

// Where the programs find what is installed with them. An installation keeps
// the programs in bin and their data in share/calvex-qc (GNUInstallDirs), and
// the build tree has the same shape, so one rule finds both, wherever the
// tree was installed or unpacked: relative to the running program's folder.

// The shared data folder beside the programs' folder (bin/../share), cleaned.
QString ProgramShareFolder();

// The program's own data folder (bin/../share/calvex-qc): the default key
// file and the help.
QString ProgramDataFolder();
