#pragma once

#include "platform/ComponentFactory.h"

#include <QString>

// Registers a creator for the lifetime of a scope and puts back what was
// registered before (tests swap in fakes this way).
class ScopedComponentRegistration
{
public:
    ScopedComponentRegistration(QString classId, ComponentFactory::Creator creator);
    ~ScopedComponentRegistration();
    ScopedComponentRegistration(const ScopedComponentRegistration&) = delete;
    ScopedComponentRegistration& operator=(const ScopedComponentRegistration&) = delete;

private:
    QString m_classId;
    ComponentFactory::Creator m_previous;
};
