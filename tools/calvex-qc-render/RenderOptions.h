#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

// The command line of calvex-qc-render, one report:
//
//   --tab PF|GX --report NAME --subject ID [--from MM/DD/YYYY] --to MM/DD/YYYY
//   [--si] [--rules LIST] [--out FILE.pdf | --png-dir DIR] [--csv FILE.csv]
//   [--check [--json]]
//
// (at least one of the outputs, or --check), or every saved definition of
// both tabs for each subject listed:
//
//   --all (--subjects ID,ID,... | --subjects-file FILE) [--from MM/DD/YYYY]
//   --to MM/DD/YYYY [--si] [--rules LIST] [--out-dir DIR] [--check [--json]]
//
// (--out-dir, or --check, or both)
//
// or --help (-h), or --version; and, for tests only, the hidden --today
// MM/DD/YYYY that fixes the date the page header prints.
//
// A subjects file is UTF-8 text of one ID a line; blanks around an ID are
// dropped, and empty lines and lines whose first other character is "#" (a
// comment) are left out.
struct RenderOptions
{
    qint16 tab = 0; // 0 PF, 1 GX
    QString report;
    QString subject;
    QString from; // as given, blanks around it dropped; may be empty
    QString to;
    bool siUnits = false;    // --si: SI units whatever the site's setting
    QString pdfFile;         // --out
    QString pngFolder;       // --png-dir
    QString csvFile;         // --csv
    bool check = false;      // --check: check the QC rules; an output file only when asked for
    bool json = false;       // --json (with --check): the check as one JSON document
    bool rulesGiven = false; // --rules was given: its list replaces the site's "QC Rules"
    QString rules;           // --rules, as given (not yet checked against the known rules)
    bool allReports = false; // --all
    QStringList subjects;    // --all: the IDs of --subjects or of the --subjects-file, in their order
    QString outFolder;       // --out-dir
    QDate today;             // --today; invalid = the real date
    bool helpRequested = false;
    bool versionRequested = false;

    // The usage line, printed after a bad command line.
    static QString usage();
    // What --help prints: the usage line and the exit statuses, lines ended
    // with line breaks.
    static QString help();
    // "PF" or "GX".
    static QString tabName(qint16 tab) { return tab == 0 ? QStringLiteral("PF") : QStringLiteral("GX"); }

    // The options of arguments (without the program name). Throws
    // RenderFailure when they are incomplete, repeated, unknown, malformed or
    // do not go together, or when the subjects file cannot be read or names
    // no subject (all of them bad command lines). The period is checked as
    // the program checks it.
    static RenderOptions parse(const QStringList& arguments);
};
