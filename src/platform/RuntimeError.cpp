#include "platform/RuntimeError.h"

RuntimeError::RuntimeError(qint32 number, QString source, QString description)
    : std::runtime_error(description.toStdString())
    , m_number(number)
    , m_source(std::move(source))
    , m_description(std::move(description))
{}

void RaiseObjectNotSet(const QString& source)
{
    throw RuntimeError(ErrorNumber::ObjectNotSet, source,
                       QStringLiteral("Object variable or With block variable not set"));
}

QString RuntimeErrorDetail(const RuntimeError& error)
{
    if (error.source().isEmpty())
        return QStringLiteral("Run-time error %1").arg(error.number());
    return QStringLiteral("Run-time error %1 (%2)").arg(error.number()).arg(error.source());
}
