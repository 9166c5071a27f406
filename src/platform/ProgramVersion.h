#pragma once

#include <QString>

// The project's one version (project(VERSION ...) in CMake), e.g. "1.0.0".
QString ProgramVersion();

// What --version prints: the program's name and the version, one line.
QString VersionLine(const QString& programName);
