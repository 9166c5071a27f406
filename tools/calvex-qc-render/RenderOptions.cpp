#include "RenderOptions.h"

#include "RenderFailure.h"
#include "components/modReportRequest.h"
#include "platform/VbConversions.h"

#include <QCommandLineParser>
#include <QFile>

namespace
{
[[noreturn]] void refuseCommandLine(const QString& message)
{
    throw RenderFailure{message, true};
}

[[noreturn]] void refusePeriod(const QString& message)
{
    throw RenderFailure{message, false};
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

void refuseBadPeriod(const QString& from, const QString& to)
{
    if (IsValidDateRange(from, to))
        return;
    if (!IsDate(to))
        refusePeriod(QStringLiteral("--to is not a date (MM/DD/YYYY): ") + quoted(to));
    if (!IsDate(from))
        refusePeriod(QStringLiteral("--from is not a date (MM/DD/YYYY): ") + quoted(from));
    refusePeriod(QStringLiteral("--from must be a day before --to: %1 - %2").arg(from, to));
}
// The IDs of --subjects: separated by commas, blanks around each dropped.
QStringList subjectList(const QString& text)
{
    QStringList ids;
    for (const QString& part : text.split(QLatin1Char(',')))
    {
        const QString id = part.trimmed();
        if (id.isEmpty())
            refuseCommandLine(QStringLiteral("--subjects needs QC subject IDs separated by commas, not ") +
                              quoted(text));
        ids.append(id);
    }
    return ids;
}

// The IDs of a subjects file: one a line, without empty lines and comments.
QStringList subjectFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        refuseCommandLine(QStringLiteral("cannot read the subjects file %1: %2").arg(fileName, file.errorString()));
    const QByteArray contents = file.readAll();
    if (file.error() != QFileDevice::NoError)
        refuseCommandLine(QStringLiteral("cannot read the subjects file %1: %2").arg(fileName, file.errorString()));
    QString text = QString::fromUtf8(contents);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    QStringList ids;
    for (const QString& line : text.split(QLatin1Char('\n')))
    {
        const QString id = line.trimmed();
        if (!id.isEmpty() && !id.startsWith(QLatin1Char('#')))
            ids.append(id);
    }
    if (ids.isEmpty())
        refuseCommandLine(QStringLiteral("the subjects file %1 names no QC subject").arg(fileName));
    return ids;
}
} // namespace

QString RenderOptions::usage()
{
    return QStringLiteral("Usage: calvex-qc-render --tab PF|GX --report NAME --subject ID [--from MM/DD/YYYY] "
                          "--to MM/DD/YYYY [--si] [--rules LIST] [--out FILE.pdf | --png-dir DIR] [--csv FILE.csv] "
                          "[--check [--json]]\n"
                          "   or: calvex-qc-render --all (--subjects ID,ID,... | --subjects-file FILE) "
                          "[--from MM/DD/YYYY] --to MM/DD/YYYY [--si] [--rules LIST] [--out-dir DIR] "
                          "[--check [--json]]");
}

