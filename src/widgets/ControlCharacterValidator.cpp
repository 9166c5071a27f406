#include "widgets/ControlCharacterValidator.h"

bool ControlCharacterValidator::isControlCharacter(QChar c)
{
    switch (c.category())
    {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QValidator::State ControlCharacterValidator::validate(QString& input, int& pos) const
{
    QString kept;
    kept.reserve(input.size());
    int removedBeforePos = 0;
    for (qsizetype i = 0; i < input.size(); ++i)
    {
        if (!isControlCharacter(input.at(i)))
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
