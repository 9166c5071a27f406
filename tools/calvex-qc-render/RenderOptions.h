#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

// The command line of calvex-qc-render:
//
//   --tab PF|GX --report NAME --subject ID [--from MM/DD/YYYY] --to MM/DD/YYYY
//   [--si] [--rules LIST] (--out FILE.pdf | --png-dir DIR | --check [--json]
//   [--out FILE.pdf | --png-dir DIR])
//
// or --help (-h), or --version; and, for tests only, the hidden --today MM/DD/YYYY that fixes the date the
// page header prints.
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
    bool check = false;      // --check: check the QC rules; an output file only when asked for
    bool json = false;       // --json (with --check): the check as one JSON document
    bool rulesGiven = false; // --rules was given: its list replaces the site's "QC Rules"
    QString rules;           // --rules, as given (not yet checked against the known rules)
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
    // RenderFailure when they are incomplete, repeated, unknown or malformed.
    // The period is checked as the program checks it.
    static RenderOptions parse(const QStringList& arguments);
};
