#include "common/TestMain.h"

#include "widgets/FindComboItem.h"

#include <QComboBox>
#include <QTest>

class TestFindComboItem : public QObject
{
    Q_OBJECT

private slots:
    void missingListGivesZero()
    {
        QCOMPARE(FindComboItem(nullptr, QStringLiteral("abc"), false, false), 0);
        QCOMPARE(FindComboItem(nullptr, QStringLiteral("abc"), true, true), 0);
    }

    void emptyListGivesMinusOne()
    {
        QComboBox combo;
        QCOMPARE(FindComboItem(&combo, QStringLiteral("abc"), false, false), -1);
        QCOMPARE(FindComboItem(&combo, 1, true, false), -1);
    }

    void textWithoutRegardToCase()
    {
        QComboBox combo;
        combo.addItems({QStringLiteral("first"), QStringLiteral("ABC"), QStringLiteral("abc")});
        QCOMPARE(FindComboItem(&combo, QStringLiteral("abc"), false, false), 1); // the first match wins
        QCOMPARE(FindComboItem(&combo, QStringLiteral("FIRST"), false, false), 0);
        QCOMPARE(FindComboItem(&combo, QStringLiteral("ab"), false, false), -1); // whole entries only
    }

    void textWithRegardToCase()
    {
        QComboBox combo;
        combo.addItems({QStringLiteral("ABC"), QStringLiteral("Other")});
        QCOMPARE(FindComboItem(&combo, QStringLiteral("abc"), false, true), -1);
        QCOMPARE(FindComboItem(&combo, QStringLiteral("ABC"), false, true), 0);
        QCOMPARE(FindComboItem(&combo, QStringLiteral("Other"), false, true), 1);
    }

    void byItemData()
    {
        QComboBox combo;
        combo.addItem(QStringLiteral("(none)"));
        combo.addItem(QStringLiteral("Spirometry QC"), 20);
        combo.addItem(QStringLiteral("20"), 30);
        combo.addItem(QStringLiteral("Named"), QStringLiteral("key"));
        QCOMPARE(FindComboItem(&combo, 20, true, false), 1);
        QCOMPARE(FindComboItem(&combo, QStringLiteral("30"), true, false), 2); // numbers compare as text
        QCOMPARE(FindComboItem(&combo, 20, false, false), 2);                  // the entry's text, not its data
        QCOMPARE(FindComboItem(&combo, QStringLiteral("KEY"), true, false), 3);
        QCOMPARE(FindComboItem(&combo, QStringLiteral("KEY"), true, true), -1);
        QCOMPARE(FindComboItem(&combo, 0, true, false), 0); // an entry without item data carries 0
        QCOMPARE(FindComboItem(&combo, 99, true, false), -1);
    }
};

CALVEX_TEST(TestFindComboItem)
#include "TestFindComboItem.moc"
