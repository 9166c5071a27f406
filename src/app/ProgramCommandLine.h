#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>
#include <optional>

// The questions the program answers on its command line without opening its
// window: --help (-h) and --version. They are read before the application
// object exists, so they need no display; every other argument (the window
// toolkit's own, such as -platform or -style) is left to the toolkit.
class ProgramCommandLine
{
public:
    // The arguments after the program's name, decoded as the system encodes them.
    static QStringList arguments(int argc, char** argv);

    // What --help prints: usage, what the program is and its options.
    static QString help();
    // What --help prints after that: the settings file and the help pages this
    // program finds (it needs the application object for its own folder).
    static QString files();

    // True when the arguments ask for the help or the version.
    static bool asksForInformation(const QStringList& arguments);

    // Prints the help or the version to out when the arguments ask for it and
    // gives the exit status (0); nothing when the window is to start.
    static std::optional<int> answer(const QStringList& arguments, FILE* out);
};
