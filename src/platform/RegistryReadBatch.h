#pragma once

#include "platform/RegistryFile.h"

// Registry values read while one of these lives come from one reading of the
// registry file: a set of settings read together is consistent, and the file
// is read and parsed once for the set instead of once for each value. Reads
// after it ends see the file as it is then. A batch begun inside another one
// reads what the outer one read. With the system registry (Windows) it
// changes nothing.
class RegistryReadBatch
{
public:
    RegistryReadBatch();
    ~RegistryReadBatch();
    RegistryReadBatch(const RegistryReadBatch&) = delete;
    RegistryReadBatch& operator=(const RegistryReadBatch&) = delete;

    // The batch of this thread, or null.
    static const RegistryReadBatch* current();
    const RegistryFile& file() const { return m_file; }

private:
    const RegistryReadBatch* m_outer;
    RegistryFile m_file;
};
