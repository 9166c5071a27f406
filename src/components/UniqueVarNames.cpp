#include "components/UniqueVarNames.h"

QString UniqueVarNames::MakeUnique(const QString& name)
{
    const QString key = name.toCaseFolded();
    const auto found = m_counters.find(key);
    if (found == m_counters.end())
    {
        m_counters.insert(key, 0);
        return name;
    }
    ++found.value();
    return name + QStringLiteral(" (") + QString::number(found.value()) + QLatin1Char(')');
}
