#include "platform/ControlCharacters.h"

bool IsControlCharacter(QChar c)
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
