#pragma once

#include <QValidator>

// Keeps control characters (IsControlCharacter) out of a line edit: tabs,
// line breaks and the other C0 and C1 codes, and the Unicode line and
// paragraph separators.
// Whatever is typed, pasted, dropped or inserted arrives without them, and
// the rest of the text stays exactly as it came (nothing is trimmed). A
// single line of text with them in it breaks the lists that show it.
class ControlCharacterValidator final : public QValidator
{
    Q_OBJECT

public:
    using QValidator::QValidator;

    // Leaves the control characters out of input and moves pos back by those
    // that stood before it; the rest is always acceptable.
    State validate(QString& input, int& pos) const override;
};
