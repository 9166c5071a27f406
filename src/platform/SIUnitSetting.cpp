#include "platform/SIUnitSetting.h"

#include "platform/Registry.h"
#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"

#include <QVariant>

bool ReadSIUnitSetting()
{
    QVariant value;
    try
    {
        value = ReadCommonValue(QStringLiteral("SI Unit"), false);
    }
    catch (const RuntimeError&)
    {
        // A site without the value reports in conventional units.
    }
    return WholeNumberOfZeroPrefixed(value) == 1;
}
