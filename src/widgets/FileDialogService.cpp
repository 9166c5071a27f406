#include "widgets/FileDialogService.h"

#include <QApplication>
#include <QFileDialog>

namespace
{
// The window toolkit's save dialog, modal over the active window; it asks
// before an existing file is replaced.
class QtFileDialogService final : public FileDialogService
{
public:
    QString getSaveFileName(const QString& caption, const QString& proposedPath, const QString& filter) override
    {
        return QFileDialog::getSaveFileName(QApplication::activeWindow(), caption, proposedPath, filter);
    }
};

QtFileDialogService g_qtService;
FileDialogService* g_installed = nullptr;
} // namespace

FileDialogService& FileDialogService::current()
{
    return g_installed ? *g_installed : g_qtService;
}

void FileDialogService::install(FileDialogService* service)
{
    g_installed = service;
}

FileDialogService* FileDialogService::installed()
{
    return g_installed;
}

QString GetSaveFileName(const QString& caption, const QString& proposedPath, const QString& filter)
{
    return FileDialogService::current().getSaveFileName(caption, proposedPath, filter);
}
