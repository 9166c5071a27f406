#include "platform/QCRulesSetting.h"

#include "platform/Registry.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"

#include <QVariant>

QString ReadQCRulesSetting()
{
    try
    {
        return TextOf(ReadCommonValue(QStringLiteral("QC Rules"), false)).trimmed();
    }
    catch (const RuntimeError&)
    {
        // A site without the value checks no rules.
        return QString();
    }
}
