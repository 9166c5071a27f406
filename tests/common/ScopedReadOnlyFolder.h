#pragma once

#include "common/ScopedTmpfs.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <unistd.h>

#include <memory>

// A folder whose files the program can be made to read but not write, and
// write again, as a read-only file, folder or mount does. File modes do not
// stop root, so for root it is a small tmpfs remounted read-only (mounting
// needs a system that lets root mount; whyNot() says when it cannot be had);
// for anyone else a temporary folder whose files and itself lose their write
// permission.
class ScopedReadOnlyFolder
{
public:
    ScopedReadOnlyFolder()
    {
        if (::geteuid() == 0)
        {
            m_mount = std::make_unique<ScopedTmpfs>(qint64(256) * 1024 * 1024);
            if (!m_mount->mounted())
                m_whyNot = m_mount->whyNot();
        }
        else if (!m_dir.isValid())
        {
            m_whyNot = QStringLiteral("no temporary folder");
        }
    }
    ~ScopedReadOnlyFolder() { makeWritable(); }
    ScopedReadOnlyFolder(const ScopedReadOnlyFolder&) = delete;
    ScopedReadOnlyFolder& operator=(const ScopedReadOnlyFolder&) = delete;

    bool usable() const { return m_whyNot.isEmpty(); }
    QString whyNot() const { return m_whyNot; }
    QString path() const { return m_mount ? m_mount->path() : m_dir.path(); }
    QString filePath(const QString& name) const { return QDir(path()).filePath(name); }

    // Nothing in the folder can be written any more, by root either.
    bool makeReadOnly()
    {
        if (m_mount)
            return m_mount->remountReadOnly();
        bool done = true;
        for (const QString& name : QDir(path()).entryList(QDir::Files | QDir::Hidden))
            done =
                QFile::setPermissions(filePath(name), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther) && done;
        return setFolderWritable(false) && done;
    }
    // Only the folder is read-only (its files keep their permissions); not
    // for root, whom a folder's modes do not stop.
    bool makeFolderReadOnly() { return !m_mount && setFolderWritable(false); }
    // The folder and its files can be written again (chmod u+w).
    bool makeWritable()
    {
        if (m_mount)
            return m_mount->remountReadWrite();
        bool done = setFolderWritable(true);
        for (const QString& name : QDir(path()).entryList(QDir::Files | QDir::Hidden))
            done =
                QFile::setPermissions(filePath(name), QFile::permissions(filePath(name)) | QFile::WriteOwner) && done;
        return done;
    }

private:
    bool setFolderWritable(bool writable)
    {
        QFile::Permissions permissions = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup;
        if (writable)
            permissions |= QFile::WriteOwner;
        return QFile::setPermissions(path(), permissions);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<ScopedTmpfs> m_mount;
    QString m_whyNot;
};
