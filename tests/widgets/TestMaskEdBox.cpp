#include "common/TestMain.h"
#include "widgets/MaskEdBox.h"

#include <QApplication>
#include <QClipboard>
#include <QSignalSpy>
#include <QTest>

class TestMaskEdBox : public QObject
{
    Q_OBJECT

private:
    // A shown, focused box, as the user meets it in the window.
    struct ShownBox
    {
        ShownBox()
        {
            box.resize(200, box.sizeHint().height());
            box.show();
            box.activateWindow();
            box.setFocus();
        }
        MaskEdBox box;
    };

private slots:
    void monthFirstFormatWithLeadingZeros()
    {
        MaskEdBox box;
        QCOMPARE(box.Format(), QStringLiteral("mm/dd/yyyy"));
        QCOMPARE(box.PromptChar(), QLatin1Char('_'));
        QCOMPARE(box.FormatDate(QDate(2024, 3, 7)), QStringLiteral("03/07/2024"));
        QCOMPARE(box.FormatDate(QDate(2024, 12, 31)), QStringLiteral("12/31/2024"));
    }

    void shortFormat()
    {
        MaskEdBox box;
        box.SetFormat(QStringLiteral("M/d/yyyy"));
        QCOMPARE(box.FormatDate(QDate(2024, 3, 7)), QStringLiteral("3/7/2024"));
        box.SetFormat(QStringLiteral("d.m.yy"));
        QCOMPARE(box.FormatDate(QDate(2009, 11, 5)), QStringLiteral("5.11.09"));
    }

    void textIsWhatTheBoxHolds()
    {
        MaskEdBox box;
        QCOMPARE(box.Text(), QString());
        box.SetText(QStringLiteral("01/31/2024"));
        QCOMPARE(box.Text(), QStringLiteral("01/31/2024"));
        QCOMPARE(box.text(), QStringLiteral("01/31/2024"));
        box.SetText(QString());
        QCOMPARE(box.Text(), QString());
    }

    void emptyBoxShowsThePromptTemplate()
    {
        MaskEdBox box;
        QCOMPARE(box.placeholderText(), QStringLiteral("__/__/____"));
    }

