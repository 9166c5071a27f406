#pragma once

#include <QStringList>

class QTextStream;

// "NorrixDBQuery import FILE.csv [--dry-run]": checks a laboratory's file of
// QC results and writes it into the database of the suite's settings (see
// SuiteResultImport). The summary goes to out; errors, and the progress of a
// large file, to err.
class SuiteImportCommand
{
public:
    static constexpr int ExitFailed = 1;
    static constexpr int ExitUsage = 2;
    static inline const QString Usage = QStringLiteral("NorrixDBQuery import FILE.csv [--dry-run]");

    // arguments: what follows "import". Returns the exit status: 0 when the
    // file was imported (or, with --dry-run, could be), ExitFailed when it
    // has errors or the database refused, ExitUsage for a wrong command line.
    static int run(const QStringList& arguments, QTextStream& out, QTextStream& err);
};
