#pragma once

#include "suite/SuiteDatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QStringList>

// One run of the database tool built beside the tests, with the key file the
// test has put in place (NORRIX_REGISTRY). The test's own connections are
// closed first, as another program on the same database would find them.
struct NorrixDBQueryRun
{
    int exitCode = -1;
    QString out;
    QString err;

    static QString toolPath()
    {
        const QString dir = qEnvironmentVariableIsEmpty("CALVEX_BIN_DIR") ? QCoreApplication::applicationDirPath()
                                                                          : qEnvironmentVariable("CALVEX_BIN_DIR");
        return QDir(dir).filePath(QStringLiteral("NorrixDBQuery"));
    }

    static NorrixDBQueryRun start(const QStringList& arguments)
    {
        SuiteDatabase::closeAllConnections();
        QProcess process;
        process.start(toolPath(), arguments);
        if (!process.waitForFinished(240000))
            qFatal("NorrixDBQuery did not finish");
        NorrixDBQueryRun result;
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        result.err = QString::fromUtf8(process.readAllStandardError());
        return result;
    }
};
