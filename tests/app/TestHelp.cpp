#include "MainWindowFixture.h"

#include "app/HelpFile.h"
#include "app/HelpWindow.h"
#include "common/TestMain.h"
#include "suite/NorrixStrings.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocumentFragment>
#include <QUrl>

namespace
{
// Receives the URLs the program asks the desktop to open.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> urls;

public slots:
    void open(const QUrl& url) { urls.append(url); }
};

QString helpText(const QString& page)
{
    QFile file(QFileInfo(HelpFilePath()).dir().filePath(page));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    // The page as a reader sees it: tags gone, entities resolved, blanks collapsed.
    return QTextDocumentFragment::fromHtml(QString::fromUtf8(file.readAll()))
        .toPlainText()
        .replace(QRegularExpression(QStringLiteral("\\s+")), QStringLiteral(" "));
}
} // namespace

class TestHelp : public QObject
{
    Q_OBJECT

private slots:
    void helpIsFoundBesideTheProgram()
    {
        const QString path = HelpFilePath();
        QVERIFY2(!path.isEmpty(), "no help beside the program");
        QVERIFY(QFileInfo(path).isFile());
        QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("index.html"));
        for (const char* page :
             {"report.html", "chart.html", "messages.html", "import.html", "setup.html", "style.css"})
            QVERIFY2(QFileInfo(QFileInfo(path).dir().filePath(QLatin1String(page))).isFile(), page);
    }

    void everyLinkOfTheHelpLeadsToAPage()
    {
        const QDir folder = QFileInfo(HelpFilePath()).dir();
        const QStringList pages = folder.entryList({QStringLiteral("*.html")}, QDir::Files);
        QVERIFY(pages.size() >= 6);
        const QRegularExpression link(QStringLiteral("href=\"([^\"#:]+)[\"#]"));
        int links = 0;
        for (const QString& page : pages)
        {
            QFile file(folder.filePath(page));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString html = QString::fromUtf8(file.readAll());
            for (auto it = link.globalMatch(html); it.hasNext();)
            {
                const QString target = it.next().captured(1);
                QVERIFY2(folder.exists(target), qPrintable(page + QStringLiteral(" links to ") + target));
                ++links;
            }
        }
        QVERIFY(links > pages.size());
    }

    void helpButtonOpensTheHelpWindowWithoutABrowser()
    {
        MainWindowFixture f;
        UrlCatcher catcher;
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
        const auto restore = qScopeGuard([] { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); });
        f.window->cmdHelp->click();
        HelpWindow* help = HelpWindow::current();
        QVERIFY(help);
        const auto close = qScopeGuard([help] { help->close(); });
        QVERIFY(help->isVisible());
        QCOMPARE(help->browser()->source(), QUrl::fromLocalFile(HelpFilePath()));
        QVERIFY(help->browser()->toPlainText().contains(QStringLiteral("Calvex QC Reports")));
        QCOMPARE(help->windowTitle(), help->browser()->documentTitle());
        QVERIFY(!help->windowTitle().isEmpty());
        QCOMPARE(catcher.urls.size(), 0); // no browser was asked
        QCOMPARE(f.boxes.count(), 0);

        // Help again: the same window, back on the start page.
        help->browser()->setSource(
            QUrl::fromLocalFile(QFileInfo(HelpFilePath()).dir().filePath(QStringLiteral("chart.html"))));
        f.window->cmdHelp->click();
        QCOMPARE(HelpWindow::current(), help);
        QCOMPARE(help->browser()->source(), QUrl::fromLocalFile(HelpFilePath()));
    }

    void helpWindowFollowsLinksBackAndForward()
    {
        HelpWindow* help = HelpWindow::showPage(QUrl::fromLocalFile(HelpFilePath()));
        const auto close = qScopeGuard([help] { help->close(); });
        QTextBrowser* browser = help->browser();
        QAction* back = help->findChild<QAction*>(QStringLiteral("HelpBack"));
        QAction* forward = help->findChild<QAction*>(QStringLiteral("HelpForward"));
        QVERIFY(back && forward && help->findChild<QAction*>(QStringLiteral("HelpPrint")));
        QVERIFY(!back->isEnabled());

        // The reader's way: Tab to the first link to another page, Enter to follow it.
        browser->setFocus();
        QString link;
        for (int tabs = 0; tabs < 10 && (link.isEmpty() || link == QLatin1String("index.html")); ++tabs)
        {
            QTest::keyClick(browser, Qt::Key_Tab);
            link = browser->textCursor().charFormat().anchorHref();
        }
        QVERIFY2(link.endsWith(QLatin1String(".html")), qPrintable(link));
        QTest::keyClick(browser, Qt::Key_Return);
        const QUrl followed = QUrl::fromLocalFile(HelpFilePath()).resolved(QUrl(link));
        QCOMPARE(browser->source(), followed);
        QVERIFY(QFileInfo(followed.toLocalFile()).isFile());
        QVERIFY(back->isEnabled());

        back->trigger();
        QCOMPARE(browser->source(), QUrl::fromLocalFile(HelpFilePath()));
        QVERIFY(forward->isEnabled());
        forward->trigger();
        QCOMPARE(browser->source(), followed);
    }

    void messagesPageQuotesTheProgramsTexts()
    {
        const QString page = helpText(QStringLiteral("messages.html"));
        QVERIFY(!page.isEmpty());
        NorrixStrings strings(QString{});
        for (qint16 id : {4055, 4056, 4057, 4060, 4061, 4062, 4064, 4075, 4076, 4077, 4078, 4079, 4080, 4081, 4082,
                          4086, 4091, 4102, 4111, 4115, 4116, 4117, 4118, 4122, 4123, 4124, 4125, 4129, 4137})
        {
            const QString text = strings.GetText(id);
            QVERIFY2(!text.isEmpty(), qPrintable(QString::number(id)));
            QVERIFY2(page.contains(QString::number(id) + QLatin1Char(' ') + text), qPrintable(text));
        }
    }

    void pagesDescribeTheChart()
    {
        const QString chart = helpText(QStringLiteral("chart.html"));
        for (const char* term : {"mean", "+ 2SD", "- 2SD", "standard deviation", "coefficient of variation", "table"})
            QVERIFY2(chart.contains(QLatin1String(term)), term);
        const QString report = helpText(QStringLiteral("report.html"));
        for (const char* step : {"Saved Reports", "Add", "Save As", "Find...", "mm/dd/yyyy", "Preview", "Print"})
            QVERIFY2(report.contains(QLatin1String(step)), step);
    }

    void qcRulesAreDescribed()
    {
        const QString chart = helpText(QStringLiteral("chart.html"));
        for (const char* term : {"1-2s", "1-3s", "2-2s", "R-4s", "4-1s", "10x", "DLCO-12", "warning rule",
                                 "the period's own mean and SD", "filled disc", "QC Rule Violations",
                                 "No QC rule violations in this period.", "3 mL/min/mmHg", "1 mmol/min/kPa", "12 %"})
            QVERIFY2(chart.contains(QLatin1String(term)), term);
        const QString setup = helpText(QStringLiteral("setup.html"));
        for (const char* term : {"\"QC Rules\"", "--check", "exit status 3"})
            QVERIFY2(setup.contains(QLatin1String(term)), term);
    }

    void importPageDescribesTheFileAndIsLinked()
    {
        const QString page = helpText(QStringLiteral("import.html"));
        for (const char* term : {"PatientID", "LastName", "FirstName", "MiddleName", "Birthday", "VisitDate", "Tab",
                                 "Table", "Variable", "Value", "yyyy-mm-dd", "--dry-run", "NorrixDBQuery catalogue",
                                 "line 17, Variable: the PF table \"Pre\" has no variable \"FEV2\""})
            QVERIFY2(page.contains(QLatin1String(term)), term);
        QFile index(HelpFilePath());
        QVERIFY(index.open(QIODevice::ReadOnly));
        QVERIFY(index.readAll().contains("href=\"import.html\""));
    }
};

CALVEX_TEST(TestHelp)
#include "TestHelp.moc"
