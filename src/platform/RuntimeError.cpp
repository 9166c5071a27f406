#include "platform/RuntimeError.h"

RuntimeError::RuntimeError(qint32 number, QString source, QString description)
    : std::runtime_error(description.toStdString())
    , m_number(number)
    , m_source(std::move(source))
    , m_description(std::move(description))
{}
