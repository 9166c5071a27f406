#include "RenderOptions.h"

#include "RenderFailure.h"
#include "components/modReportRequest.h"
#include "platform/VbConversions.h"

#include <QCommandLineParser>

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
} // namespace

QString RenderOptions::usage()
{
    return QStringLiteral("Usage: calvex-qc-render --tab PF|GX --report NAME --subject ID [--from MM/DD/YYYY] "
                          "--to MM/DD/YYYY [--si] [--rules LIST] (--out FILE.pdf | --png-dir DIR | --check [--json] "
                          "[--out FILE.pdf | --png-dir DIR])");
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
                                    "  --rules LIST         the QC rules to check, e.g. \"1-3s,2-2s,R-4s\", instead of "
                                    "the\n"
                                    "                       setting \"QC Rules\" (\"\" checks none); known: "
                                    "1-2s, 1-3s,\n"
                                    "                       2-2s, R-4s, 4-1s, 10x, DLCO-12\n"
                                    "  --check              check the QC rules and print one line per violation\n"
                                    "                       (subject, definition, table, variable, date, value, "
                                    "rules,\n"
                                    "                       tab-separated); writes a file only with --out or "
                                    "--png-dir\n"
                                    "  --json               with --check: print one JSON document instead\n"
                                    "  -h, --help           print this help and exit\n"
                                    "  --version            print the version and exit\n"
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
    const QCommandLineOption rules(QStringLiteral("rules"), QString(), QStringLiteral("LIST"));
    const QCommandLineOption check(QStringLiteral("check"));
    const QCommandLineOption json(QStringLiteral("json"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringLiteral("version"));
    QCommandLineOption today(QStringLiteral("today"), QString(), QStringLiteral("MM/DD/YYYY"));
    today.setFlags(QCommandLineOption::HiddenFromHelp);

    QCommandLineParser parser;
    parser.addOptions({tab, report, subject, from, to, si, out, pngDir, rules, check, json, help, version, today});
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
    for (const QCommandLineOption& option : {tab, report, subject, from, to, out, pngDir, rules, today})
    {
        if (parser.values(option).size() > 1)
            refuseCommandLine(QStringLiteral("--%1 is given more than once").arg(option.names().first()));
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

    options.check = parser.isSet(check);
    options.json = parser.isSet(json);
    if (options.json && !options.check)
        refuseCommandLine(QStringLiteral("--json goes with --check"));
    // A check writes a file only when asked to; a rendering always does.
    if (parser.isSet(out) && parser.isSet(pngDir))
        refuseCommandLine(QStringLiteral("give either --out FILE.pdf or --png-dir DIR"));
    if (!options.check && !parser.isSet(out) && !parser.isSet(pngDir))
        refuseCommandLine(QStringLiteral("give either --out FILE.pdf or --png-dir DIR"));
    options.pdfFile = parser.value(out);
    options.pngFolder = parser.value(pngDir);
    if ((parser.isSet(out) && options.pdfFile.isEmpty()) || (parser.isSet(pngDir) && options.pngFolder.isEmpty()))
        refuseCommandLine(QStringLiteral("--%1 needs a path")
                              .arg(parser.isSet(out) ? QStringLiteral("out") : QStringLiteral("png-dir")));
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
