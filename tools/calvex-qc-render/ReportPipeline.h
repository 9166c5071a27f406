#pragma once

#include "ConsoleCapture.h"
#include "output/PreparedReport.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

class PdfFileTarget;

// The drawing of a night's PDF files on writer threads, side by side with the
// thread that prepares the reports: while one report is drawn and its PDF
// document compressed and given its fonts, the next ones are read from the
// store and drawn on another core. Each writer has a PDF file target of its
// own (its fonts set up once for all its documents); the reports are handed
// out in the run's order to whichever writer is free.
//
// The run's lines stay in the run's order: what the preparing thread prints
// is kept back as the current entry; handOver ends the entry with the
// report's drawing, whose lines (the file written, a failure, a chart left
// out) follow it, and starts the next entry. An entry is printed once it and
// every entry before it are complete.
//
// At most twice as many reports as writers wait to be drawn: handOver waits
// for a writer beyond that, so a long night holds few reports in memory.
class ReportPipeline final
{
public:
    // Draws the report on the writer's target; returns the report's status
    // (RunStatus). An exception that leaves it is a failure of the report,
    // said on stderr.
    using Work = std::function<int(PreparedReport& report, PdfFileTarget& target)>;

    // Starts writers threads (at least one) and keeps back this thread's lines.
    explicit ReportPipeline(int writers);
    // Waits for the reports handed over (finish).
    ~ReportPipeline();
    ReportPipeline(const ReportPipeline&) = delete;
    ReportPipeline& operator=(const ReportPipeline&) = delete;

    // The writers to use on this machine: one a core, at most four.
    static int writersForThisMachine();

    // Hands report to the next free writer and starts the next entry.
    void handOver(PreparedReport report, Work work);
    // Waits for every report, prints every entry and ends the writers; this
    // thread's lines are printed at once again. Returns the worst status of
    // the reports drawn.
    int finish();

private:
    struct Entry
    {
        ConsoleCapture lines;
        bool complete = false;
        int status = 0;
    };

    struct Job
    {
        std::shared_ptr<Entry> entry;
        PreparedReport report;
        Work work;
    };

    void startEntry();
    void write();
    // Prints complete entries at the front; with the lock held.
    void printFront(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<Entry>> m_entries; // in the run's order
    std::deque<Job> m_jobs;                       // waiting for a writer
    std::shared_ptr<Entry> m_current;             // this thread's lines now
    std::optional<ConsoleCapture::Installed> m_capture;
    std::vector<std::thread> m_writers;
    std::size_t m_queueLimit = 2;
    bool m_stopping = false;
    bool m_finished = false;
    int m_status = 0;
};