QString RenderOptions::help()
{
    return usage() + QStringLiteral("\n\n"
                                    "Options:\n"
                                    "  --tab PF|GX          the tab of the saved QC report\n"
                                    "  --report NAME        the saved QC report's name\n"
                                    "  --subject ID         the QC subject's ID\n"
                                    "  --from MM/DD/YYYY    the first day of the period (without it: every visit up "
                                    "to --to)\n"
                                    "  --to MM/DD/YYYY      the last day of the period\n"
                                    "  --si                 SI units, whatever the settings say\n"
                                    "  --out FILE.pdf       write the report as one PDF file\n"
                                    "  --png-dir DIR        write the pages as DIR/page-001.png, ...\n"
                                    "  --csv FILE.csv       write the report's table as CSV (UTF-8, the table's rows "
                                    "and columns)\n"
                                    "  --rules LIST         the QC rules to check, e.g. \"1-3s,2-2s,R-4s\", instead of "
                                    "the\n"
                                    "                       setting \"QC Rules\" (\"\" checks none); known: "
                                    "1-2s, 1-3s,\n"
                                    "                       2-2s, R-4s, 4-1s, 10x, DLCO-12\n"
                                    "  --check              check the QC rules and print one line per violation\n"
                                    "                       (subject, definition, table, variable, date, value, "
                                    "rules,\n"
                                    "                       tab-separated); writes a file only when one is asked "
                                    "for\n"
                                    "  --json               with --check: print one JSON document instead\n"
                                    "  --all                every saved QC report of both tabs for each subject "
                                    "listed\n"
                                    "  --subjects ID,ID,... the QC subjects of --all, separated by commas\n"
                                    "  --subjects-file FILE the QC subjects of --all, one ID a line (empty lines and "
                                    "lines starting with # left out)\n"
                                    "  --out-dir DIR        --all: one PDF a subject and report in DIR, named as "
                                    "Print to PDF names it\n"
                                    "  -h, --help           print this help and exit\n"
                                    "  --version            print the version and exit\n"
                                    "\n"
                                    "With --all, a subject without visits in the period is reported on stdout and "
                                    "skipped; the run goes on after a report that fails, and ends with the worst "
                                    "status met.\n"
                                    "\n"
                                    "Exit status:\n"
                                    "  0  the report was written; with --check: no QC rule was broken\n"
                                    "  1  the report could not be rendered or written, or the user may not run QC\n"
                                    "     reports (no right 500, a disabled user): the reason is on stderr\n"
                                    "  2  the command line is wrong (usage error), or a QC rule is unknown\n"
                                    "  3  with --check: a QC rule was broken\n");
}

