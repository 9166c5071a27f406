#include "platform/ScopedComponentRegistration.h"

ScopedComponentRegistration::ScopedComponentRegistration(QString classId, ComponentFactory::Creator creator)
    : m_classId(std::move(classId))
{
    m_previous = ComponentFactory::registeredCreator(m_classId);
    ComponentFactory::registerClass(m_classId, std::move(creator));
}

ScopedComponentRegistration::~ScopedComponentRegistration()
{
    if (m_previous)
        ComponentFactory::registerClass(m_classId, m_previous);
    else
        ComponentFactory::unregisterClass(m_classId);
}
