#include "ConsoleCapture.h"

#include "RenderConsole.h"

#include <utility>

namespace
{
thread_local ConsoleCapture* t_capture = nullptr;
}

ConsoleCapture* ConsoleCapture::current()
{
    return t_capture;
}

ConsoleCapture::Installed::Installed(ConsoleCapture* capture)
    : m_previous(t_capture)
{
    t_capture = capture;
}

ConsoleCapture::Installed::~Installed()
{
    t_capture = m_previous;
}

void ConsoleCapture::print()
{
    const QList<Line> lines = std::exchange(m_lines, {});
    const Installed printed(nullptr);
    for (const Line& line : lines)
        PrintLine(line.stream, line.text);
}
