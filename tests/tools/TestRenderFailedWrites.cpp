#include "RenderFixture.h"
#include "common/ScopedTmpfs.h"
#include "common/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QTest>

#include <memory>

namespace
{
// Spirometry of QC001 over a period; the first half of 2024 has three pages.
QStringList Request(const QString& to = QStringLiteral("06/30/2024"))
{
    return {QStringLiteral("--tab"),     QStringLiteral("PF"),
            QStringLiteral("--report"),  QStringLiteral("Spirometry"),
            QStringLiteral("--subject"), QStringLiteral("QC001"),
            QStringLiteral("--from"),    QStringLiteral("01/01/2024"),
            QStringLiteral("--to"),      to};
}

QByteArray Contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString Line(const QString& message)
{
    return QStringLiteral("calvex-qc-render: ") + message + QLatin1Char('\n');
}
} // namespace

// The renderer writes its files whole or not at all: on a full disk or a
// read-only folder it says why in one line and exits 1, and the files that
// were there stay as they were, with no partial file beside them. Its stderr
// holds its own lines only, whatever the environment lacks.
class TestRenderFailedWrites : public QObject
{
    Q_OBJECT

    std::unique_ptr<RenderFixture> m_fixture;

    RenderFixture::Result renderPdf(const QString& file, const QString& to = QStringLiteral("06/30/2024")) const
    {
        return m_fixture->render(Request(to) << QStringLiteral("--out") << file);
    }

    RenderFixture::Result renderPng(const QString& folder, const QString& to = QStringLiteral("06/30/2024")) const
    {
        return m_fixture->render(Request(to) << QStringLiteral("--png-dir") << folder);
    }

    // Every page file of a folder with its bytes.
    static QMap<QString, QByteArray> PageFiles(const QString& folder)
    {
        QMap<QString, QByteArray> pages;
        for (const QString& name : QDir(folder).entryList(QDir::Files))
            pages.insert(name, Contents(QDir(folder).filePath(name)));
        return pages;
    }

private slots:
    void initTestCase() { m_fixture = std::make_unique<RenderFixture>(); }
    void cleanupTestCase() { m_fixture.reset(); }

    void aFullDiskKeepsTheEarlierPdf()
    {
        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no full file system to test on: ") + disk.whyNot()));
        const QString file = disk.filePath(QStringLiteral("q.pdf"));
        const RenderFixture::Result earlier = renderPdf(file, QStringLiteral("03/31/2024"));
        QCOMPARE(earlier.err, QString());
        QCOMPARE(earlier.exitCode, 0);
        const QByteArray earlierBytes = Contents(file);
        QVERIFY(earlierBytes.endsWith("%%EOF\n"));
        QVERIFY(disk.fill());
        const QStringList before = disk.entries();

        const RenderFixture::Result result = renderPdf(file);

        QCOMPARE(result.err, Line(QStringLiteral("cannot write %1: No space left on device").arg(file)));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.out, QString());
        QVERIFY(Contents(file) == earlierBytes);
        QCOMPARE(disk.entries(), before);
    }

    void aFullDiskKeepsTheEarlierPngPages()
    {
        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no full file system to test on: ") + disk.whyNot()));
        const QString folder = disk.filePath(QStringLiteral("pages"));
        const RenderFixture::Result earlier = renderPng(folder, QStringLiteral("03/31/2024"));
        QCOMPARE(earlier.err, QString());
        QCOMPARE(earlier.exitCode, 0);
        const QMap<QString, QByteArray> earlierPages = PageFiles(folder);
        QVERIFY(earlierPages.contains(QStringLiteral("page-001.png")));
        QVERIFY(disk.fill());
        const QStringList before = disk.entries();

        const RenderFixture::Result result = renderPng(folder);

        QCOMPARE(result.err, Line(QStringLiteral("cannot write %1: No space left on device")
                                      .arg(QDir(folder).filePath(QStringLiteral("page-001.png")))));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.out, QString());
        QVERIFY(PageFiles(folder) == earlierPages);
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList(earlierPages.keys()));
        QCOMPARE(disk.entries(), before);
    }

    void aReadOnlyFolderKeepsTheEarlierFiles()
    {
        ScopedTmpfs disk(1024 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no read-only file system to test on: ") + disk.whyNot()));
        const QString file = disk.filePath(QStringLiteral("q.pdf"));
        const QString folder = disk.filePath(QStringLiteral("pages"));
        QCOMPARE(renderPdf(file, QStringLiteral("03/31/2024")).exitCode, 0);
        QCOMPARE(renderPng(folder, QStringLiteral("03/31/2024")).exitCode, 0);
        const QByteArray earlierBytes = Contents(file);
        const QMap<QString, QByteArray> earlierPages = PageFiles(folder);
        // Root writes into any folder: read-only it is the file system's own doing.
        QVERIFY(disk.remountReadOnly());
        const QStringList before = disk.entries();

        const RenderFixture::Result pdf = renderPdf(file);
        QCOMPARE(pdf.err, Line(QStringLiteral("cannot write %1: Read-only file system").arg(file)));
        QCOMPARE(pdf.exitCode, 1);
        QCOMPARE(pdf.out, QString());

        const QString fresh = disk.filePath(QStringLiteral("new.pdf"));
        const RenderFixture::Result newPdf = renderPdf(fresh);
        QCOMPARE(newPdf.err, Line(QStringLiteral("cannot write %1: Read-only file system").arg(fresh)));
        QCOMPARE(newPdf.exitCode, 1);

        const RenderFixture::Result png = renderPng(folder);
        QCOMPARE(png.err, Line(QStringLiteral("cannot write %1: Read-only file system")
                                   .arg(QDir(folder).filePath(QStringLiteral("page-001.png")))));
        QCOMPARE(png.exitCode, 1);

        QVERIFY(Contents(file) == earlierBytes);
        QVERIFY(PageFiles(folder) == earlierPages);
        QCOMPARE(disk.entries(), before);
    }

    void stderrHoldsNothingOfQtsOwn()
    {
        // No display, no runtime folder, no home, no locale: what a scheduled
        // job may well be started with.
        QProcessEnvironment bare;
        bare.insert(QStringLiteral("PATH"), QStringLiteral("/usr/local/bin:/usr/bin:/bin"));
        bare.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        bare.insert(QStringLiteral("NORRIX_REGISTRY"), m_fixture->registry().path());
        const QString file = m_fixture->path(QStringLiteral("bare.pdf"));
        const QString folder = m_fixture->path(QStringLiteral("bare-pages"));

        const RenderFixture::Result pdf = m_fixture->render(Request() << QStringLiteral("--out") << file, bare);
        QCOMPARE(pdf.err, QString());
        QCOMPARE(pdf.exitCode, 0);
        QCOMPARE(pdf.out, QStringLiteral("QC report written to %1 (3 pages)\n").arg(file));

        const RenderFixture::Result png = m_fixture->render(Request() << QStringLiteral("--png-dir") << folder, bare);
        QCOMPARE(png.err, QString());
        QCOMPARE(png.exitCode, 0);

        // A failure is its one line, nothing besides.
        const QString missing = m_fixture->path(QStringLiteral("missing/bare.pdf"));
        const RenderFixture::Result failed = m_fixture->render(Request() << QStringLiteral("--out") << missing, bare);
        QCOMPARE(failed.err, Line(QStringLiteral("cannot write %1: No such file or directory").arg(missing)));
        QCOMPARE(failed.exitCode, 1);
    }
};

CALVEX_TEST(TestRenderFailedWrites)
#include "TestRenderFailedWrites.moc"
