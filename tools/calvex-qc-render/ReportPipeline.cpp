#include "ReportPipeline.h"

#include "RenderConsole.h"
#include "RenderOutput.h"
#include "RunStatus.h"
#include "output/PdfFileTarget.h"

#include <QThread>

#include <algorithm>
#include <exception>

ReportPipeline::ReportPipeline(int writers)
{
    const int count = std::max(writers, 1);
    m_queueLimit = std::size_t(2 * count);
    startEntry();
    m_writers.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i)
        m_writers.emplace_back([this] { write(); });
}

ReportPipeline::~ReportPipeline()
{
    finish();
}

int ReportPipeline::writersForThisMachine()
{
    return std::clamp(QThread::idealThreadCount(), 1, 4);
}

void ReportPipeline::startEntry()
{
    m_current = std::make_shared<Entry>();
    m_entries.push_back(m_current);
    m_capture.reset();
    m_capture.emplace(&m_current->lines);
}

void ReportPipeline::handOver(PreparedReport report, Work work)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_jobs.size() < m_queueLimit; });
    m_jobs.push_back(Job{m_current, std::move(report), std::move(work)});
    startEntry();
    m_changed.notify_all();
    printFront(lock);
}

void ReportPipeline::printFront(std::unique_lock<std::mutex>& lock)
{
    // The entries are printed outside the lock: writers go on meanwhile.
    std::vector<std::shared_ptr<Entry>> ready;
    while (!m_entries.empty() && m_entries.front()->complete)
    {
        ready.push_back(m_entries.front());
        m_status = RunStatus::worse(m_status, m_entries.front()->status);
        m_entries.pop_front();
    }
    lock.unlock();
    for (const std::shared_ptr<Entry>& entry : ready)
        entry->lines.print();
    lock.lock();
}

int ReportPipeline::finish()
{
    if (m_finished)
        return m_status;
    m_finished = true;
    {
        std::unique_lock lock(m_mutex);
        m_current->complete = true;
        m_stopping = true;
        m_changed.notify_all();
    }
    for (std::thread& writer : m_writers)
        writer.join();
    m_writers.clear();
    m_capture.reset();
    std::unique_lock lock(m_mutex);
    printFront(lock);
    return m_status;
}

void ReportPipeline::write()
{
    // Made and ended on this thread: its fonts are this thread's.
    const std::unique_ptr<PdfFileTarget> target = NewPdfTarget();
    for (;;)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
        if (m_jobs.empty())
            return;
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        m_changed.notify_all();
        lock.unlock();

        int status = RunStatus::Done;
        {
            const ConsoleCapture::Installed capture(&job.entry->lines);
            try
            {
                status = job.work(job.report, *target);
            }
            catch (const std::exception& error)
            {
                PrintFailure(QString::fromLocal8Bit(error.what()));
                status = RunStatus::Failed;
            }
            catch (...)
            {
                // Nothing may leave a writer: the run would end unannounced.
                PrintFailure(QStringLiteral("a report could not be drawn"));
                status = RunStatus::Failed;
            }
        }
        // The report's data are released here, not with the lock held.
        job.report = PreparedReport();

        lock.lock();
        job.entry->status = status;
        job.entry->complete = true;
        m_changed.notify_all();
    }
}