    void firstDigitOpensTheTemplate()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("1"));
        QCOMPARE(shown.box.Text(), QStringLiteral("1_/__/____"));
        QCOMPARE(shown.box.cursorPosition(), 1);
    }

    void digitsStepOverTheSlashes()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("1231"));
        QCOMPARE(shown.box.Text(), QStringLiteral("12/31/____"));
        QCOMPARE(shown.box.cursorPosition(), 6);
        QTest::keyClicks(&shown.box, QStringLiteral("2024"));
        QCOMPARE(shown.box.Text(), QStringLiteral("12/31/2024"));
    }

    void slashAfterOneDigitAddsTheLeadingZero()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("3/7/2024"));
        QCOMPARE(shown.box.Text(), QStringLiteral("03/07/2024"));
        QCOMPARE(shown.box.cursorPosition(), 10);
    }

    void slashAfterTwoDigitsIsTheSlashAlreadyThere()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("12/31/2024"));
        QCOMPARE(shown.box.Text(), QStringLiteral("12/31/2024"));
    }

    void otherFieldSeparatorsWorkAsTheSlash()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("3-7.2024"));
        QCOMPARE(shown.box.Text(), QStringLiteral("03/07/2024"));
    }

    void slashOnAnEmptyFieldOrInTheYearChangesNothing()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("/"));
        QCOMPARE(shown.box.Text(), QString());
        QTest::keyClicks(&shown.box, QStringLiteral("01/"));
        QCOMPARE(shown.box.Text(), QStringLiteral("01/__/____"));
        QCOMPARE(shown.box.cursorPosition(), 3);
        QTest::keyClicks(&shown.box, QStringLiteral("/"));
        QCOMPARE(shown.box.Text(), QStringLiteral("01/__/____"));
        QCOMPARE(shown.box.cursorPosition(), 3);
        QTest::keyClicks(&shown.box, QStringLiteral("02/20/"));
        QCOMPARE(shown.box.Text(), QStringLiteral("01/02/20__"));
        QCOMPARE(shown.box.cursorPosition(), 8);
    }

    void lettersAndBlanksAreIgnored()
    {
        ShownBox shown;
        QSignalSpy changes(&shown.box, &QLineEdit::textChanged);
        QTest::keyClicks(&shown.box, QStringLiteral("ab "));
        QCOMPARE(shown.box.Text(), QString());
        QCOMPARE(changes.count(), 0);
        QTest::keyClicks(&shown.box, QStringLiteral("x0z4"));
        QCOMPARE(shown.box.Text(), QStringLiteral("04/__/____"));
    }

    void typingIntoAFullDateChangesNothing()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("01312024"));
        QSignalSpy changes(&shown.box, &QLineEdit::textChanged);
        QTest::keyClicks(&shown.box, QStringLiteral("5"));
        QCOMPARE(shown.box.Text(), QStringLiteral("01/31/2024"));
        QCOMPARE(changes.count(), 0);
    }

    void everyChangeIsSignalled()
    {
        ShownBox shown;
        QSignalSpy changes(&shown.box, &QLineEdit::textChanged);
        QTest::keyClicks(&shown.box, QStringLiteral("3/7"));
        // "3", then the leading zero, then "7".
        QCOMPARE(changes.count(), 3);
        QCOMPARE(changes.last().first().toString(), QStringLiteral("03/7_/____"));
        shown.box.SetText(QStringLiteral("01/01/2024"));
        QCOMPARE(changes.count(), 4);
    }

    void backspaceOpensThePositionBeforeTheCursor()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("0304"));
        QCOMPARE(shown.box.Text(), QStringLiteral("03/04/____"));
        QCOMPARE(shown.box.cursorPosition(), 6);
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QStringLiteral("03/0_/____"));
        QCOMPARE(shown.box.cursorPosition(), 4);
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QStringLiteral("03/__/____"));
        QCOMPARE(shown.box.cursorPosition(), 3);
        // Over the slash.
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QStringLiteral("0_/__/____"));
        QCOMPARE(shown.box.cursorPosition(), 1);
        // The last digit gone: the box is empty again.
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QString());
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QString());
    }

    void deleteOpensThePositionAtTheCursorWithoutMovingTheOthers()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("12/31/2024"));
        shown.box.setCursorPosition(3);
        QTest::keyClick(&shown.box, Qt::Key_Delete);
        QCOMPARE(shown.box.Text(), QStringLiteral("12/_1/2024"));
        QCOMPARE(shown.box.cursorPosition(), 3);
        // Typing there puts the digit into the opened position.
        QTest::keyClicks(&shown.box, QStringLiteral("2"));
        QCOMPARE(shown.box.Text(), QStringLiteral("12/21/2024"));
    }

    void correctingTheMonthOfAFullDate()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("12/31/2024"));
        shown.box.setCursorPosition(0);
        QTest::keyClicks(&shown.box, QStringLiteral("01"));
        QCOMPARE(shown.box.Text(), QStringLiteral("01/31/2024"));
        QCOMPARE(shown.box.cursorPosition(), 3);
    }

    void typingOverASelectionStartsAfresh()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("01/31/2024"));
        shown.box.selectAll();
        QTest::keyClicks(&shown.box, QStringLiteral("2"));
        QCOMPARE(shown.box.Text(), QStringLiteral("2_/__/____"));
        QCOMPARE(shown.box.cursorPosition(), 1);
    }

    void deletingTheSelectionKeepsTheSlashes()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("01/31/2024"));
        shown.box.setSelection(1, 4); // "1/31"
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QStringLiteral("0_/__/2024"));
        QCOMPARE(shown.box.cursorPosition(), 1);
        shown.box.selectAll();
        QTest::keyClick(&shown.box, Qt::Key_Delete);
        QCOMPARE(shown.box.Text(), QString());
    }

    void aDateSetInTheShortFormIsCompletedWhenEdited()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("3/7/2024"));
        QCOMPARE(shown.box.Text(), QStringLiteral("3/7/2024"));
        shown.box.end(false);
        QTest::keyClick(&shown.box, Qt::Key_Backspace);
        QCOMPARE(shown.box.Text(), QStringLiteral("03/07/202_"));
    }

    void pastingIsTypedIntoTheTemplate()
    {
        ShownBox shown;
        QGuiApplication::clipboard()->setText(QStringLiteral("3/7/2024"));
        QTest::keySequence(&shown.box, QKeySequence::Paste);
        QCOMPARE(shown.box.Text(), QStringLiteral("03/07/2024"));

        QGuiApplication::clipboard()->setText(QStringLiteral("'; DROP TABLE x; 12"));
        shown.box.selectAll();
        QTest::keySequence(&shown.box, QKeySequence::Paste);
        QCOMPARE(shown.box.Text(), QStringLiteral("12/__/____"));
    }

    void cutLeavesTheTemplate()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("01/31/2024"));
        shown.box.setSelection(6, 4);
        QTest::keySequence(&shown.box, QKeySequence::Cut);
        QCOMPARE(shown.box.Text(), QStringLiteral("01/31/____"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("2024"));
    }

    void theToolkitsOwnEditsAreRetyped()
    {
        // The context menu's Paste goes through QLineEdit::paste, not the keyboard.
        ShownBox shown;
        QGuiApplication::clipboard()->setText(QStringLiteral("12312024"));
        shown.box.paste();
        QCOMPARE(shown.box.Text(), QStringLiteral("12/31/2024"));
    }

    void clickPastTheDigitsGoesToTheFirstOpenPosition()
    {
        ShownBox shown;
        QTest::keyClicks(&shown.box, QStringLiteral("03/0"));
        QCOMPARE(shown.box.Text(), QStringLiteral("03/0_/____"));
        const QPoint farRight(shown.box.width() - 3, shown.box.height() / 2);
        QTest::mouseClick(&shown.box, Qt::LeftButton, {}, farRight);
        QCOMPARE(shown.box.cursorPosition(), 4);
        QTest::keyClicks(&shown.box, QStringLiteral("9"));
        QCOMPARE(shown.box.Text(), QStringLiteral("03/09/____"));

        // A click inside the digits stays where it is, for a correction.
        QTest::mouseClick(&shown.box, Qt::LeftButton, {}, QPoint(3, shown.box.height() / 2));
        QCOMPARE(shown.box.cursorPosition(), 0);
    }

    void navigationKeysStillWork()
    {
        ShownBox shown;
        shown.box.SetText(QStringLiteral("01/31/2024"));
        shown.box.end(false);
        QTest::keyClick(&shown.box, Qt::Key_Home);
        QCOMPARE(shown.box.cursorPosition(), 0);
        QTest::keyClick(&shown.box, Qt::Key_Right);
        QTest::keyClick(&shown.box, Qt::Key_Right);
        QCOMPARE(shown.box.cursorPosition(), 2);
        // A digit typed before the slash goes to the day.
        QTest::keyClicks(&shown.box, QStringLiteral("0"));
        QCOMPARE(shown.box.Text(), QStringLiteral("01/01/2024"));
    }
};

CALVEX_TEST(TestMaskEdBox)
#include "TestMaskEdBox.moc"
