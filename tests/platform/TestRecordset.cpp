#include "common/TestMain.h"

#include "ErrorNumberOf.h"

#include "platform/Recordset.h"
#include "platform/RuntimeError.h"

#include <QDateTime>
#include <QTest>

#include <functional>

namespace
{
using ErrorNumber::ArgumentsOutOfRange;
using ErrorNumber::ItemNotFound;
using ErrorNumber::NoCurrentRecord;
using ErrorNumber::ObjectClosed;

// Five visits in their natural order; "Id" names each record.
Recordset visits()
{
    return Recordset(QStringList{QStringLiteral("Id"), QStringLiteral("Visit Date"), QStringLiteral("FVC")},
                     {
                         {1, QDate(2024, 3, 2), 3.5},
                         {2, QDate(2024, 1, 5), 10.0},
                         {3, QDate(2023, 12, 31), 9.25},
                         {4, QDate(2024, 2, 1), 3.5},
                         {5, QDate(2024, 1, 20), QVariant()},
                     });
}

// The ids of every record from the first to the last in the current order.
QList<int> idsForward(Recordset& rs)
{
    QList<int> ids;
    rs.MoveFirst();
    while (!rs.IsEOF())
    {
        ids << rs.Value(QStringLiteral("Id")).toInt();
        rs.MoveNext();
    }
    return ids;
}

QList<int> idsBackward(Recordset& rs)
{
    QList<int> ids;
    rs.MoveLast();
    while (!rs.IsBOF())
    {
        ids << rs.Value(QStringLiteral("Id")).toInt();
        rs.MovePrevious();
    }
    return ids;
}

// One record set per field with the given values, sorted by that field.
QList<QVariant> sortedValues(const QVariantList& values, const QString& direction)
{
    Recordset rs(QStringList{QStringLiteral("V")});
    for (const QVariant& value : values)
        rs.AppendRow({value});
    rs.Sort(QStringLiteral("V ") + direction);
    QList<QVariant> sorted;
    for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext())
        sorted << rs.Value(0);
    return sorted;
}

using Operation = std::function<void(Recordset&)>;
} // namespace

Q_DECLARE_METATYPE(Operation)

class TestRecordset : public QObject
{
    Q_OBJECT

private slots:
    void emptySetIsAtBothEnds()
    {
        Recordset rs(QStringList{QStringLiteral("A")});
        QVERIFY(rs.IsBOF());
        QVERIFY(rs.IsEOF());
        QCOMPARE(rs.RecordCount(), 0);
        QCOMPARE(rs.AbsolutePosition(), Recordset::PositionUnknown);
        QCOMPARE(ErrorNumberOf([&] { rs.MoveFirst(); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.MoveLast(); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.MoveNext(); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.MovePrevious(); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.Value(0); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.Bookmark(); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.SetAbsolutePosition(1); }), ArgumentsOutOfRange);
        QCOMPARE(ErrorNumberOf([&] { rs.SetBookmark(1.0); }), ArgumentsOutOfRange);
        rs.Sort(QStringLiteral("A DESC"));
        QVERIFY(rs.IsBOF() && rs.IsEOF());
    }

    void newSetStandsOnItsFirstRecord()
    {
        Recordset rs = visits();
        QCOMPARE(rs.State(), int(Recordset::StateOpen));
        QVERIFY(rs.IsOpen());
        QVERIFY(!rs.IsBOF());
        QVERIFY(!rs.IsEOF());
        QCOMPARE(rs.AbsolutePosition(), 1);
        QCOMPARE(rs.Value(0).toInt(), 1);
    }

