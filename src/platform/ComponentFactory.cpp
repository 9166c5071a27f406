#include "platform/ComponentFactory.h"

namespace
{
QHash<QString, ComponentFactory::Creator>& registry()
{
    static QHash<QString, ComponentFactory::Creator> classes;
    return classes;
}
} // namespace

void ComponentFactory::registerClass(const QString& classId, Creator creator)
{
    registry().insert(classId, std::move(creator));
}

void ComponentFactory::unregisterClass(const QString& classId)
{
    registry().remove(classId);
}

bool ComponentFactory::isRegistered(const QString& classId)
{
    return registry().contains(classId);
}

std::unique_ptr<Component> ComponentFactory::createComponent(const QString& classId)
{
    const auto it = registry().constFind(classId);
    if (it == registry().constEnd() || !*it)
        throwCannotCreate(classId);
    std::unique_ptr<Component> object = (*it)();
    if (!object)
        throwCannotCreate(classId);
    return object;
}

void ComponentFactory::throwCannotCreate(const QString& classId)
{
    throw RuntimeError(ErrorNumber::CannotCreateComponent, classId,
                       QStringLiteral("Component '%1' can't create object").arg(classId));
}

ComponentFactory::Creator ComponentFactory::registeredCreator(const QString& classId)
{
    return registry().value(classId);
}
