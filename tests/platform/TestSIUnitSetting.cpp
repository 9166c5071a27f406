#include "common/ScopedRegistryFile.h"
#include "common/TestMain.h"

#include "platform/RuntimeError.h"
#include "platform/SIUnitSetting.h"

#include <QTest>

// The "SI Unit" value of the settings key: only the number 1 means SI units.
class TestSIUnitSetting : public QObject
{
    Q_OBJECT

private slots:
    void values_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("si");
        QTest::newRow("one") << QVariant(QStringLiteral("1")) << true;
        QTest::newRow("zero-prefixed one") << QVariant(QStringLiteral("01")) << true;
        QTest::newRow("dword one") << QVariant(1) << true;
        QTest::newRow("missing") << QVariant() << false;
        QTest::newRow("empty") << QVariant(QString()) << false;
        QTest::newRow("zero") << QVariant(QStringLiteral("0")) << false;
        QTest::newRow("two") << QVariant(QStringLiteral("2")) << false;
    }

    void values()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, si);
        ScopedRegistryFile registry;
        registry.setValue(QStringLiteral("SI Unit"), value);
        QCOMPARE(ReadSIUnitSetting(), si);
    }

    void textThatIsNoNumberRaisesTypeMismatch()
    {
        // A value there that is no number is the caller's to report.
        ScopedRegistryFile registry;
        registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("yes"));
        try
        {
            ReadSIUnitSetting();
            QFAIL("no error");
        }
        catch (const RuntimeError& error)
        {
            QCOMPARE(error.number(), ErrorNumber::TypeMismatch);
        }
    }

    void readAfreshAtEveryCall()
    {
        ScopedRegistryFile registry;
        registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("1"));
        QVERIFY(ReadSIUnitSetting());
        registry.setValue(QStringLiteral("SI Unit"), QStringLiteral("0"));
        QVERIFY(!ReadSIUnitSetting());
    }
};

CALVEX_TEST(TestSIUnitSetting)
#include "TestSIUnitSetting.moc"
