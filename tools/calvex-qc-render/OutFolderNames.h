#pragma once

#include "components/ReportInfo.h"

#include <QDir>
#include <QSet>
#include <QString>

// The files of --all in --out-dir, named as Print to PDF proposes them
// (ProposedReportFileName). Two reports of the run that would get the same
// name (definitions of the same name on both tabs, names that differ only in
// characters a file name cannot hold, or in case on a file system that
// ignores it) are told apart by " (2)", " (3)" ... before ".pdf", so that no
// report of the run replaces another.
class OutFolderNames final
{
public:
    explicit OutFolderNames(const QString& folder);

    // The path of the next report's file in the folder.
    QString filePath(const ReportInfo& info, const QString& definitionName);

private:
    QDir m_folder;
    QSet<QString> m_used; // case-folded names
};
