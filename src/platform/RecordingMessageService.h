#pragma once

#include "platform/MessageService.h"

#include <QList>
#include <QQueue>
#include <QString>

#include <functional>

// A message service for tests: keeps every box shown and answers from a
// script (the default button when the script is empty). Installs itself for
// its lifetime.
class RecordingMessageService final : public MessageService
{
public:
    struct Box
    {
        QString text;
        int style = 0;
        QString title;
        QString detail;
    };

    RecordingMessageService();
    ~RecordingMessageService() override;
    RecordingMessageService(const RecordingMessageService&) = delete;
    RecordingMessageService& operator=(const RecordingMessageService&) = delete;

    int show(const QString& text, int style, const QString& title, const QString& detail) override;

    void queueAnswer(int answer) { m_answers.enqueue(answer); }
    // Runs while the box is "open", e.g. to check which widget had the focus.
    void onShow(std::function<void(const Box&)> hook) { m_hook = std::move(hook); }

    const QList<Box>& boxes() const { return m_boxes; }
    int count() const { return int(m_boxes.size()); }
    const Box& last() const { return m_boxes.last(); }
    void clear() { m_boxes.clear(); }

private:
    MessageService* m_previous = nullptr;
    QList<Box> m_boxes;
    QQueue<int> m_answers;
    std::function<void(const Box&)> m_hook;
};
