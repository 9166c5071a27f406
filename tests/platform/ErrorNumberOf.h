#pragma once

#include "platform/RuntimeError.h"

#include <functional>

// The number of the run-time error a call raises, 0 when it raises none.
inline qint32 ErrorNumberOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const RuntimeError& error)
    {
        return error.number();
    }
    return 0;
}
