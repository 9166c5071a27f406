#include "RenderConsole.h"

#include "ConsoleCapture.h"

#include <QTextStream>

void PrintLine(FILE* stream, QString text)
{
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    if (ConsoleCapture* capture = ConsoleCapture::current())
    {
        capture->add(stream, text);
        return;
    }
    QTextStream(stream) << text << Qt::endl;
}

void PrintFailure(const QString& message)
{
    PrintLine(stderr, QStringLiteral("calvex-qc-render: ") + message);
}
