#include "platform/MessageService.h"

#include <QCoreApplication>
#include <QTextStream>

namespace
{
// Without a window toolkit (command-line tools), a box is a line on stderr,
// its detail in brackets after the text, and the answer is the default button.
class StderrMessageService final : public MessageService
{
public:
    int show(const QString& text, int style, const QString& title, const QString& detail) override
    {
        QTextStream err(stderr);
        const QString caption = title.isEmpty() ? QCoreApplication::applicationName() : title;
        err << caption << ": " << text;
        if (!detail.isEmpty())
            err << " (" << detail << ')';
        err << Qt::endl;
        return (style & 7) == MsgStyle::YesNo ? MsgAnswer::Yes : MsgAnswer::Ok;
    }
};

StderrMessageService g_stderrService;
MessageService* g_default = &g_stderrService;
MessageService* g_installed = nullptr;
} // namespace

MessageService& MessageService::current()
{
    return g_installed ? *g_installed : *g_default;
}

void MessageService::install(MessageService* service)
{
    g_installed = service;
}

MessageService* MessageService::installed()
{
    return g_installed;
}

void MessageService::setDefault(MessageService* service)
{
    g_default = service ? service : &g_stderrService;
}

int MsgBox(const QString& text, int style, const QString& title, const QString& detail)
{
    return MessageService::current().show(text, style, title, detail);
}
