#include "common/TestMain.h"
#include "platform/Recordset.h"

#include <QDate>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <vector>

namespace
{
// Row numbers (field "Id") in the record set's current order.
QList<int> Order(Recordset& rs)
{
    QList<int> ids;
    for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext())
        ids.append(rs.Value(0).toInt());
    return ids;
}

// The order a stable sort by CompareFieldValues gives, key by key.
QList<int> Expected(const std::vector<QVariantList>& rows, const std::vector<std::pair<int, bool>>& keys)
{
    std::vector<int> order(rows.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        for (const auto& [field, descending] : keys)
        {
            int c = CompareFieldValues(rows[size_t(a)].at(field), rows[size_t(b)].at(field));
            if (descending)
                c = -c;
            if (c != 0)
                return c < 0;
        }
        return false;
    });
    QList<int> ids;
    for (int row : order)
        ids.append(rows[size_t(row)].at(0).toInt());
    return ids;
}

// Rows of: Id, a number (some null, many repeated, of several number
// types), a day (some null, many repeated), numbers and days mixed, numbers
// and texts mixed.
std::vector<QVariantList> Rows(int count)
{
    QRandomGenerator random(11);
    std::vector<QVariantList> rows;
    for (int id = 0; id < count; ++id)
    {
        const int pick = random.bounded(10);
        QVariant number;
        if (pick == 0)
            number = QVariant();
        else if (pick == 1)
            number = QVariant(QMetaType(QMetaType::Double)); // a typed null, as a database gives
        else if (pick == 2)
            number = QVariant(random.bounded(5));
        else if (pick == 3)
            number = QVariant(random.bounded(2) == 1);
        else
            number = QVariant(double(random.bounded(40)) / 8 - 1);
        const QVariant day = pick == 5 ? QVariant() : QVariant(QDate(2024, 1, 1).addDays(random.bounded(30)));
        const QVariant numberOrDay = random.bounded(2) ? number : day;
        const QVariant numberOrText =
            random.bounded(3) ? number : QVariant(QStringLiteral("t%1").arg(random.bounded(4)));
        rows.push_back({QVariant(id), number, day, numberOrDay, numberOrText});
    }
    return rows;
}
} // namespace

// Sorting reads plain numbers and days once per row; the order must stay
// exactly that of comparing the values pair by pair.
class TestRecordsetSort : public QObject
{
    Q_OBJECT

private slots:
    void ordersAsComparingTheValuesDoes_data()
    {
        QTest::addColumn<QString>("criteria");
        QTest::addColumn<QList<int>>("fields");      // key fields, in order
        QTest::addColumn<QList<bool>>("descending"); // per key

        QTest::newRow("number") << QStringLiteral("Number ASC") << QList<int>{1} << QList<bool>{false};
        QTest::newRow("number desc") << QStringLiteral("Number DESC") << QList<int>{1} << QList<bool>{true};
        QTest::newRow("day") << QStringLiteral("Day") << QList<int>{2} << QList<bool>{false};
        QTest::newRow("day desc, number")
            << QStringLiteral("Day DESC, Number ASC") << QList<int>{2, 1} << QList<bool>{true, false};
        QTest::newRow("numbers and days") << QStringLiteral("NumberOrDay") << QList<int>{3} << QList<bool>{false};
        QTest::newRow("numbers and texts") << QStringLiteral("NumberOrText DESC") << QList<int>{4} << QList<bool>{true};
        QTest::newRow("mixed, then plain")
            << QStringLiteral("NumberOrText, Day DESC") << QList<int>{4, 2} << QList<bool>{false, true};
    }

    void ordersAsComparingTheValuesDoes()
    {
        QFETCH(QString, criteria);
        QFETCH(QList<int>, fields);
        QFETCH(QList<bool>, descending);

        const std::vector<QVariantList> rows = Rows(2000);
        Recordset rs({QStringLiteral("Id"), QStringLiteral("Number"), QStringLiteral("Day"),
                      QStringLiteral("NumberOrDay"), QStringLiteral("NumberOrText")},
                     rows);
        std::vector<std::pair<int, bool>> keys;
        for (int i = 0; i < fields.size(); ++i)
            keys.emplace_back(fields.at(i), descending.at(i));

        rs.Sort(criteria);
        const QList<int> order = Order(rs);
        QCOMPARE(order, Expected(rows, keys));
        // Not the natural order: the sort did something.
        QList<int> natural(order.size());
        std::iota(natural.begin(), natural.end(), 0);
        QVERIFY(order != natural);

        // And back.
        rs.Sort(QString());
        QCOMPARE(Order(rs), natural);
    }

    void theCurrentRecordStaysCurrent()
    {
        const std::vector<QVariantList> rows = Rows(50);
        Recordset rs({QStringLiteral("Id"), QStringLiteral("Number"), QStringLiteral("Day"),
                      QStringLiteral("NumberOrDay"), QStringLiteral("NumberOrText")},
                     rows);
        rs.MoveFirst();
        for (int i = 0; i < 17; ++i)
            rs.MoveNext();
        rs.Sort(QStringLiteral("Day DESC"));
        QCOMPARE(rs.Value(0).toInt(), 17);
    }
};

CALVEX_TEST(TestRecordsetSort)
#include "TestRecordsetSort.moc"
