#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// A small, real file system of its own for the tests of full disks and
// read-only folders: a tmpfs mounted on a temporary folder, unmounted again
// when the object goes. Mounting needs root (and a system that lets root
// mount); when it cannot be had, mounted() is false and whyNot() says why,
// for the test to skip with.
class ScopedTmpfs
{
public:
    // A file system of sizeBytes; readOnly mounts it read-only from the start.
    explicit ScopedTmpfs(qint64 sizeBytes, bool readOnly = false)
    {
        if (!m_dir.isValid())
        {
            m_whyNot = QStringLiteral("no temporary folder to mount on");
            return;
        }
        if (::geteuid() != 0)
        {
            m_whyNot = QStringLiteral("mounting a small tmpfs needs root, and the tests do not run as root");
            return;
        }
        const QByteArray options = "size=" + QByteArray::number(sizeBytes);
        const QByteArray where = QFile::encodeName(m_dir.path());
        if (::mount("tmpfs", where.constData(), "tmpfs", readOnly ? MS_RDONLY : 0, options.constData()) != 0)
        {
            m_whyNot = QStringLiteral("mount -t tmpfs failed: ") + QString::fromLocal8Bit(std::strerror(errno));
            return;
        }
        m_mounted = true;
    }

    ~ScopedTmpfs()
    {
        if (m_mounted)
            ::umount2(QFile::encodeName(m_dir.path()).constData(), MNT_DETACH);
    }

    ScopedTmpfs(const ScopedTmpfs&) = delete;
    ScopedTmpfs& operator=(const ScopedTmpfs&) = delete;

    bool mounted() const { return m_mounted; }
    QString whyNot() const { return m_whyNot; }
    QString path() const { return m_dir.path(); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

    // Makes the mounted file system read-only (mount -o remount,ro).
    bool remountReadOnly()
    {
        return ::mount(nullptr, QFile::encodeName(m_dir.path()).constData(), nullptr, MS_REMOUNT | MS_RDONLY,
                       nullptr) == 0;
    }

    // Fills the file system with files named fill-N of chunkBytes each, the
    // last one as large as the space allows, until the system says it is
    // full; true when it did (ENOSPC).
    bool fill(qint64 chunkBytes = 4096)
    {
        const QByteArray chunk(chunkBytes, 'x');
        for (int n = 0;; ++n)
        {
            QFile file(filePath(QStringLiteral("fill-%1").arg(n)));
            errno = 0;
            if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(chunk) != chunk.size())
                return errno == ENOSPC;
        }
    }

    // Makes the mounted file system writable again (mount -o remount,rw).
    bool remountReadWrite()
    {
        return ::mount(nullptr, QFile::encodeName(m_dir.path()).constData(), nullptr, MS_REMOUNT, nullptr) == 0;
    }

    // Every name in the folder, sorted.
    QStringList entries() const
    {
        return QDir(m_dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
    QString m_whyNot;
};
