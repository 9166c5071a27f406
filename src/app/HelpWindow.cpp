#include "app/HelpWindow.h"

#include <QAction>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QTextBrowser>
#include <QToolBar>

namespace
{
QPointer<HelpWindow>& openWindow()
{
    static QPointer<HelpWindow> window;
    return window;
}
} // namespace

HelpWindow::HelpWindow()
{
    setObjectName(QStringLiteral("HelpWindow"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_browser = new QTextBrowser(this);
    m_browser->setObjectName(QStringLiteral("HelpBrowser"));
    // Pages of the help open here; a link to the web (none today) would need a browser.
    m_browser->setOpenExternalLinks(true);
    setCentralWidget(m_browser);

    QToolBar* toolbar = addToolBar(tr("Help"));
    toolbar->setObjectName(QStringLiteral("HelpToolBar"));
    toolbar->setMovable(false);
    QAction* back = toolbar->addAction(tr("Back"), m_browser, &QTextBrowser::backward);
    back->setObjectName(QStringLiteral("HelpBack"));
    back->setShortcut(QKeySequence::Back);
    back->setEnabled(false);
    QAction* forward = toolbar->addAction(tr("Forward"), m_browser, &QTextBrowser::forward);
    forward->setObjectName(QStringLiteral("HelpForward"));
    forward->setShortcut(QKeySequence::Forward);
    forward->setEnabled(false);
    QAction* print = toolbar->addAction(tr("Print..."), this, &HelpWindow::printPage);
    print->setObjectName(QStringLiteral("HelpPrint"));
    print->setShortcut(QKeySequence::Print);
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::sourceChanged, this, [this] { setWindowTitle(m_browser->documentTitle()); });
    resize(760, 640);
}

HelpWindow* HelpWindow::showPage(const QUrl& page)
{
    QPointer<HelpWindow>& window = openWindow();
    if (!window)
        window = new HelpWindow;
    window->m_browser->setSource(page);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

HelpWindow* HelpWindow::current()
{
    return openWindow();
}

void HelpWindow::printPage()
{
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(tr("Print Help"));
    if (dialog.exec() == QDialog::Accepted)
        m_browser->print(&printer);
}
