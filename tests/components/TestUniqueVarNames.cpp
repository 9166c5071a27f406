#include "common/TestMain.h"
#include "components/UniqueVarNames.h"

#include <QTest>

class TestUniqueVarNames : public QObject
{
    Q_OBJECT

    static QStringList uniqueOf(const QStringList& names)
    {
        UniqueVarNames unique;
        QStringList result;
        for (const QString& name : names)
            result.append(unique.MakeUnique(name));
        return result;
    }

private slots:
    void firstOccurrencesStayAsTheyAre()
    {
        QCOMPARE(uniqueOf({QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("PEF")}),
                 QStringList({QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("PEF")}));
    }

    void repeatsAreNumberedFromOne()
    {
        QCOMPARE(uniqueOf({QStringLiteral("X"), QStringLiteral("X"), QStringLiteral("X")}),
                 QStringList({QStringLiteral("X"), QStringLiteral("X (1)"), QStringLiteral("X (2)")}));
    }

    void caseDoesNotMatterButSpellingIsKept()
    {
        QCOMPARE(uniqueOf({QStringLiteral("X"), QStringLiteral("x"), QStringLiteral("X")}),
                 QStringList({QStringLiteral("X"), QStringLiteral("x (1)"), QStringLiteral("X (2)")}));
        QCOMPARE(uniqueOf({QStringLiteral("Vx"), QStringLiteral("vx"), QStringLiteral("Vx")}),
                 QStringList({QStringLiteral("Vx"), QStringLiteral("vx (1)"), QStringLiteral("Vx (2)")}));
    }

    void eachNameHasItsOwnCounter()
    {
        QCOMPARE(uniqueOf({QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("fvc"), QStringLiteral("FEV1"),
                           QStringLiteral("FVC")}),
                 QStringList({QStringLiteral("FVC"), QStringLiteral("FEV1"), QStringLiteral("fvc (1)"),
                              QStringLiteral("FEV1 (1)"), QStringLiteral("FVC (2)")}));
    }

    void namesThatDifferOnlyInBlanksAreDifferent()
    {
        QCOMPARE(uniqueOf({QStringLiteral("FVC"), QStringLiteral("FVC "), QStringLiteral("")}),
                 QStringList({QStringLiteral("FVC"), QStringLiteral("FVC "), QStringLiteral("")}));
        QCOMPARE(uniqueOf({QStringLiteral(""), QStringLiteral("")}),
                 QStringList({QStringLiteral(""), QStringLiteral(" (1)")}));
    }

    void onlyTheGivenNamesAreCounted()
    {
        // A suffixed result is not remembered: a later name that happens to
        // read the same is a first occurrence of its own.
        QCOMPARE(uniqueOf({QStringLiteral("X"), QStringLiteral("X"), QStringLiteral("X (1)")}),
                 QStringList({QStringLiteral("X"), QStringLiteral("X (1)"), QStringLiteral("X (1)")}));
    }

    void clearStartsAfresh()
    {
        UniqueVarNames unique;
        QCOMPARE(unique.MakeUnique(QStringLiteral("SpO2")), QStringLiteral("SpO2"));
        QCOMPARE(unique.MakeUnique(QStringLiteral("spo2")), QStringLiteral("spo2 (1)"));
        unique.Clear();
        QCOMPARE(unique.MakeUnique(QStringLiteral("SPO2")), QStringLiteral("SPO2"));
        QCOMPARE(unique.MakeUnique(QStringLiteral("SpO2")), QStringLiteral("SpO2 (1)"));
    }

    void lettersBeyondAsciiIgnoreCaseToo()
    {
        QCOMPARE(uniqueOf({QStringLiteral("Ödem"), QStringLiteral("ÖDEM"), QStringLiteral("ödem")}),
                 QStringList({QStringLiteral("Ödem"), QStringLiteral("ÖDEM (1)"), QStringLiteral("ödem (2)")}));
    }
};

CALVEX_TEST(TestUniqueVarNames)
#include "TestUniqueVarNames.moc"
