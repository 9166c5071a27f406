#include "widgets/RecordingFileDialogService.h"

RecordingFileDialogService::RecordingFileDialogService()
    : m_previous(FileDialogService::installed())
{
    FileDialogService::install(this);
}

RecordingFileDialogService::~RecordingFileDialogService()
{
    FileDialogService::install(m_previous);
}

QString RecordingFileDialogService::getSaveFileName(const QString& caption, const QString& proposedPath,
                                                    const QString& filter)
{
    m_requests.append({caption, proposedPath, filter});
    if (m_hook)
        m_hook(m_requests.last());
    if (m_answers.isEmpty())
        return QString();
    const std::optional<QString> answer = m_answers.dequeue();
    return answer ? *answer : proposedPath;
}
