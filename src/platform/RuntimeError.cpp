#include "platform/RuntimeError.h"

RuntimeError::RuntimeError(qint32 number, QString source, QString description, QString detail)
    : std::runtime_error(description.toStdString())
    , m_number(number)
    , m_source(std::move(source))
    , m_description(std::move(description))
    , m_detail(std::move(detail))
{}

void RaiseObjectNotSet(const QString& source)
{
    throw RuntimeError(ErrorNumber::ObjectNotSet, source,
                       QStringLiteral("Object variable or With block variable not set"));
}