    void fieldsByNameAndPosition()
    {
        Recordset rs = visits();
        QCOMPARE(rs.FieldCount(), 3);
        QCOMPARE(rs.FieldName(0), QStringLiteral("Id"));
        QCOMPARE(rs.FieldName(1), QStringLiteral("Visit Date"));
        QCOMPARE(rs.FieldName(2), QStringLiteral("FVC"));
        QCOMPARE(rs.FieldIndex(QStringLiteral("Visit Date")), 1);
        QCOMPARE(rs.FieldIndex(QStringLiteral("visit date")), 1);
        QCOMPARE(rs.FieldIndex(QStringLiteral("fvc")), 2);
        QCOMPARE(rs.FieldIndex(QStringLiteral("FEV1")), -1);

        rs.MoveNext();
        QCOMPARE(rs.Value(QStringLiteral("VISIT DATE")), QVariant(QDate(2024, 1, 5)));
        QCOMPARE(rs.Value(1), QVariant(QDate(2024, 1, 5)));
        QCOMPARE(rs.Value(QStringLiteral("Fvc")), QVariant(10.0));
        QCOMPARE(rs.Value(QStringLiteral("id")), QVariant(2));
    }

    void unknownFieldRaises3265()
    {
        Recordset rs = visits();
        QCOMPARE(ErrorNumberOf([&] { rs.Value(QStringLiteral("FEV1")); }), ItemNotFound);
        QCOMPARE(ErrorNumberOf([&] { rs.Value(3); }), ItemNotFound);
        QCOMPARE(ErrorNumberOf([&] { rs.Value(-1); }), ItemNotFound);
        QCOMPARE(ErrorNumberOf([&] { rs.FieldName(3); }), ItemNotFound);
        QCOMPARE(ErrorNumberOf([&] { rs.FieldName(-1); }), ItemNotFound);
        QCOMPARE(ErrorNumberOf([&] { rs.Sort(QStringLiteral("FEV1 ASC")); }), ItemNotFound);
    }

    void repeatedFieldNameFindsTheFirst()
    {
        Recordset rs(QStringList{QStringLiteral("A"), QStringLiteral("a")}, {{1, 2}});
        QCOMPARE(rs.FieldIndex(QStringLiteral("A")), 0);
        QCOMPARE(rs.Value(QStringLiteral("a")), QVariant(1));
        QCOMPARE(rs.Value(1), QVariant(2));
    }

    void shortRowsReadNullInTheirMissingFields()
    {
        Recordset rs(QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}, {{1}, {2, 3, 4, 5}});
        QCOMPARE(rs.Value(0), QVariant(1));
        QVERIFY(rs.Value(1).isNull());
        QVERIFY(rs.Value(QStringLiteral("C")).isNull());
        rs.MoveNext();
        QCOMPARE(rs.Value(2), QVariant(4));
        QCOMPARE(ErrorNumberOf([&] { rs.Value(3); }), ItemNotFound);