RenderOptions RenderOptions::parse(const QStringList& arguments)
{
    const QCommandLineOption tab(QStringLiteral("tab"), QString(), QStringLiteral("PF|GX"));
    const QCommandLineOption report(QStringLiteral("report"), QString(), QStringLiteral("NAME"));
    const QCommandLineOption subject(QStringLiteral("subject"), QString(), QStringLiteral("ID"));
    const QCommandLineOption from(QStringLiteral("from"), QString(), QStringLiteral("MM/DD/YYYY"));
    const QCommandLineOption to(QStringLiteral("to"), QString(), QStringLiteral("MM/DD/YYYY"));
    const QCommandLineOption si(QStringLiteral("si"));
    const QCommandLineOption out(QStringLiteral("out"), QString(), QStringLiteral("FILE.pdf"));
    const QCommandLineOption pngDir(QStringLiteral("png-dir"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption csv(QStringLiteral("csv"), QString(), QStringLiteral("FILE.csv"));
    const QCommandLineOption rules(QStringLiteral("rules"), QString(), QStringLiteral("LIST"));
    const QCommandLineOption check(QStringLiteral("check"));
    const QCommandLineOption json(QStringLiteral("json"));
    const QCommandLineOption all(QStringLiteral("all"));
    const QCommandLineOption subjects(QStringLiteral("subjects"), QString(), QStringLiteral("ID,ID,..."));
    const QCommandLineOption subjectsFile(QStringLiteral("subjects-file"), QString(), QStringLiteral("FILE"));
    const QCommandLineOption outDir(QStringLiteral("out-dir"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringLiteral("version"));
    QCommandLineOption today(QStringLiteral("today"), QString(), QStringLiteral("MM/DD/YYYY"));
    today.setFlags(QCommandLineOption::HiddenFromHelp);

    QCommandLineParser parser;
    parser.addOptions({tab, report, subject, from, to, si, out, pngDir, csv, rules, check, json, all, subjects,
                       subjectsFile, outDir, help, version, today});
    if (!parser.parse(QStringList{QStringLiteral("calvex-qc-render")} + arguments))
        refuseCommandLine(parser.errorText());

    RenderOptions options;
    if (parser.isSet(help))
    {
        options.helpRequested = true;
        return options;
    }
    if (parser.isSet(version))
    {
        options.versionRequested = true;
        return options;
    }
    if (!parser.positionalArguments().isEmpty())
        refuseCommandLine(QStringLiteral("unexpected argument ") + quoted(parser.positionalArguments().first()));
    for (const QCommandLineOption& option :
         {tab, report, subject, from, to, out, pngDir, csv, rules, subjects, subjectsFile, outDir, today})
    {
        if (parser.values(option).size() > 1)
            refuseCommandLine(QStringLiteral("--%1 is given more than once").arg(option.names().first()));
    }

    options.allReports = parser.isSet(all);
    if (options.allReports)
    {
        // Every definition of both tabs, for subjects of a list: the options
        // of one report have no place here.
        for (const QCommandLineOption& option : {tab, report, subject, out, pngDir, csv})
        {
            if (parser.isSet(option))
                refuseCommandLine(QStringLiteral("--%1 cannot be used with --all").arg(option.names().first()));
        }
        if (parser.isSet(subjects) && parser.isSet(subjectsFile))
            refuseCommandLine(QStringLiteral("give either --subjects or --subjects-file, not both"));
        if (!parser.isSet(subjects) && !parser.isSet(subjectsFile))
            refuseCommandLine(QStringLiteral("--all needs --subjects ID,ID,... or --subjects-file FILE"));
        if (!parser.isSet(to))
            refuseCommandLine(QStringLiteral("--to is missing"));
        // A check of every report writes files only when asked to.
        if (!parser.isSet(outDir) && !parser.isSet(check))
            refuseCommandLine(QStringLiteral("--all needs --out-dir DIR, or --check"));
        options.outFolder = parser.value(outDir);
        if (parser.isSet(outDir) && options.outFolder.isEmpty())
            refuseCommandLine(QStringLiteral("--out-dir needs a path"));
        if (parser.isSet(subjectsFile) && parser.value(subjectsFile).isEmpty())
            refuseCommandLine(QStringLiteral("--subjects-file needs a path"));
        options.subjects =
            parser.isSet(subjects) ? subjectList(parser.value(subjects)) : subjectFile(parser.value(subjectsFile));
    }
    else
    {
        for (const QCommandLineOption& option : {subjects, subjectsFile, outDir})
        {
            if (parser.isSet(option))
                refuseCommandLine(QStringLiteral("--%1 needs --all").arg(option.names().first()));
        }
        for (const QCommandLineOption& option : {tab, report, subject, to})
        {
            if (!parser.isSet(option))
                refuseCommandLine(QStringLiteral("--%1 is missing").arg(option.names().first()));
        }

        const QString tabText = parser.value(tab);
        if (tabText.compare(QLatin1String("PF"), Qt::CaseInsensitive) == 0)
            options.tab = 0;
        else if (tabText.compare(QLatin1String("GX"), Qt::CaseInsensitive) == 0)
            options.tab = 1;
        else
            refuseCommandLine(QStringLiteral("--tab must be PF or GX, not ") + quoted(tabText));

        options.report = parser.value(report).trimmed();
        if (options.report.isEmpty())
            refuseCommandLine(QStringLiteral("--report needs the name of a saved QC report"));
        options.subject = parser.value(subject).trimmed();
        if (options.subject.isEmpty())
            refuseCommandLine(QStringLiteral("--subject needs the ID of a QC subject"));

        // A check writes a file only when asked to; a rendering always does.
        if (parser.isSet(out) && parser.isSet(pngDir))
            refuseCommandLine(QStringLiteral("give either --out FILE.pdf or --png-dir DIR, not both"));
        if (!parser.isSet(check) && !parser.isSet(out) && !parser.isSet(pngDir) && !parser.isSet(csv))
            refuseCommandLine(QStringLiteral("give --out FILE.pdf, --png-dir DIR or --csv FILE.csv"));
        options.pdfFile = parser.value(out);
        options.pngFolder = parser.value(pngDir);
        options.csvFile = parser.value(csv);
        for (const QCommandLineOption& option : {out, pngDir, csv})
        {
            if (parser.isSet(option) && parser.value(option).isEmpty())
                refuseCommandLine(QStringLiteral("--%1 needs a path").arg(option.names().first()));
        }
    }
    options.check = parser.isSet(check);
    options.json = parser.isSet(json);
    if (options.json && !options.check)
        refuseCommandLine(QStringLiteral("--json goes with --check"));
    options.rulesGiven = parser.isSet(rules);
    options.rules = parser.value(rules);
    options.siUnits = parser.isSet(si);

    if (parser.isSet(today))
    {
        if (!IsDate(parser.value(today)))
            refuseCommandLine(QStringLiteral("--today is not a date (MM/DD/YYYY): ") + quoted(parser.value(today)));
        options.today = ToDate(parser.value(today));
    }

    options.from = parser.value(from).trimmed();
    options.to = parser.value(to).trimmed();
    refuseBadPeriod(options.from, options.to);
    return options;
}
