#include "common/ScopedRegistryFile.h"
#include "common/TestMain.h"

#include "platform/QCRulesSetting.h"

#include <QTest>

// The "QC Rules" value of the settings key, read as the site wrote it.
class TestQCRulesSetting : public QObject
{
    Q_OBJECT

private slots:
    void values_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("rules");
        QTest::newRow("missing") << QVariant() << QString();
        QTest::newRow("empty") << QVariant(QString()) << QString();
        QTest::newRow("list") << QVariant(QStringLiteral(" 1-3s, 2-2s ")) << QStringLiteral("1-3s, 2-2s");
        QTest::newRow("dword") << QVariant(10) << QStringLiteral("10");
    }

    void values()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, rules);
        ScopedRegistryFile registry;
        registry.setValue(QStringLiteral("QC Rules"), value);
        QCOMPARE(ReadQCRulesSetting(), rules);
    }

    void readAfreshEveryTime()
    {
        ScopedRegistryFile registry;
        registry.setValue(QStringLiteral("QC Rules"), QStringLiteral("1-3s"));
        QCOMPARE(ReadQCRulesSetting(), QStringLiteral("1-3s"));
        registry.setValue(QStringLiteral("QC Rules"), QVariant());
        QCOMPARE(ReadQCRulesSetting(), QString());
    }
};

CALVEX_TEST(TestQCRulesSetting)
#include "TestQCRulesSetting.moc"
