#include "ReportPipeline.h"

#include "RenderConsole.h"
#include "RunStatus.h"
#include "common/TestMain.h"
#include "output/PdfFileTarget.h"

#include <QFile>
#include <QTest>
#include <QThread>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace
{
// A stream of the renderer's lines that the test reads back.
class LineFile
{
public:
    LineFile()
        : m_file(std::tmpfile())
    {}
    ~LineFile()
    {
        if (m_file)
            std::fclose(m_file);
    }
    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    FILE* stream() const { return m_file; }

    QStringList lines() const
    {
        std::fflush(m_file);
        std::rewind(m_file);
        QFile file;
        if (!file.open(m_file, QIODevice::ReadOnly))
            return {QStringLiteral("(the line file cannot be read)")};
        QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        if (!lines.isEmpty() && lines.last().isEmpty())
            lines.removeLast();
        return lines;
    }

private:
    FILE* m_file;
};

// Waits up to five seconds for flag.
bool WaitFor(const std::atomic<bool>& flag)
{
    for (int i = 0; i < 500 && !flag.load(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return flag.load();
}
} // namespace

// The night's pipeline: reports drawn on writer threads side by side, each
// writer on a PDF target of its own, and the run's lines in the run's order
// whatever order the reports are finished in.
class TestReportPipeline : public QObject
{
    Q_OBJECT

private slots:
    void linesKeepTheRunsOrderWhileReportsAreDrawnSideBySide()
    {
        LineFile out;
        std::atomic<bool> secondStarted = false;
        std::atomic<bool> firstSawSecond = false;
        QThread* const preparing = QThread::currentThread();
        std::atomic<bool> onWriters = true;
        int status = -1;
        {
            ReportPipeline pipeline(2);
            PrintLine(out.stream(), QStringLiteral("prepared 1"));
            pipeline.handOver(PreparedReport(), [&](PreparedReport&, PdfFileTarget&) {
                // The first report is still drawn while the second one is:
                // it ends after it, and its lines come before its lines all the same.
                firstSawSecond = WaitFor(secondStarted);
                onWriters = onWriters && QThread::currentThread() != preparing;
                PrintLine(out.stream(), QStringLiteral("written 1"));
                return RunStatus::Done;
            });
            PrintLine(out.stream(), QStringLiteral("prepared 2"));
            pipeline.handOver(PreparedReport(), [&](PreparedReport&, PdfFileTarget&) {
                secondStarted = true;
                onWriters = onWriters && QThread::currentThread() != preparing;
                PrintLine(out.stream(), QStringLiteral("written 2"));
                return RunStatus::Done;
            });
            PrintLine(out.stream(), QStringLiteral("skipped 3"));
            status = pipeline.finish();
            // After the run, lines are printed at once again.
            PrintLine(out.stream(), QStringLiteral("after the run"));
        }
        QVERIFY(firstSawSecond);
        QVERIFY(onWriters);
        QCOMPARE(status, RunStatus::Done);
        QCOMPARE(out.lines(), QStringList({QStringLiteral("prepared 1"), QStringLiteral("written 1"),
                                           QStringLiteral("prepared 2"), QStringLiteral("written 2"),
                                           QStringLiteral("skipped 3"), QStringLiteral("after the run")}));
    }

    void eachWriterDrawsOnATargetOfItsOwn()
    {
        std::mutex mutex;
        std::map<QThread*, PdfFileTarget*> targets;
        bool sameTargetOnEachThread = true;
        {
            ReportPipeline pipeline(2);
            for (int i = 0; i < 12; ++i)
            {
                pipeline.handOver(PreparedReport(), [&](PreparedReport&, PdfFileTarget& target) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(5));
                    const std::lock_guard lock(mutex);
                    const auto [known, added] = targets.emplace(QThread::currentThread(), &target);
                    sameTargetOnEachThread = sameTargetOnEachThread && known->second == &target;
                    return RunStatus::Done;
                });
            }
            QCOMPARE(pipeline.finish(), RunStatus::Done);
        }
        QVERIFY(sameTargetOnEachThread);
        QCOMPARE(int(targets.size()), 2);
        QVERIFY(targets.begin()->second != std::next(targets.begin())->second);
    }

    void theRunsStatusIsTheWorstOfItsReports()
    {
        LineFile out;
        ReportPipeline pipeline(3);
        pipeline.handOver(PreparedReport(), [](PreparedReport&, PdfFileTarget&) { return RunStatus::Done; });
        pipeline.handOver(PreparedReport(), [](PreparedReport&, PdfFileTarget&) { return RunStatus::RulesBroken; });
        pipeline.handOver(PreparedReport(), [&](PreparedReport&, PdfFileTarget&) -> int {
            PrintLine(out.stream(), QStringLiteral("before the failure"));
            throw std::runtime_error("out of memory");
        });
        pipeline.handOver(PreparedReport(), [&](PreparedReport&, PdfFileTarget&) {
            PrintLine(out.stream(), QStringLiteral("the next report"));
            return RunStatus::Done;
        });
        QCOMPARE(pipeline.finish(), RunStatus::Failed);
        // A report that failed does not stop the run.
        QCOMPARE(out.lines(), QStringList({QStringLiteral("before the failure"), QStringLiteral("the next report")}));
        // finish is said once; a second call tells the same status.
        QCOMPARE(pipeline.finish(), RunStatus::Failed);
    }

    void theWritersUseTheMachinesCores()
    {
        const int writers = ReportPipeline::writersForThisMachine();
        QVERIFY(writers >= 1);
        QVERIFY(writers <= 4);
        QCOMPARE(writers, std::min(std::max(QThread::idealThreadCount(), 1), 4));
    }
};

CALVEX_TEST(TestReportPipeline)
#include "TestReportPipeline.moc"
