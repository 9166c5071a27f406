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

QString RuntimeErrorDetail(const RuntimeError& error, const QString& whileDoing)
{
    QString text = error.source().isEmpty()
                       ? QStringLiteral("Run-time error %1").arg(error.number())
                       : QStringLiteral("Run-time error %1 (%2)").arg(error.number()).arg(error.source());
    if (!whileDoing.isEmpty())
        text += QStringLiteral(" while %1.").arg(whileDoing);
    if (!error.detail().trimmed().isEmpty())
        text += u'\n' + error.detail().trimmed();
    return text;
}
