#pragma once

#include <QString>

#include <cstdio>

// The renderer's lines on its standard streams: each message is one line
// (line breaks inside it become blanks), flushed at once, so that the lines of
// a long run are seen as they come and stay in order. While a ConsoleCapture
// is installed on the thread (a report of the night's pipeline), the line is
// kept there and printed when the reports before it are done.

void PrintLine(FILE* stream, QString text);

// One line on stderr: "calvex-qc-render: " and the message.
void PrintFailure(const QString& message);
