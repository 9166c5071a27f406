#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <utility>

// Files written whole or not at all. add() collects what each file is to
// hold; write() puts every one into a temporary file in its destination's
// folder (QSaveFile), checks that every byte was written and that the file
// is on the disk, and only then renames each over its destination.
//
// When a step fails, write() throws FileWriteError with the file and the
// system's reason, and every destination is as it was before: no temporary
// file is left, and no file of the set is replaced, however late the step
// (a full disk, a read-only folder, an I/O error). Only a rename that fails
// after others of the set succeeded leaves those others replaced; a rename
// within one folder fails only when the folder itself goes away.
class WholeFileWriter final
{
public:
    void add(const QString& fileName, QByteArray contents);
    // Writes every file added; the set is empty afterwards, also on failure.
    void write();

private:
    QList<std::pair<QString, QByteArray>> m_files;
};
