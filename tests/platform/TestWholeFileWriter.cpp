#include "common/ScopedTmpfs.h"
#include "common/TestMain.h"
#include "platform/FileWriteError.h"
#include "platform/SystemError.h"
#include "platform/WholeFileWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <functional>

namespace
{
QByteArray Contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

bool Put(const QString& fileName, const QByteArray& contents)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.flush();
}

// Runs write and returns the error it threw; a test failure when it threw none.
FileWriteError Failure(const std::function<void()>& write)
{
    try
    {
        write();
    }
    catch (const FileWriteError& error)
    {
        return error;
    }
    return FileWriteError(QString(), 0, QStringLiteral("<no error was thrown>"));
}
} // namespace

// Files written whole or not at all, on real file systems: a full tmpfs and a
// read-only one where the tests may mount them.
class TestWholeFileWriter : public QObject
{
    Q_OBJECT

private slots:
    void filesAreWrittenAndReplaced()
    {
        QTemporaryDir dir;
        const QString a = dir.filePath(QStringLiteral("a.bin"));
        const QString b = dir.filePath(QStringLiteral("b.bin"));
        QVERIFY(Put(a, QByteArray(100000, 'o')));
        WholeFileWriter files;
        files.add(a, QByteArray("new a"));
        files.add(b, QByteArray(70000, 'b'));
        files.write();
        QCOMPARE(Contents(a), QByteArray("new a"));
        QCOMPARE(Contents(b), QByteArray(70000, 'b'));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList({QStringLiteral("a.bin"), QStringLiteral("b.bin")}));
        // The set is used up.
        QVERIFY(Put(a, QByteArray("kept")));
        files.write();
        QCOMPARE(Contents(a), QByteArray("kept"));
    }

    void aMissingFolderIsTheSystemsReason()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("missing/a.pdf"));
        const FileWriteError error = Failure([&] {
            WholeFileWriter files;
            files.add(file, QByteArray("x"));
            files.write();
        });
        QCOMPARE(error.fileName(), file);
        QCOMPARE(error.number(), ENOENT);
        QCOMPARE(error.description(), QStringLiteral("No such file or directory"));
        QCOMPARE(error.description(), SystemErrorText(ENOENT));
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

    void aFolderIsNotReplacedByAFile()
    {
        QTemporaryDir dir;
        const FileWriteError error = Failure([&] {
            WholeFileWriter files;
            files.add(dir.path(), QByteArray("x"));
            files.write();
        });
        QCOMPARE(error.fileName(), dir.path());
        QCOMPARE(error.description(), QStringLiteral("Is a directory"));
        QVERIFY(QFileInfo(dir.path()).isDir());
    }

    void aFullDiskKeepsEveryFileAsItWas()
    {
        ScopedTmpfs disk(256 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no full file system to test on: ") + disk.whyNot()));
        const QString a = disk.filePath(QStringLiteral("page-001.png"));
        const QString b = disk.filePath(QStringLiteral("page-002.png"));
        const QByteArray earlierA(20000, 'A');
        const QByteArray earlierB(30000, 'B');
        QVERIFY(Put(a, earlierA));
        QVERIFY(Put(b, earlierB));
        // Full, then room for the first file of the set but not for the second.
        QVERIFY(disk.fill(16384));
        QVERIFY(QFile::remove(disk.filePath(QStringLiteral("fill-0"))));
        const QStringList before = disk.entries();

        const FileWriteError error = Failure([&] {
            WholeFileWriter files;
            files.add(a, QByteArray(4096, 'a'));
            files.add(b, QByteArray(200000, 'b'));
            files.write();
        });

        QCOMPARE(error.fileName(), b);
        QCOMPARE(error.number(), ENOSPC);
        QCOMPARE(error.description(), QStringLiteral("No space left on device"));
        QCOMPARE(Contents(a), earlierA);
        QCOMPARE(Contents(b), earlierB);
        QCOMPARE(disk.entries(), before);
    }

    void aReadOnlyFolderKeepsTheFile()
    {
        ScopedTmpfs disk(256 * 1024);
        if (!disk.mounted())
            QSKIP(qPrintable(QStringLiteral("no read-only file system to test on: ") + disk.whyNot()));
        const QString earlier = disk.filePath(QStringLiteral("report.pdf"));
        QVERIFY(Put(earlier, QByteArray("%PDF earlier")));
        QVERIFY(disk.remountReadOnly());
        const QStringList before = disk.entries();

        for (const QString& name : {QStringLiteral("report.pdf"), QStringLiteral("new.pdf")})
        {
            const FileWriteError error = Failure([&] {
                WholeFileWriter files;
                files.add(disk.filePath(name), QByteArray("%PDF new"));
                files.write();
            });
            QCOMPARE(error.fileName(), disk.filePath(name));
            QCOMPARE(error.number(), EROFS);
            QCOMPARE(error.description(), QStringLiteral("Read-only file system"));
        }
        QCOMPARE(Contents(earlier), QByteArray("%PDF earlier"));
        QCOMPARE(disk.entries(), before);
    }
};

CALVEX_TEST(TestWholeFileWriter)
#include "TestWholeFileWriter.moc"
