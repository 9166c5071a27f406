#include "BatchMessageService.h"

#include "RenderConsole.h"

BatchMessageService::BatchMessageService()
    : m_previous(MessageService::installed())
{
    MessageService::install(this);
}

BatchMessageService::~BatchMessageService()
{
    MessageService::install(m_previous);
}

int BatchMessageService::show(const QString& text, int style, const QString& /*title*/, const QString& /*detail*/)
{
    PrintFailure(m_report.isEmpty() ? text : m_report + QStringLiteral(": ") + text);
    return (style & 7) == MsgStyle::YesNo ? MsgAnswer::Yes : MsgAnswer::Ok;
}
