#include "common/TestMain.h"

#include "widgets/ControlCharacterValidator.h"

#include <QTest>

class TestControlCharacterValidator : public QObject
{
    Q_OBJECT

private slots:
    void everyControlCharacterIsLeftOut()
    {
        const ControlCharacterValidator validator;
        QString text;
        for (char16_t c = 0; c < 0x20; ++c)
            text += QChar(c);
        text += QChar(0x7f);
        for (char16_t c = 0x80; c < 0xa0; ++c)
            text += QChar(c);
        text += QChar(0x2028);
        text += QChar(0x2029);
        int pos = int(text.size());
        QCOMPARE(validator.validate(text, pos), QValidator::Acceptable);
        QCOMPARE(text, QString());
        QCOMPARE(pos, 0);
    }

    void everythingElseStaysAsItIs()
    {
        const ControlCharacterValidator validator;
        // Blanks at both ends, a no-break space, a joiner, a right-to-left mark,
        // letters of other scripts and a character beyond 16 bits.
        const QString original = QStringLiteral("  A\u00a0B\u200d\u200fÄ ½ 肺 \U0001F9EA  ");
        QString text = original;
        int pos = 4;
        QCOMPARE(validator.validate(text, pos), QValidator::Acceptable);
        QCOMPARE(text, original);
        QCOMPARE(pos, 4);
    }

    void theCursorKeepsItsPlaceInTheText()
    {
        const ControlCharacterValidator validator;
        QString text = QStringLiteral("a\tb\nc|d\re");
        int pos = 5; // after "c"
        QCOMPARE(validator.validate(text, pos), QValidator::Acceptable);
        QCOMPARE(text, QStringLiteral("abc|de"));
        QCOMPARE(pos, 3);
    }
};

CALVEX_TEST(TestControlCharacterValidator)
#include "TestControlCharacterValidator.moc"
