#include "RenderSession.h"

#include "RenderConsole.h"
#include "RenderFailure.h"
#include "platform/RuntimeError.h"

RenderSession::RenderSession()
    : m_engine(ComponentFactory::create<CalcEngine>(CalcEngine::ClassId))
{
    try
    {
        check();
    }
    catch (...)
    {
        // A refused start closes the session too, as the program's does.
        close();
        throw;
    }
}

RenderSession::~RenderSession()
{
    close();
}

void RenderSession::check()
{
    const qint32 status = m_engine->OpenApplication(CalcEngine::ApplicationNumber);
    if (status != 0)
        throw RenderFailure{QStringLiteral("the diagnostics suite refused the session of application %1 (status %2)")
                                .arg(CalcEngine::ApplicationNumber)
                                .arg(status),
                            false};
    if (!m_engine->HasRight(CalcEngine::RightRunReports))
        throw RenderFailure{m_engine->MissingRightReason(CalcEngine::RightRunReports), false};
    const qint32 start = m_engine->StartCheck();
    if (start != 0)
    {
        const QString reason = m_engine->StartCheckReason();
        throw RenderFailure{reason.isEmpty() ? QStringLiteral("the diagnostics suite does not allow QC reports now "
                                                              "(start check %1)")
                                                   .arg(start)
                                             : reason,
                            false};
    }
}

void RenderSession::close() noexcept
{
    // The report is written, or its failure told, by now: a close that
    // cannot be logged is one more line, not a failed report.
    try
    {
        m_engine->CloseApplication(CalcEngine::ApplicationNumber, false);
    }
    catch (const RuntimeError& error)
    {
        PrintFailure(error.description());
    }
}
