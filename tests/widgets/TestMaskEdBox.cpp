#include "common/TestMain.h"
#include "widgets/MaskEdBox.h"

#include <QTest>

class TestMaskEdBox : public QObject
{
    Q_OBJECT

private slots:
    void monthFirstFormatWithLeadingZeros()
    {
        MaskEdBox box;
        QCOMPARE(box.Format(), QStringLiteral("mm/dd/yyyy"));
        QCOMPARE(box.PromptChar(), QLatin1Char('_'));
        QCOMPARE(box.FormatDate(QDate(2024, 3, 7)), QStringLiteral("03/07/2024"));
        QCOMPARE(box.FormatDate(QDate(2024, 12, 31)), QStringLiteral("12/31/2024"));
    }

    void shortFormat()
    {
        MaskEdBox box;
        box.SetFormat(QStringLiteral("M/d/yyyy"));
        QCOMPARE(box.FormatDate(QDate(2024, 3, 7)), QStringLiteral("3/7/2024"));
        box.SetFormat(QStringLiteral("d.m.yy"));
        QCOMPARE(box.FormatDate(QDate(2009, 11, 5)), QStringLiteral("5.11.09"));
    }

    void textIsWhatTheBoxHolds()
    {
        MaskEdBox box;
        QCOMPARE(box.Text(), QString());
        box.SetText(QStringLiteral("01/31/2024"));
        QCOMPARE(box.Text(), QStringLiteral("01/31/2024"));
        QCOMPARE(box.text(), QStringLiteral("01/31/2024"));
    }
};

CALVEX_TEST(TestMaskEdBox)
#include "TestMaskEdBox.moc"
