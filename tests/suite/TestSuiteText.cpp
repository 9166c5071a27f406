#include "common/TestMain.h"

#include "SuiteTestDatabase.h"
#include "suite/NorrixPatientQuery.h"
#include "suite/SuiteDataLoader.h"
#include "suite/SuiteText.h"

#include <QTest>

// Search keys, LIKE patterns and the key ranges the patient search is made of.
class TestSuiteText : public QObject
{
    Q_OBJECT

private:
    static QString fromUcs4(std::u32string points) { return QString::fromStdU32String(points); }

private slots:
    void likePatternsMatchTheirTextLiterally()
    {
        QCOMPARE(SuiteText::likePrefix(QStringLiteral("a%b_c!d")), QStringLiteral("a!%b!_c!!d%"));
        QCOMPARE(SuiteText::likePrefix(QString()), QStringLiteral("%"));
    }

    void literalPrefixEndsAtTheFirstWildcard()
    {
        QCOMPARE(SuiteText::likeLiteralPrefix(QStringLiteral("abc%")), QStringLiteral("abc"));
        QCOMPARE(SuiteText::likeLiteralPrefix(QStringLiteral("ab_c%")), QStringLiteral("ab"));
        QCOMPARE(SuiteText::likeLiteralPrefix(QStringLiteral("a!%b!_c!!d%")), QStringLiteral("a%b_c!d"));
        QCOMPARE(SuiteText::likeLiteralPrefix(QStringLiteral("%abc")), QString());
        QCOMPARE(SuiteText::likeLiteralPrefix(QStringLiteral("abc")), QStringLiteral("abc"));
        QCOMPARE(SuiteText::likeLiteralPrefix(QStringLiteral("ab!")), QStringLiteral("ab"));
        QCOMPARE(SuiteText::likeLiteralPrefix(SuiteText::likePrefix(QStringLiteral("o'brien"))),
                 QStringLiteral("o'brien"));
    }

    void successorFollowsEveryTextWithThePrefix()
    {
        QCOMPARE(SuiteText::prefixSuccessor(QStringLiteral("abc")), QStringLiteral("abd"));
        QCOMPARE(SuiteText::prefixSuccessor(QStringLiteral("qc-00")), QStringLiteral("qc-01"));
        QCOMPARE(SuiteText::prefixSuccessor(QStringLiteral("öl")), QStringLiteral("öm"));
        QCOMPARE(SuiteText::prefixSuccessor(QStringLiteral("a%")), QStringLiteral("a&"));
        // Outside the first plane: a pair of surrogates in the string.
        QCOMPARE(SuiteText::prefixSuccessor(fromUcs4(U"x\U0001F600")), fromUcs4(U"x\U0001F601"));
        QCOMPARE(SuiteText::prefixSuccessor(fromUcs4(U"x\uFFFF")), fromUcs4(U"x\U00010000"));
        QCOMPARE(SuiteText::prefixSuccessor(fromUcs4(U"x\uD7FF")), fromUcs4(U"x\uE000"));
        QCOMPARE(SuiteText::prefixSuccessor(fromUcs4(U"x\U0010FFFF")), QStringLiteral("y"));
        QVERIFY(SuiteText::prefixSuccessor(fromUcs4(U"\U0010FFFF\U0010FFFF")).isNull());
        QVERIFY(SuiteText::prefixSuccessor(QString()).isNull());
    }

    // The ranges find exactly the keys that start with the search text, at
    // the edges of the range too, on each database.
    void rangeSearchFindsExactlyThePrefixMatches()
    {
        SuiteTestDatabase test;
        test.createSchema();
        const QStringList ids{QStringLiteral("ab"),      QStringLiteral("aB1"),     QStringLiteral("ac"),
                              QStringLiteral("aa"),      fromUcs4(U"ab\U0010FFFF"), fromUcs4(U"aa\U0010FFFF"),
                              fromUcs4(U"ab\U0001F600"), fromUcs4(U"ab\uD7FF"),     fromUcs4(U"ab\uE000"),
                              QStringLiteral("a%b"),     QStringLiteral("a&"),      QStringLiteral("a_b"),
                              QStringLiteral("a!b"),     QStringLiteral("a\"b"),    QStringLiteral("öl"),
                              QStringLiteral("Öm"),      QStringLiteral("ol"),      QStringLiteral("b")};
        QList<SuiteDataLoader::Patient> patients;
        for (const QString& id : ids)
            patients.append({id, id, QString(), QString(), QDate()});
        SuiteDataLoader(test.db()).addPatients(patients);

        const QStringList searches{QStringLiteral("a"),  QStringLiteral("ab"),      QStringLiteral("AB"),
                                   QStringLiteral("aa"), fromUcs4(U"ab\U0010FFFF"), fromUcs4(U"ab\uD7FF"),
                                   QStringLiteral("a%"), QStringLiteral("a_"),      QStringLiteral("a!"),
                                   QStringLiteral("Ö"),  QStringLiteral("o"),       QStringLiteral("a\"")};
        for (const QString& search : searches)
        {
            QStringList expected;
            for (const QString& id : ids)
            {
                if (SuiteText::searchKey(id).startsWith(SuiteText::searchKey(search)))
                    expected.append(id);
            }
            expected.sort();
            for (const bool byName : {false, true})
            {
                RecordsetPtr found = byName ? NorrixPatientQuery().FindByName(search, QString(), QString())
                                            : NorrixPatientQuery().FindByIdNum(search);
                QStringList got;
                for (; !found->IsEOF(); found->MoveNext())
                    got.append(found->Value(QStringLiteral("PatientIDNum")).toString());
                got.sort();
                QVERIFY2(got == expected, qPrintable(search + QStringLiteral(": ") + got.join(u' ') +
                                                     QStringLiteral(" instead of ") + expected.join(u' ')));
            }
        }
    }
};

CALVEX_TEST(TestSuiteText)
#include "TestSuiteText.moc"
