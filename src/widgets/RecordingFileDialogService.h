#pragma once

#include "widgets/FileDialogService.h"

#include <QList>
#include <QQueue>
#include <QString>

#include <functional>
#include <optional>

// A file-dialog service for tests: keeps every request and answers from a
// script; with the script empty it cancels (answers ""). Installs itself for
// its lifetime.
class RecordingFileDialogService final : public FileDialogService
{
public:
    struct Request
    {
        QString caption;
        QString proposedPath;
        QString filter;
    };

    RecordingFileDialogService();
    ~RecordingFileDialogService() override;
    RecordingFileDialogService(const RecordingFileDialogService&) = delete;
    RecordingFileDialogService& operator=(const RecordingFileDialogService&) = delete;

    QString getSaveFileName(const QString& caption, const QString& proposedPath, const QString& filter) override;

    // The next dialog returns path ("" = cancel).
    void queueAnswer(const QString& path) { m_answers.enqueue(path); }
    // The next dialog accepts the proposed path as it is.
    void queueAcceptProposed() { m_answers.enqueue(std::nullopt); }
    // Runs while the dialog is "open".
    void onShow(std::function<void(const Request&)> hook) { m_hook = std::move(hook); }

    const QList<Request>& requests() const { return m_requests; }
    int count() const { return int(m_requests.size()); }
    const Request& last() const { return m_requests.last(); }
    void clear() { m_requests.clear(); }

private:
    FileDialogService* m_previous = nullptr;
    QList<Request> m_requests;
    QQueue<std::optional<QString>> m_answers;
    std::function<void(const Request&)> m_hook;
};
