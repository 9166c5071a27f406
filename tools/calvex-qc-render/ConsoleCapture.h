#pragma once

#include <QList>
#include <QString>

#include <cstdio>

// Lines of the renderer kept back instead of printed: while a capture is
// installed on a thread, PrintLine on that thread adds its line here. The
// night's pipeline (ReportPipeline) gives each report its own capture, so
// that reports drawn side by side still say their lines in the run's order.
class ConsoleCapture final
{
public:
    struct Line
    {
        FILE* stream;
        QString text;
    };

    // The capture installed on this thread; null when lines are printed.
    static ConsoleCapture* current();

    // Installs capture on this thread while the guard lives (null: lines are
    // printed); the one installed before comes back.
    class Installed final
    {
    public:
        explicit Installed(ConsoleCapture* capture);
        ~Installed();
        Installed(const Installed&) = delete;
        Installed& operator=(const Installed&) = delete;

    private:
        ConsoleCapture* m_previous;
    };

    void add(FILE* stream, const QString& text) { m_lines.append(Line{stream, text}); }
    // Prints the lines kept so far, in their order, and forgets them.
    void print();

private:
    QList<Line> m_lines;
};
