#include "BatchMessageService.h"

#include "RenderConsole.h"

namespace
{
thread_local QString t_report;
}

void BatchMessageService::setReport(const QString& report)
{
    t_report = report;
}

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
    PrintFailure(t_report.isEmpty() ? text : t_report + QStringLiteral(": ") + text);
    return (style & 7) == MsgStyle::YesNo ? MsgAnswer::Yes : MsgAnswer::Ok;
}
