#include "platform/modResource.h"

#include "platform/MessageService.h"
#include "platform/StringServer.h"

#include <memory>

namespace
{
std::unique_ptr<StringServer> objStrings;
bool blnStringsCreated = false;
} // namespace

QString GetResourceText(qint16 id)
{
    if (!blnStringsCreated)
    {
        objStrings = ComponentFactory::create<StringServer>(StringServer::ClassId);
        blnStringsCreated = true;
    }
    const QString text = objStrings->GetText(id);
    if (text.isEmpty())
    {
        MsgBox(QStringLiteral("ResourceID is not found,  ") + QString::number(id), MsgStyle::OkOnly);
        return QString();
    }
    return text;
}

void ResetResourceServer()
{
    objStrings.reset();
    blnStringsCreated = false;
}
