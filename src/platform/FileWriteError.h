#pragma once

#include "platform/RuntimeError.h"

#include <QString>

// A file that could not be written: which file, and why in the system's
// words. The number is the system's error code (0 when the system named
// none), the description the reason, e.g. "No space left on device".
class FileWriteError : public RuntimeError
{
public:
    FileWriteError(QString fileName, qint32 code, QString reason);

    const QString& fileName() const { return m_fileName; }

private:
    QString m_fileName;
};
