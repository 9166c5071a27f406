#pragma once

#include "components/CalcEngine.h"

#include <memory>

// The renderer's session with the suite's calculation engine, asked as the
// program's start-up asks it: the session of application 6, right 500 (run
// QC reports) and the start check, which refuses a disabled user and a
// database that cannot be used. A refusal throws RenderFailure with the
// engine's reason as its one line. The session is closed, as at the
// program's end, when the object goes.
class RenderSession
{
public:
    RenderSession();
    ~RenderSession();
    RenderSession(const RenderSession&) = delete;
    RenderSession& operator=(const RenderSession&) = delete;

private:
    // Opens the session and asks right 500 and the start check; throws
    // RenderFailure with the reason when the engine refuses.
    void check();
    // The close notification; a failure to log it is told on stderr.
    void close() noexcept;

    std::unique_ptr<CalcEngine> m_engine;
};
