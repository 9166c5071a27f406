#include "common/TestMain.h"

#include "widgets/QtMessageService.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScopeGuard>
#include <QTest>
#include <QTimer>

#include <functional>
#include <optional>

namespace
{
// What a test saw of the box while it was open.
struct SeenBox
{
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    Qt::TextFormat format = Qt::AutoText;
    QString detailedText;
    // The button that opens the details ("Show Details..."), when the box has one.
    QString detailsButton;
};

// Waits inside the box's own event loop until the modal box is up, records
// it and lets act close it.
void whenBoxOpens(std::optional<SeenBox>& seen, std::function<void(QMessageBox*)> act)
{
    auto* poll = new QTimer(qApp);
    poll->setInterval(10);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, &seen, act = std::move(act)] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        poll->stop();
        poll->deleteLater();
        QString detailsButton;
        for (QAbstractButton* button : box->buttons())
        {
            if (box->buttonRole(button) == QMessageBox::ActionRole)
                detailsButton = button->text();
        }
        seen = SeenBox{box->windowTitle(),
                       box->text(),
                       box->icon(),
                       box->standardButtons(),
                       box->defaultButton() ? box->standardButton(box->defaultButton()) : QMessageBox::NoButton,
                       box->textFormat(),
                       box->detailedText(),
                       detailsButton};
        act(box);
    });
    poll->start();
}

std::function<void(QMessageBox*)> press(QMessageBox::StandardButton which)
{
    return [which](QMessageBox* box) {
        // A box without that button is closed anyway; the test's checks then fail.
        if (QAbstractButton* button = box->button(which))
            button->click();
        else
            box->done(-1);
    };
}
} // namespace

