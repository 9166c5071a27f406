#pragma once

#include "platform/MessageService.h"

#include <QString>

// The message boxes of the report layouts while --all runs (a chart left out
// for want of results, a chart that could not be drawn): one line on stderr,
// "calvex-qc-render: ", the report it is about ("QC001, PF "Spirometry": ")
// and the box's text, so that a night's run says which report each line is
// about. A box answers with its default button, as the command-line tools'
// boxes do; it does not change the run's status (the report is written).
//
// Installed while the object lives; what was installed before comes back.
class BatchMessageService final : public MessageService
{
public:
    BatchMessageService();
    ~BatchMessageService() override;
    BatchMessageService(const BatchMessageService&) = delete;
    BatchMessageService& operator=(const BatchMessageService&) = delete;

    // The report of the boxes that follow on this thread, as the run's lines
    // name it: the thread that prepares the reports and each writer of the
    // night (ReportPipeline) are on a report of their own.
    static void setReport(const QString& report);

    int show(const QString& text, int style, const QString& title, const QString& detail) override;

private:
    MessageService* m_previous;
};
