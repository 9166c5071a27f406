#pragma once

#include <QIcon>

// The program's icon, drawn for every size the installation (or the build
// tree) holds: share/icons/hicolor/NxN/apps/<ID>.png beside the programs'
// folder. Without those files, the desktop theme's icon of that name.
QIcon ProgramIcon();
