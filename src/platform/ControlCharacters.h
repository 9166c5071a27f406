#pragma once

#include <QChar>

// A character that has no place in a single line of text such as a report
// definition's name: tabs, line breaks and the other C0 and C1 codes, and
// the Unicode line and paragraph separators.
bool IsControlCharacter(QChar c);
