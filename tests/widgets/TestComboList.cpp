#include "common/TestMain.h"
#include "platform/RuntimeError.h"
#include "widgets/ComboList.h"

#include <QSignalSpy>
#include <QTest>

class TestComboList : public QObject
{
    Q_OBJECT

private slots:
    void fillingSelectsNothingAndSignalsNothing()
    {
        QComboBox list;
        QSignalSpy spy(&list, &QComboBox::currentIndexChanged);
        ComboList::AddItem(&list, QStringLiteral("first"));
        ComboList::AddItem(&list, QStringLiteral("second"));
        QCOMPARE(list.count(), 2);
        QCOMPARE(list.currentIndex(), -1);
        QCOMPARE(spy.count(), 0);
        ComboList::SetListIndex(&list, 1);
        QCOMPARE(spy.count(), 1);
        ComboList::AddItem(&list, QStringLiteral("third"));
        QCOMPARE(list.currentIndex(), 1);
        ComboList::Clear(&list);
        QCOMPARE(list.count(), 0);
        QCOMPARE(spy.count(), 1);
    }

    void positionThatDoesNotExistIsInvalid()
    {
        QComboBox list;
        ComboList::AddItem(&list, QStringLiteral("only"));
        ComboList::SetListIndex(&list, -1);
        QCOMPARE(list.currentIndex(), -1);
        try
        {
            ComboList::SetListIndex(&list, 1);
            QFAIL("position 1 of a one-item list must be refused");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 380);
            QCOMPARE(error.description(), QStringLiteral("Invalid property value"));
        }
        QVERIFY_THROWS_EXCEPTION(RuntimeError, ComboList::SetListIndex(&list, -2));
    }

    void itemDataIsA32BitNumberPerItem()
    {
        QComboBox list;
        ComboList::AddItem(&list, QStringLiteral("a"));
        ComboList::AddItem(&list, QStringLiteral("b"));
        QCOMPARE(ComboList::ItemData(&list, 1), 0);
        ComboList::SetItemData(&list, 1, 4711);
        QCOMPARE(ComboList::ItemData(&list, 1), 4711);
        QCOMPARE(list.itemData(1).toInt(), 4711);
        try
        {
            ComboList::ItemData(&list, -1);
            QFAIL("item -1 has no data");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), 381);
        }
    }
};

CALVEX_TEST(TestComboList)
#include "TestComboList.moc"
