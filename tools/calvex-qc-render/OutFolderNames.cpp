#include "OutFolderNames.h"

#include "components/modReportRequest.h"

OutFolderNames::OutFolderNames(const QString& folder)
    : m_folder(folder)
{}

QString OutFolderNames::filePath(const ReportInfo& info, const QString& definitionName)
{
    const QString proposed = ProposedReportFileName(info, definitionName);
    const QString stem = proposed.chopped(4); // without ".pdf"
    QString name = proposed;
    for (int n = 2; m_used.contains(name.toCaseFolded()); ++n)
        name = stem + QStringLiteral(" (%1).pdf").arg(n);
    m_used.insert(name.toCaseFolded());
    return m_folder.filePath(name);
}
