#pragma once

#include <QString>

// Asks the user for the file to save to. Every save dialog of the program goes
// through the current service: the window toolkit's file dialog when the
// program runs, a recorder with scripted answers in tests.
class FileDialogService
{
public:
    virtual ~FileDialogService() = default;

    // Shows a save dialog titled caption, starting at proposedPath (folder and
    // file name), offering the files of filter ("PDF documents (*.pdf)").
    // Returns the chosen file's path, or "" when the user cancelled.
    virtual QString getSaveFileName(const QString& caption, const QString& proposedPath, const QString& filter) = 0;

    // The installed service, or the window toolkit's dialog.
    static FileDialogService& current();
    // Installs a service; nullptr puts back the default one. The caller keeps ownership.
    static void install(FileDialogService* service);
    static FileDialogService* installed();
};

// Shorthand for FileDialogService::current().getSaveFileName.
QString GetSaveFileName(const QString& caption, const QString& proposedPath, const QString& filter);
