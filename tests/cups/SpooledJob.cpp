#include "SpooledJob.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

namespace
{
QString Run(const QString& program, const QStringList& arguments, int* exitCode = nullptr)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.waitForFinished(60000);
    if (exitCode)
        *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return QString::fromLocal8Bit(process.readAll());
}
} // namespace

SpooledJob::SpooledJob()
    : m_outputDir(qEnvironmentVariable("CALVEX_CUPS_PDF_DIR"))
{
    QDir dir(m_outputDir);
    if (!m_outputDir.isEmpty())
    {
        for (const QString& name : dir.entryList(QDir::Files))
            dir.remove(name);
    }
}

QString SpooledJob::queueName()
{
    return qEnvironmentVariable("CALVEX_CUPS_QUEUE");
}

QString SpooledJob::waitForPdf(const QString& workFolder, int timeoutMs)
{
    const bool postScript = qEnvironmentVariable("CALVEX_CUPS_OUTPUT") == QStringLiteral("ps");
    const QStringList filter{postScript ? QStringLiteral("*.ps") : QStringLiteral("*.pdf")};
    const QDeadlineTimer deadline(timeoutMs);
    QString file;
    qint64 lastSize = -1;
    while (!deadline.hasExpired())
    {
        // "lpstat -o" lists the jobs not finished yet.
        const bool pending = !Run(QStringLiteral("lpstat"), {QStringLiteral("-o"), queueName()}).trimmed().isEmpty();
        const QFileInfoList files = QDir(m_outputDir).entryInfoList(filter, QDir::Files, QDir::Time);
        if (!pending && !files.isEmpty())
        {
            // The backend has ended; a size that holds over one more look is the whole file.
            if (files.first().size() > 0 && files.first().size() == lastSize)
            {
                file = files.first().absoluteFilePath();
                break;
            }
            lastSize = files.first().size();
        }
        QThread::msleep(200);
    }
    if (file.isEmpty())
    {
        m_error = QStringLiteral("No output of the queue %1 in %2 ms.\n").arg(queueName()).arg(timeoutMs) +
                  Run(QStringLiteral("lpstat"), {QStringLiteral("-l"), QStringLiteral("-p"), queueName()}) +
                  Run(QStringLiteral("lpstat"),
                      {QStringLiteral("-W"), QStringLiteral("all"), QStringLiteral("-o"), queueName()});
        return QString();
    }
    if (!postScript)
        return file;

    const QString pdf = QDir(workFolder).filePath(QStringLiteral("spooled.pdf"));
    int exitCode = -1;
    const QString output = Run(QStringLiteral("ps2pdf"), {file, pdf}, &exitCode);
    if (exitCode != 0)
    {
        m_error = QStringLiteral("ps2pdf failed on the spooled PostScript: ") + output;
        return QString();
    }
    return pdf;
}
