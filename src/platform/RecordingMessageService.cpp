#include "platform/RecordingMessageService.h"

RecordingMessageService::RecordingMessageService()
    : m_previous(MessageService::installed())
{
    MessageService::install(this);
}

RecordingMessageService::~RecordingMessageService()
{
    MessageService::install(m_previous);
}

int RecordingMessageService::show(const QString& text, int style, const QString& title, const QString& detail)
{
    m_boxes.append({text, style, title, detail});
    if (m_hook)
        m_hook(m_boxes.last());
    if (!m_answers.isEmpty())
        return m_answers.dequeue();
    return (style & 7) == MsgStyle::YesNo ? MsgAnswer::Yes : MsgAnswer::Ok;
}
