#include "platform/FileWriteError.h"

FileWriteError::FileWriteError(QString fileName, qint32 code, QString reason)
    : RuntimeError(code, QStringLiteral("WholeFileWriter"), std::move(reason))
    , m_fileName(std::move(fileName))
{}
