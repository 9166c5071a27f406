#include "suite/SuiteImportCommand.h"

#include "platform/RuntimeError.h"
#include "suite/SuiteDatabase.h"
#include "suite/SuiteResultImport.h"
#include "suite/SuiteSettings.h"

#include <QFile>
#include <QTextStream>

int SuiteImportCommand::run(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QString path;
    bool dryRun = false;
    bool usable = true;
    for (const QString& argument : arguments)
    {
        if (argument == QLatin1String("--dry-run") && !dryRun)
            dryRun = true;
        else if (path.isEmpty() && !argument.isEmpty() && !argument.startsWith(u'-'))
            path = argument;
        else
            usable = false;
    }
    if (!usable || path.isEmpty())
    {
        err << QStringLiteral("Usage: ") << Usage << Qt::endl;
        return ExitUsage;
    }

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
    {
        err << QStringLiteral("The file \"%1\" cannot be read: %2").arg(path, file.errorString()) << Qt::endl;
        return ExitFailed;
    }
    try
    {
        SuiteDatabase db(SuiteSettings::fromRegistry());
        SuiteResultImport fileImport(db);
        fileImport.setProgress([&err](const QString& text) { err << text << Qt::endl; });
        if (!fileImport.check(file, file.size()))
        {
            const std::vector<SuiteResultImport::Error>& errors = fileImport.errors();
            for (size_t i = 0; i < errors.size() && i < size_t(SuiteResultImport::MaxErrors); ++i)
                err << errors[i].text() << Qt::endl;
            if (fileImport.tooManyErrors())
                err << QStringLiteral("More errors follow; the listing stops after %1.")
                           .arg(SuiteResultImport::MaxErrors)
                    << Qt::endl;
            err << QStringLiteral("Nothing was imported.") << Qt::endl;
            return ExitFailed;
        }
        if (dryRun)
        {
            out << QStringLiteral("Dry run, nothing written: ") << fileImport.summary() << Qt::endl;
            return 0;
        }
        fileImport.write();
        out << fileImport.summary() << Qt::endl;
        return 0;
    }
    catch (const RuntimeError& error)
    {
        QString text = SuiteDatabase::fullText(error);
        err << text.replace(u'\n', u' ') << Qt::endl;
        return ExitFailed;
    }
}
