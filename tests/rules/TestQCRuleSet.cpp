#include "common/TestMain.h"

#include "rules/QCRuleSet.h"

#include <QTest>

// The list of QC rules as the setting "QC Rules" and --rules give it.
class TestQCRuleSet : public QObject
{
    Q_OBJECT

    static QCRuleSet parsed(const QString& text)
    {
        QCRuleSet rules;
        QString unknown;
        if (!QCRuleSet::parse(text, rules, unknown))
            qWarning("unexpected unknown rule %s", qPrintable(unknown));
        return rules;
    }

private slots:
    void everyRuleHasItsName()
    {
        QCOMPARE(QCRuleSet::knownNames(), QStringLiteral("1-2s, 1-3s, 2-2s, R-4s, 4-1s, 10x, DLCO-12"));
        for (const QCRule rule : QCRuleSet::allRules())
        {
            QCRuleSet rules;
            QString unknown;
            QVERIFY(QCRuleSet::parse(QCRuleSet::name(rule), rules, unknown));
            QCOMPARE(rules, QCRuleSet({rule}));
        }
    }

    void namesCompareWithoutCaseAndBlanksAroundThemGo()
    {
        QCOMPARE(parsed(QStringLiteral(" r-4S ,dlco-12,10X")),
                 QCRuleSet({QCRule::RuleR4s, QCRule::RuleDlco12, QCRule::Rule10x}));
    }

    void theSetListsItsRulesInTheProgramsOrder()
    {
        const QCRuleSet rules = parsed(QStringLiteral("DLCO-12, 10x, 1-3s, 2-2s, 1-3s"));
        QCOMPARE(rules.names(), (QStringList{QStringLiteral("1-3s"), QStringLiteral("2-2s"), QStringLiteral("10x"),
                                             QStringLiteral("DLCO-12")}));
        QCOMPARE(rules.text(), QStringLiteral("1-3s, 2-2s, 10x, DLCO-12"));
        QVERIFY(rules.contains(QCRule::Rule13s));
        QVERIFY(!rules.contains(QCRule::Rule12s));
    }

    void emptyTextAndEmptyItemsAreNoRule()
    {
        QVERIFY(parsed(QString()).isEmpty());
        QVERIFY(parsed(QStringLiteral("   ")).isEmpty());
        QVERIFY(parsed(QStringLiteral(" , ,")).isEmpty());
        QCOMPARE(parsed(QStringLiteral("1-3s,,2-2s,")), QCRuleSet({QCRule::Rule13s, QCRule::Rule22s}));
    }

    void anUnknownNameIsNamedAndChangesNothing()
    {
        QCRuleSet rules{QCRule::Rule10x};
        QString unknown;
        QVERIFY(!QCRuleSet::parse(QStringLiteral("1-3s, 2of3-2s , 1-2 s, R-4s"), rules, unknown));
        QCOMPARE(unknown, QStringLiteral("2of3-2s"));
        QCOMPARE(rules, QCRuleSet({QCRule::Rule10x}));

        QVERIFY(!QCRuleSet::parse(QStringLiteral("1-3s; 2-2s"), rules, unknown));
        QCOMPARE(unknown, QStringLiteral("1-3s; 2-2s"));
        QVERIFY(!QCRuleSet::parse(QStringLiteral("12s"), rules, unknown));
        QCOMPARE(unknown, QStringLiteral("12s"));
    }

    void setsAddUp()
    {
        QCRuleSet rules;
        QVERIFY(rules.isEmpty());
        rules.add(QCRule::Rule41s);
        rules.add(QCRuleSet{QCRule::Rule12s, QCRule::Rule41s});
        QCOMPARE(rules.rules(), (QList<QCRule>{QCRule::Rule12s, QCRule::Rule41s}));
    }
};

CALVEX_TEST(TestQCRuleSet)
#include "TestQCRuleSet.moc"
