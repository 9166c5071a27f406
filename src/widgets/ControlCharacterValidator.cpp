#include "widgets/ControlCharacterValidator.h"

#include "platform/ControlCharacters.h"

QValidator::State ControlCharacterValidator::validate(QString& input, int& pos) const
{
    QString kept;
    kept.reserve(input.size());
    int removedBeforePos = 0;
    for (qsizetype i = 0; i < input.size(); ++i)
    {
        if (!IsControlCharacter(input.at(i)))
            kept.append(input.at(i));
        else if (i < pos)
            ++removedBeforePos;
    }
    if (kept.size() != input.size())
    {
        input = kept;
        pos -= removedBeforePos;
    }
    return Acceptable;
}
