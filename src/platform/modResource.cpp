#include "platform/modResource.h"

#include "platform/MessageService.h"
#include "platform/StringServer.h"

#include <memory>
#include <mutex>

namespace
{
std::unique_ptr<StringServer> objStrings;
// The batch renderer draws reports on several threads: the server is created
// once, by whichever asks first; its texts are only read after that. The
// server's own start may ask for a text (a setting it cannot read), on the
// same thread, hence a recursive lock.
std::recursive_mutex creation;

StringServer& strings()
{
    const std::lock_guard<std::recursive_mutex> lock(creation);
    if (!objStrings)
        objStrings = ComponentFactory::create<StringServer>(StringServer::ClassId);
    return *objStrings;
}
} // namespace

QString GetResourceText(qint16 id)
{
    const QString text = strings().GetText(id);
    if (text.isEmpty())
    {
        MsgBox(QStringLiteral("ResourceID is not found,  ") + QString::number(id), MsgStyle::OkOnly);
        return QString();
    }
    return text;
}

void ResetResourceServer()
{
    const std::lock_guard<std::recursive_mutex> lock(creation);
    objStrings.reset();
}
