#include "platform/WholeFileWriter.h"

#include "platform/FileWriteError.h"
#include "platform/SystemError.h"
#include "platform/modResource.h"

#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <memory>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace
{
constexpr qint16 UnknownSystemErrorText = 4000;

// The system's reason for a failed step: its error code when the step left
// one, else what the file device says, else "unknown".
[[noreturn]] void fail(const QString& fileName, int code, const QString& deviceReason)
{
    QString reason;
    if (code != 0)
        reason = SystemErrorText(code);
    else if (!deviceReason.isEmpty())
        reason = deviceReason;
    else
        reason = GetResourceText(UnknownSystemErrorText);
    throw FileWriteError(fileName, code, reason);
}

struct PendingFile
{
    QString fileName;
    std::unique_ptr<QSaveFile> file;
};

// Opens the temporary file beside fileName, writes contents into it and
// brings it to the disk; the file stays open, not yet renamed.
PendingFile writeTemporary(const QString& fileName, const QByteArray& contents)
{
    // The save file would only say that the name is a folder's; the system
    // calls replacing a folder with a file EISDIR.
    if (QFileInfo(fileName).isDir())
        fail(fileName, EISDIR, QString());

    PendingFile pending{fileName, std::make_unique<QSaveFile>(fileName)};
    QSaveFile& file = *pending.file;
    // Unbuffered: every byte goes to the system in write(), so its answer
    // (and errno) is that of the step that failed, not of a later flush.
    errno = 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
    {
        const int code = errno;
        fail(fileName, code, file.errorString());
    }
    // A short count is a failure too: the save file passes on a write the
    // system cut short without marking an error, and would commit it.
    errno = 0;
    if (file.write(contents) != contents.size() || file.error() != QFileDevice::NoError)
    {
        const int code = errno;
        fail(fileName, code, file.errorString());
    }
#ifdef Q_OS_UNIX
    // The save file's own sync comes after its close and does not report;
    // a file system that accepts the bytes may refuse them only here.
    if (::fsync(file.handle()) != 0)
    {
        const int code = errno;
        fail(fileName, code, QString());
    }
#endif
    return pending;
}
} // namespace

void WholeFileWriter::add(const QString& fileName, QByteArray contents)
{
    m_files.append({fileName, std::move(contents)});
}

void WholeFileWriter::write()
{
    const QList<std::pair<QString, QByteArray>> files = std::exchange(m_files, {});
    // Every file on the disk under its temporary name first; a failure
    // removes the temporary files written so far (QSaveFile's destructor).
    std::vector<PendingFile> pending;
    pending.reserve(files.size());
    for (const auto& [fileName, contents] : files)
        pending.push_back(writeTemporary(fileName, contents));
    for (PendingFile& file : pending)
    {
        errno = 0;
        if (!file.file->commit())
        {
            const int code = errno;
            fail(file.fileName, code, file.file->errorString());
        }
    }
}
