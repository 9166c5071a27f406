#pragma once

#include "platform/ComponentFactory.h"

#include <QString>

// The suite's string server: the text of every message and run-time caption,
// looked up by its number. An unknown number gives the empty text.
class StringServer : public Component
{
public:
    static inline const QString ClassId = QStringLiteral("NorrixStringServer.NorrixStrings");

    virtual QString GetText(qint16 id) = 0;
};
