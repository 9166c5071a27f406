#include "platform/RegistryReadBatch.h"

namespace
{
thread_local const RegistryReadBatch* t_current = nullptr;
}

RegistryReadBatch::RegistryReadBatch()
    : m_outer(t_current)
#ifndef Q_OS_WIN
    , m_file(m_outer ? m_outer->m_file : RegistryFile::loadActive())
#endif
{
    t_current = this;
}

RegistryReadBatch::~RegistryReadBatch()
{
    t_current = m_outer;
}

const RegistryReadBatch* RegistryReadBatch::current()
{
    return t_current;
}
