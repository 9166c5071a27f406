#pragma once

#include <QMainWindow>
#include <QUrl>

class QTextBrowser;
class QAction;

// The program's help pages in a window of its own: links, Back and Forward,
// and Print; no browser needed. One window for the program: asking for help
// again brings it to the front on the start page.
class HelpWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HelpWindow)

public:
    // Shows the one help window on the page (creating it when needed).
    static HelpWindow* showPage(const QUrl& page);
    // The open help window, or nullptr.
    static HelpWindow* current();

    QTextBrowser* browser() const { return m_browser; }

private:
    HelpWindow();
    void printPage();

    QTextBrowser* m_browser = nullptr;
};
