#include "RunStatus.h"

#include <limits>

void RunStatus::meet(int status)
{
    m_value = worse(m_value, status);
}

int RunStatus::worse(int a, int b)
{
    return rank(b) > rank(a) ? b : a;
}

int RunStatus::rank(int status)
{
    switch (status)
    {
    case Done:
        return 0;
    case BadCommandLine:
        return std::numeric_limits<int>::max();
    case Failed:
        return std::numeric_limits<int>::max() - 1;
    default:
        // A finding: above Done, below a failure; by its number among findings.
        return status > 0 && status < std::numeric_limits<int>::max() - 1 ? status : 1;
    }
}