        rs.AppendRow({6});
        rs.MoveLast();
        QCOMPARE(rs.Value(0), QVariant(6));
        QVERIFY(rs.Value(2).isNull());
    }

    void valueAtBofAndEofRaises3021()
    {
        Recordset rs = visits();
        rs.MovePrevious();
        QVERIFY(rs.IsBOF());
        QVERIFY(!rs.IsEOF());
        QCOMPARE(ErrorNumberOf([&] { rs.Value(0); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.Value(QStringLiteral("Id")); }), NoCurrentRecord);
        rs.MoveLast();
        rs.MoveNext();
        QVERIFY(rs.IsEOF());
        QVERIFY(!rs.IsBOF());
        QCOMPARE(ErrorNumberOf([&] { rs.Value(0); }), NoCurrentRecord);
        QCOMPARE(ErrorNumberOf([&] { rs.Value(QStringLiteral("FVC")); }), NoCurrentRecord);
    }

    void movingPastEitherEndRaises3021()
    {
        Recordset rs = visits();
        rs.MoveLast();
        rs.MoveNext();
        QCOMPARE(ErrorNumberOf([&] { rs.MoveNext(); }), NoCurrentRecord);
        QVERIFY(rs.IsEOF());
        QCOMPARE(rs.AbsolutePosition(), Recordset::PositionEOF);

        rs.MoveFirst();
        rs.MovePrevious();
        QCOMPARE(ErrorNumberOf([&] { rs.MovePrevious(); }), NoCurrentRecord);
        QVERIFY(rs.IsBOF());
        QCOMPARE(rs.AbsolutePosition(), Recordset::PositionBOF);
    }

    void walkingBothWays()
    {
        Recordset rs = visits();
        QCOMPARE(idsForward(rs), (QList<int>{1, 2, 3, 4, 5}));
        QVERIFY(rs.IsEOF());
        rs.MovePrevious();
        QCOMPARE(rs.Value(0), QVariant(5)); // back from EOF onto the last record

        QCOMPARE(idsBackward(rs), (QList<int>{5, 4, 3, 2, 1}));
        QVERIFY(rs.IsBOF());
        rs.MoveNext();
        QCOMPARE(rs.Value(0), QVariant(1)); // on from BOF onto the first record

        rs.MoveLast();
        QCOMPARE(rs.Value(0), QVariant(5));
        rs.MoveFirst();
        QCOMPARE(rs.Value(0), QVariant(1));
    }

    void closedSetRaises3704_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::newRow("Close") << Operation([](Recordset& rs) { rs.Close(); });
        QTest::newRow("FieldCount") << Operation([](Recordset& rs) { rs.FieldCount(); });
        QTest::newRow("FieldName") << Operation([](Recordset& rs) { rs.FieldName(0); });
        QTest::newRow("FieldIndex") << Operation([](Recordset& rs) { rs.FieldIndex(QStringLiteral("Id")); });
        QTest::newRow("Value by position") << Operation([](Recordset& rs) { rs.Value(0); });
        QTest::newRow("Value by name") << Operation([](Recordset& rs) { rs.Value(QStringLiteral("Id")); });
        QTest::newRow("IsBOF") << Operation([](Recordset& rs) { rs.IsBOF(); });
        QTest::newRow("IsEOF") << Operation([](Recordset& rs) { rs.IsEOF(); });
        QTest::newRow("MoveFirst") << Operation([](Recordset& rs) { rs.MoveFirst(); });
        QTest::newRow("MoveNext") << Operation([](Recordset& rs) { rs.MoveNext(); });
        QTest::newRow("MovePrevious") << Operation([](Recordset& rs) { rs.MovePrevious(); });
        QTest::newRow("MoveLast") << Operation([](Recordset& rs) { rs.MoveLast(); });
        QTest::newRow("RecordCount") << Operation([](Recordset& rs) { rs.RecordCount(); });
        QTest::newRow("Sort") << Operation([](Recordset& rs) { rs.Sort(QStringLiteral("Id ASC")); });
        QTest::newRow("SortCriteria") << Operation([](Recordset& rs) { rs.SortCriteria(); });
        QTest::newRow("Bookmark") << Operation([](Recordset& rs) { rs.Bookmark(); });
        QTest::newRow("SetBookmark") << Operation([](Recordset& rs) { rs.SetBookmark(1.0); });
        QTest::newRow("AbsolutePosition") << Operation([](Recordset& rs) { rs.AbsolutePosition(); });
        QTest::newRow("SetAbsolutePosition") << Operation([](Recordset& rs) { rs.SetAbsolutePosition(1); });
        QTest::newRow("AppendRow") << Operation([](Recordset& rs) { rs.AppendRow({6}); });
    }

    void closedSetRaises3704()
    {
        QFETCH(Operation, operation);
        Recordset rs = visits();
        rs.Close();
        QCOMPARE(ErrorNumberOf([&] { operation(rs); }), ObjectClosed);

        Recordset neverOpened;
        QCOMPARE(ErrorNumberOf([&] { operation(neverOpened); }), ObjectClosed);
    }

    void closeAndState()
    {
        Recordset rs = visits();
        QCOMPARE(rs.State(), int(Recordset::StateOpen));
        rs.Close();
        QCOMPARE(rs.State(), int(Recordset::StateClosed));
        QVERIFY(!rs.IsOpen());

        Recordset neverOpened;
        QCOMPARE(neverOpened.State(), int(Recordset::StateClosed));
        QVERIFY(!neverOpened.IsOpen());
    }

    void sortAscendingAndDescending()
    {
        Recordset rs = visits();
        rs.Sort(QStringLiteral("Visit Date ASC"));
        QCOMPARE(rs.SortCriteria(), QStringLiteral("Visit Date ASC"));
        QCOMPARE(idsForward(rs), (QList<int>{3, 2, 5, 4, 1}));
        rs.Sort(QStringLiteral("Visit Date DESC"));
        QCOMPARE(idsForward(rs), (QList<int>{1, 4, 5, 2, 3}));
        QCOMPARE(idsBackward(rs), (QList<int>{3, 2, 5, 4, 1}));
        rs.Sort(QStringLiteral("[Visit Date]"));
        QCOMPARE(idsForward(rs), (QList<int>{3, 2, 5, 4, 1}));
        rs.Sort(QStringLiteral("visit date desc"));
        QCOMPARE(idsForward(rs), (QList<int>{1, 4, 5, 2, 3}));
    }

    void sortByTwoKeys()
    {
        Recordset rs = visits();
        // FVC: 3.5 (ids 1 and 4), 9.25, 10, null; the tie is broken by the date, latest first.
        rs.Sort(QStringLiteral("FVC ASC, Visit Date DESC"));
        QCOMPARE(idsForward(rs), (QList<int>{5, 1, 4, 3, 2}));
        rs.Sort(QStringLiteral("FVC ASC,Visit Date ASC"));
        QCOMPARE(idsForward(rs), (QList<int>{5, 4, 1, 3, 2}));
        rs.Sort(QStringLiteral("FVC DESC, Id DESC"));
        QCOMPARE(idsForward(rs), (QList<int>{2, 3, 4, 1, 5}));
    }

    void emptyCriteriaRestoreTheNaturalOrder()
    {
        Recordset rs = visits();
        rs.Sort(QStringLiteral("Id DESC"));
        rs.Sort(QString());
        QCOMPARE(rs.SortCriteria(), QString());
        QCOMPARE(idsForward(rs), (QList<int>{1, 2, 3, 4, 5}));
    }

    void failedSortLeavesTheOrder()
    {
        Recordset rs = visits();
        rs.Sort(QStringLiteral("Id DESC"));
        rs.MoveFirst();
        QCOMPARE(ErrorNumberOf([&] { rs.Sort(QStringLiteral("Id ASC, FEV1 ASC")); }), ItemNotFound);
        QCOMPARE(rs.SortCriteria(), QStringLiteral("Id DESC"));
        QCOMPARE(rs.Value(0), QVariant(5));
        QCOMPARE(idsForward(rs), (QList<int>{5, 4, 3, 2, 1}));
    }

    void equalKeysKeepTheNaturalOrder()
    {
        Recordset rs(QStringList{QStringLiteral("Id"), QStringLiteral("Key")},
                     {{1, 2}, {2, 1}, {3, 2}, {4, 1}, {5, 2}, {6, 1}});
        rs.Sort(QStringLiteral("Key ASC"));
        QCOMPARE(idsForward(rs), (QList<int>{2, 4, 6, 1, 3, 5}));
        rs.Sort(QStringLiteral("Key DESC"));
        QCOMPARE(idsForward(rs), (QList<int>{1, 3, 5, 2, 4, 6}));
        // Sorting again starts from the natural order, not from the order of the last sort.
        rs.Sort(QStringLiteral("Id DESC"));
        rs.Sort(QStringLiteral("Key ASC"));
        QCOMPARE(idsForward(rs), (QList<int>{2, 4, 6, 1, 3, 5}));
    }

    void sortKeepsTheCurrentRecord()
    {
        Recordset rs = visits();
        rs.MoveNext();
        rs.MoveNext(); // id 3, the earliest visit
        rs.Sort(QStringLiteral("Visit Date ASC"));
        QCOMPARE(rs.Value(0), QVariant(3));
        QCOMPARE(rs.AbsolutePosition(), 1);
        rs.Sort(QStringLiteral("Visit Date DESC"));
        QCOMPARE(rs.Value(0), QVariant(3));
        QCOMPARE(rs.AbsolutePosition(), 5);
        rs.MoveNext();
        QVERIFY(rs.IsEOF());
        rs.Sort(QStringLiteral("Id ASC"));
        QVERIFY(rs.IsEOF());
        rs.MoveFirst();
        rs.MovePrevious();
        rs.Sort(QStringLiteral("Id DESC"));
        QVERIFY(rs.IsBOF());
        QVERIFY(!rs.IsEOF());
    }

    void sortOrdersNullsFirst()
    {
        const QVariantList values{3, QVariant(), 1, QVariant(QMetaType(QMetaType::Int)), 2};
        const QList<QVariant> ascending = sortedValues(values, QStringLiteral("ASC"));
        QVERIFY(ascending.at(0).isNull());
        QVERIFY(ascending.at(1).isNull());
        QCOMPARE(ascending.mid(2), (QList<QVariant>{1, 2, 3}));
        const QList<QVariant> descending = sortedValues(values, QStringLiteral("DESC"));
        QCOMPARE(descending.mid(0, 3), (QList<QVariant>{3, 2, 1}));
        QVERIFY(descending.at(3).isNull());
        QVERIFY(descending.at(4).isNull());
    }

    void sortOrdersNumbersByValue()
    {
        QCOMPARE(sortedValues({10, 9.5, -2, qint64(100), 0.25}, QStringLiteral("ASC")),
                 (QList<QVariant>{-2, 0.25, 9.5, 10, qint64(100)}));
    }

    void sortOrdersDatesByDate()
    {
        const QDateTime morning(QDate(2024, 3, 7), QTime(9, 0));
        QCOMPARE(
            sortedValues({QDate(2024, 3, 8), morning, QDate(2024, 3, 7), QDate(1999, 12, 31)}, QStringLiteral("ASC")),
            (QList<QVariant>{QDate(1999, 12, 31), QDate(2024, 3, 7), morning, QDate(2024, 3, 8)}));
    }

    void sortOrdersTextWithoutRegardToCase()
    {
        QCOMPARE(sortedValues({QStringLiteral("beta"), QStringLiteral("ALPHA2"), QStringLiteral("Gamma"),
                               QStringLiteral("alpha")},
                              QStringLiteral("ASC")),
                 (QList<QVariant>{QStringLiteral("alpha"), QStringLiteral("ALPHA2"), QStringLiteral("beta"),
                                  QStringLiteral("Gamma")}));
        // Numbers held as text order as text.
        QCOMPARE(sortedValues({QStringLiteral("9"), QStringLiteral("10")}, QStringLiteral("ASC")),
                 (QList<QVariant>{QStringLiteral("10"), QStringLiteral("9")}));
    }

    void compareFieldValues()
    {
        QCOMPARE(CompareFieldValues(QVariant(), QVariant(QMetaType(QMetaType::Double))), 0);
        QCOMPARE(CompareFieldValues(QVariant(), 0), -1);
        QCOMPARE(CompareFieldValues(0, QVariant()), 1);
        QCOMPARE(CompareFieldValues(9, 10.0), -1);
        QCOMPARE(CompareFieldValues(10.0, 10), 0);
        QCOMPARE(CompareFieldValues(QDate(2024, 1, 2), QDate(2023, 12, 31)), 1);
        QCOMPARE(CompareFieldValues(QDate(2024, 1, 2), QDateTime(QDate(2024, 1, 2), QTime(0, 0))), 0);
        QCOMPARE(CompareFieldValues(QStringLiteral("abc"), QStringLiteral("ABC")), 0);
        QVERIFY(CompareFieldValues(QStringLiteral("Zeta"), QStringLiteral("alpha")) > 0);
    }

    void bookmarksReturnToTheirRecord()
    {
        Recordset rs = visits();
        rs.MoveNext();
        rs.MoveNext();
        const QVariant third = rs.Bookmark();
        rs.MoveLast();
        const QVariant last = rs.Bookmark();
        QVERIFY(third != last);
        rs.SetBookmark(third);
        QCOMPARE(rs.Value(0), QVariant(3));
        rs.MoveLast();
        rs.MoveNext();
        rs.SetBookmark(last); // from EOF
        QCOMPARE(rs.Value(0), QVariant(5));
        QCOMPARE(rs.AbsolutePosition(), 5);
    }

    void bookmarksSurviveSorting()
    {
        Recordset rs = visits();
        rs.MoveNext(); // id 2
        const QVariant second = rs.Bookmark();
        rs.Sort(QStringLiteral("Visit Date DESC"));
        QCOMPARE(rs.Bookmark(), second);
        rs.MoveFirst();
        QCOMPARE(rs.Value(0), QVariant(1));
        rs.SetBookmark(second);
        QCOMPARE(rs.Value(0), QVariant(2));
        QCOMPARE(rs.AbsolutePosition(), 4);
        rs.MoveNext();
        QCOMPARE(rs.Value(0), QVariant(3)); // the walk goes on in the sorted order
    }

    void badBookmarksRaise3001()
    {
        Recordset rs = visits();
        rs.MoveNext();
        for (const QVariant& bad :
             {QVariant(0.0), QVariant(6.0), QVariant(1.5), QVariant(-1), QVariant(QStringLiteral("abc")), QVariant()})
        {
            QCOMPARE(ErrorNumberOf([&] { rs.SetBookmark(bad); }), ArgumentsOutOfRange);
            QCOMPARE(rs.Value(0), QVariant(2)); // the cursor stays where it was
        }
        rs.MoveFirst();
        rs.MovePrevious();
        QCOMPARE(ErrorNumberOf([&] { rs.Bookmark(); }), NoCurrentRecord);
        rs.MoveLast();
        rs.MoveNext();
        QCOMPARE(ErrorNumberOf([&] { rs.Bookmark(); }), NoCurrentRecord);
    }

    void absolutePositionFollowsTheCursor()
    {
        Recordset rs = visits();
        QList<qint32> positions;
        for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext())
            positions << rs.AbsolutePosition();
        QCOMPARE(positions, (QList<qint32>{1, 2, 3, 4, 5}));
        QCOMPARE(rs.AbsolutePosition(), Recordset::PositionEOF);
        rs.MoveFirst();
        rs.MovePrevious();
        QCOMPARE(rs.AbsolutePosition(), Recordset::PositionBOF);
    }

    void settingAbsolutePositionMovesTheCursor()
    {
        Recordset rs = visits();
        rs.Sort(QStringLiteral("Visit Date ASC"));
        rs.SetAbsolutePosition(1);
        QCOMPARE(rs.Value(0), QVariant(3));
        rs.SetAbsolutePosition(5);
        QCOMPARE(rs.Value(0), QVariant(1));
        QCOMPARE(rs.AbsolutePosition(), 5);
        rs.MoveNext();
        rs.SetAbsolutePosition(2); // from EOF
        QCOMPARE(rs.Value(0), QVariant(2));

        for (const qint32 bad : {0, 6, -1, Recordset::PositionBOF})
        {
            QCOMPARE(ErrorNumberOf([&] { rs.SetAbsolutePosition(bad); }), ArgumentsOutOfRange);
            QCOMPARE(rs.AbsolutePosition(), 2);
        }
    }

    void recordCount()
    {
        Recordset rs = visits();
        QCOMPARE(rs.RecordCount(), 5);
        rs.AppendRow({6, QDate(2024, 4, 1), 4.0});
        QCOMPARE(rs.RecordCount(), 6);
        rs.SetRecordCountKnown(false);
        QCOMPARE(rs.RecordCount(), -1);
        QCOMPARE(idsForward(rs).size(), 6); // the records are there all the same
        rs.SetRecordCountKnown(true);
        QCOMPARE(rs.RecordCount(), 6);
    }

    void appendRowBuildsTheSet()
    {
        Recordset rs(QStringList{QStringLiteral("A"), QStringLiteral("B")});
        rs.AppendRow({1, QStringLiteral("x")});
        QVERIFY(!rs.IsBOF());
        QVERIFY(!rs.IsEOF());
        rs.AppendRow({2, QStringLiteral("y"), QStringLiteral("dropped")});
        QCOMPARE(rs.Value(0), QVariant(1)); // still on the first record
        rs.MoveLast();
        QCOMPARE(rs.Value(QStringLiteral("B")), QVariant(QStringLiteral("y")));
        QCOMPARE(rs.FieldCount(), 2);
        QCOMPARE(rs.RecordCount(), 2);
    }
};

CALVEX_TEST(TestRecordset)
#include "TestRecordset.moc"