class TestQtMessageService : public QObject
{
    Q_OBJECT

private slots:
    void iconFollowsStyle_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("icon");
        QTest::newRow("plain") << 0 << int(QMessageBox::NoIcon);
        QTest::newRow("critical") << 16 << int(QMessageBox::Critical);
        QTest::newRow("question") << 32 << int(QMessageBox::Question);
        QTest::newRow("exclamation") << 48 << int(QMessageBox::Warning);
        QTest::newRow("information") << 64 << int(QMessageBox::Information);
        QTest::newRow("question yes/no") << 36 << int(QMessageBox::Question);
    }

    void iconFollowsStyle()
    {
        QFETCH(int, style);
        QFETCH(int, icon);
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, [](QMessageBox* box) { box->buttons().first()->click(); });
        service.show(QStringLiteral("Careful"), style, QStringLiteral("Title"), QString());
        QVERIFY(seen);
        QCOMPARE(int(seen->icon), icon);
        QCOMPARE(seen->text, QStringLiteral("Careful"));
        QCOMPARE(seen->title, QStringLiteral("Title"));
    }

    void buttonsAndAnswers_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("buttons");
        QTest::addColumn<int>("defaultButton");
        QTest::addColumn<int>("pressed");
        QTest::addColumn<int>("answer");
        const int ok = QMessageBox::Ok, cancel = QMessageBox::Cancel, yes = QMessageBox::Yes, no = QMessageBox::No;
        QTest::newRow("ok") << 0 << ok << ok << ok << 1;
        QTest::newRow("ok of ok/cancel") << 1 << (ok | cancel) << ok << ok << 1;
        QTest::newRow("cancel of ok/cancel") << 1 << (ok | cancel) << ok << cancel << 2;
        QTest::newRow("yes of yes/no") << 36 << (yes | no) << yes << yes << 6;
        QTest::newRow("no of yes/no") << 36 << (yes | no) << yes << no << 7;
        QTest::newRow("no of yes/no/cancel") << 3 << (yes | no | cancel) << yes << no << 7;
        QTest::newRow("retry of abort/retry/ignore")
            << 2 << int(QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore) << int(QMessageBox::Abort)
            << int(QMessageBox::Retry) << 4;
        QTest::newRow("cancel of retry/cancel")
            << 5 << int(QMessageBox::Retry | cancel) << int(QMessageBox::Retry) << cancel << 2;
    }

    void buttonsAndAnswers()
    {
        QFETCH(int, style);
        QFETCH(int, buttons);
        QFETCH(int, defaultButton);
        QFETCH(int, pressed);
        QFETCH(int, answer);
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::StandardButton(pressed)));
        QCOMPARE(service.show(QStringLiteral("Go on?"), style, QStringLiteral("T4052"), QString()), answer);
        QVERIFY(seen);
        QCOMPARE(int(seen->buttons), buttons);
        QCOMPARE(int(seen->defaultButton), defaultButton);
    }

    void escapeCancels()
    {
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, [](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(service.show(QStringLiteral("Leave?"), 1 + 32, QStringLiteral("T4052"), QString()), 2);
        QVERIFY(seen);
    }

    void emptyTitleIsTheApplicationsName()
    {
        // The program sets no display name of its own: it is the application's name.
        const QString previous = QCoreApplication::applicationName();
        QCoreApplication::setApplicationName(QStringLiteral("Calvex QC Reports Test"));
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::Ok));
        QCOMPARE(service.show(QStringLiteral("ResourceID is not found,  4200"), 0, QString(), QString()), 1);
        QCoreApplication::setApplicationName(previous);
        QVERIFY(seen);
        QCOMPARE(seen->title, QStringLiteral("Calvex QC Reports Test"));
        QCOMPARE(seen->text, QStringLiteral("ResourceID is not found,  4200"));
    }

    void textIsNeverMarkup()
    {
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::Ok));
        service.show(QStringLiteral("<b>Smith</b> & Co"), 0, QStringLiteral("T4052"), QString());
        QVERIFY(seen);
        QCOMPARE(seen->format, Qt::PlainText);
        QCOMPARE(seen->text, QStringLiteral("<b>Smith</b> & Co"));
    }

    void detailIsBehindTheDetailsButton()
    {
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::Ok));
        QCOMPARE(service.show(QStringLiteral("T4125"), 48, QStringLiteral("T4052"),
                              QStringLiteral("The user \"formerstaff\" is disabled in the QC database.")),
                 1);
        QVERIFY(seen);
        // The text stays as it is; the reason is the details part.
        QCOMPARE(seen->text, QStringLiteral("T4125"));
        QCOMPARE(seen->detailedText, QStringLiteral("The user \"formerstaff\" is disabled in the QC database."));
        QVERIFY2(seen->detailsButton.startsWith(QLatin1String("Show Details")), qPrintable(seen->detailsButton));
        QCOMPARE(int(seen->buttons), int(QMessageBox::Ok));
    }

    void noDetailNoDetailsButton()
    {
        QtMessageService service;
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::Ok));
        service.show(QStringLiteral("T4117"), 0, QStringLiteral("T4052"), QString());
        QVERIFY(seen);
        QCOMPARE(seen->detailedText, QString());
        QCOMPARE(seen->detailsButton, QString());
    }

    void detailGoesThroughMsgBox()
    {
        QVERIFY(!MessageService::installed());
        QtMessageService::installAsDefault();
        const auto restore = qScopeGuard([] { MessageService::setDefault(nullptr); });
        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::Ok));
        MsgBox(QStringLiteral("T4116"), 64, QString(), QStringLiteral("no right 500"));
        QVERIFY(seen);
        QCOMPARE(seen->detailedText, QStringLiteral("no right 500"));
    }

    void installsAsTheDefaultService()
    {
        QVERIFY(!MessageService::installed()); // no recorder may hide the default here
        QtMessageService::installAsDefault();
        const auto restore = qScopeGuard([] { MessageService::setDefault(nullptr); });
        QVERIFY(dynamic_cast<QtMessageService*>(&MessageService::current()));

        std::optional<SeenBox> seen;
        whenBoxOpens(seen, press(QMessageBox::No));
        QCOMPARE(MsgBox(QStringLiteral("T4082"), 36, QStringLiteral("T4052")), 7);
        QVERIFY(seen);
        QCOMPARE(seen->icon, QMessageBox::Question);
        QCOMPARE(int(seen->buttons), int(QMessageBox::Yes | QMessageBox::No));
    }
};

CALVEX_TEST(TestQtMessageService)
#include "TestQtMessageService.moc"
