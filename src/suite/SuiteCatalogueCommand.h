#pragma once

class QTextStream;

// "NorrixDBQuery catalogue": the test tables and variables of both tabs as
// the database holds them, with each variable's conventional and SI unit and
// its decimal places, so that a laboratory can match the columns of its own
// export to the names an import file uses.
class SuiteCatalogueCommand
{
public:
    static constexpr int ExitFailed = 1;

    // Prints the catalogue to out; 0, or ExitFailed with the reason on err.
    static int run(QTextStream& out, QTextStream& err);
};
