#pragma once

#include <QString>
#include <QStringList>

// One print job on the private CUPS server's PDF queue that run-cups.sh sets
// up (CALVEX_CUPS_QUEUE, CALVEX_CUPS_PDF_DIR, CALVEX_CUPS_OUTPUT): created
// before the job is printed, it empties the queue's output folder; after the
// job it waits for the scheduler to finish it and hands back the PDF that came
// out of the queue.
class SpooledJob
{
public:
    SpooledJob();

    // The queue's name; "" when the tests do not run under run-cups.sh.
    static QString queueName();

    // Waits until the queue has no unfinished job and its output file is
    // complete; returns the spooled PDF (with the file: device, the spooled
    // PostScript turned into PDF in workFolder), or "" after timeoutMs, with
    // the reason in error().
    QString waitForPdf(const QString& workFolder, int timeoutMs = 180000);
    QString error() const { return m_error; }

private:
    QString m_outputDir;
    QString m_error;
};
