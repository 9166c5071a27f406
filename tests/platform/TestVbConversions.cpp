#include "common/LocaleScope.h"
#include "common/TestMain.h"

#include "ErrorNumberOf.h"

#include "platform/RuntimeError.h"
#include "platform/VbConversions.h"

#include <QDateTime>
#include <QLocale>
#include <QTest>

#include <cmath>
#include <limits>

namespace
{
QVariant nullOf(QMetaType::Type type)
{
    return QVariant(QMetaType(type));
}

QString exact(double value)
{
    return QString::number(value, 'g', 17);
}

const QDate kMarch7(2024, 3, 7);
} // namespace

class TestVbConversions : public QObject
{
    Q_OBJECT

private slots:
    void numberAndDateValues()
    {
        QVERIFY(IsNumberValue(QVariant(3)));
        QVERIFY(IsNumberValue(QVariant(2.5)));
        QVERIFY(IsNumberValue(QVariant(qint64(1) << 40)));
        QVERIFY(IsNumberValue(QVariant(true)));
        QVERIFY(!IsNumberValue(nullOf(QMetaType::Double)));
        QVERIFY(!IsNumberValue(QVariant(QStringLiteral("3"))));
        QVERIFY(!IsNumberValue(QVariant(kMarch7)));
        QVERIFY(!IsNumberValue(QVariant()));

        QVERIFY(IsDateValue(QVariant(kMarch7)));
        QVERIFY(IsDateValue(QVariant(QDateTime(kMarch7, QTime(10, 0)))));
        QVERIFY(!IsDateValue(nullOf(QMetaType::QDate)));
        QVERIFY(!IsDateValue(QVariant(QStringLiteral("03/07/2024"))));
    }

    void wholeNumberOfZeroPrefixed_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("expected");
        QTest::newRow("null") << QVariant() << 0;
        QTest::newRow("null field") << nullOf(QMetaType::Int) << 0;
        QTest::newRow("empty") << QVariant(QString()) << 0;
        QTest::newRow("blanks") << QVariant(QStringLiteral("   ")) << 0;
        QTest::newRow("1") << QVariant(QStringLiteral("1")) << 1;
        QTest::newRow("2") << QVariant(QStringLiteral("2")) << 2;
        QTest::newRow("12") << QVariant(QStringLiteral("12")) << 12;
        QTest::newRow("leading blank") << QVariant(QStringLiteral(" 7")) << 7;
        QTest::newRow("trailing blank") << QVariant(QStringLiteral("7 ")) << 7;
        QTest::newRow("half down to even") << QVariant(QStringLiteral("2.5")) << 2;
        QTest::newRow("half up to even") << QVariant(QStringLiteral("3.5")) << 4;
        QTest::newRow("zero and a half") << QVariant(QStringLiteral("0.5")) << 0;
        QTest::newRow("grouped") << QVariant(QStringLiteral("1,234")) << 1234;
        QTest::newRow("int") << QVariant(42) << 42;
        QTest::newRow("double tie") << QVariant(2.5) << 2;
        QTest::newRow("double") << QVariant(6.75) << 7;
        QTest::newRow("largest") << QVariant(QStringLiteral("2147483647")) << 2147483647;
        QTest::newRow("just below the largest tie") << QVariant(QStringLiteral("2147483647.4")) << 2147483647;
    }

    void wholeNumberOfZeroPrefixed()
    {
        QFETCH(QVariant, value);
        QFETCH(int, expected);
        QCOMPARE(WholeNumberOfZeroPrefixed(value), expected);
    }

    void wholeNumberOfZeroPrefixedErrors_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("error");
        QTest::newRow("abc") << QVariant(QStringLiteral("abc")) << ErrorNumber::TypeMismatch;
        QTest::newRow("negative text") << QVariant(QStringLiteral("-5")) << ErrorNumber::TypeMismatch;
        QTest::newRow("negative number") << QVariant(-5) << ErrorNumber::TypeMismatch;
        QTest::newRow("signed text") << QVariant(QStringLiteral("+5")) << ErrorNumber::TypeMismatch;
        QTest::newRow("inner blank") << QVariant(QStringLiteral("1 2")) << ErrorNumber::TypeMismatch;
        QTest::newRow("date") << QVariant(kMarch7) << ErrorNumber::TypeMismatch;
        QTest::newRow("date text") << QVariant(QStringLiteral("03/07/2024")) << ErrorNumber::TypeMismatch;
        QTest::newRow("boolean") << QVariant(true) << ErrorNumber::TypeMismatch;
        QTest::newRow("inf") << QVariant(QStringLiteral("inf")) << ErrorNumber::TypeMismatch;
        QTest::newRow("beyond 32 bits") << QVariant(QStringLiteral("2147483648")) << ErrorNumber::Overflow;
        QTest::newRow("tie rounding beyond") << QVariant(QStringLiteral("2147483647.5")) << ErrorNumber::Overflow;
        QTest::newRow("big integer") << QVariant(qint64(3000000000)) << ErrorNumber::Overflow;
        QTest::newRow("big double") << QVariant(1e20) << ErrorNumber::Overflow;
        QTest::newRow("beyond a double") << QVariant(QStringLiteral("1e400")) << ErrorNumber::Overflow;
    }

    void wholeNumberOfZeroPrefixedErrors()
    {
        QFETCH(QVariant, value);
        QFETCH(int, error);
        QCOMPARE(ErrorNumberOf([&] { WholeNumberOfZeroPrefixed(value); }), error);
    }

    void toWholeNumber()
    {
        QCOMPARE(ToWholeNumber(QVariant(2.5)), 2);
        QCOMPARE(ToWholeNumber(QVariant(3.5)), 4);
        QCOMPARE(ToWholeNumber(QVariant(-2.5)), -2);
        QCOMPARE(ToWholeNumber(QVariant(-2.6)), -3);
        QCOMPARE(ToWholeNumber(QVariant(QStringLiteral("-7"))), -7);
        QCOMPARE(ToWholeNumber(QVariant(QStringLiteral(" 12 "))), 12);
        QCOMPARE(ToWholeNumber(QVariant(QStringLiteral("1,234.5"))), 1234);
        QCOMPARE(ToWholeNumber(QVariant(true)), -1);
        QCOMPARE(ToWholeNumber(QVariant(false)), 0);
        QCOMPARE(ToWholeNumber(QVariant(qint64(-2147483648LL))), std::numeric_limits<qint32>::min());
        QCOMPARE(ToWholeNumber(QVariant(-2147483648.5)), std::numeric_limits<qint32>::min());

        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant()); }), ErrorNumber::TypeMismatch);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(nullOf(QMetaType::Double)); }), ErrorNumber::TypeMismatch);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant(QString())); }), ErrorNumber::TypeMismatch);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant(QStringLiteral("abc"))); }), ErrorNumber::TypeMismatch);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant(kMarch7)); }), ErrorNumber::TypeMismatch);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant(2147483647.5)); }), ErrorNumber::Overflow);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant(-2147483649.5)); }), ErrorNumber::Overflow);
        QCOMPARE(ErrorNumberOf([] { ToWholeNumber(QVariant(QStringLiteral("5000000000"))); }), ErrorNumber::Overflow);
    }

    void roundHalfEven_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("expected");
        QTest::newRow("0.5") << 0.5 << 0.0;
        QTest::newRow("1.5") << 1.5 << 2.0;
        QTest::newRow("2.5") << 2.5 << 2.0;
        QTest::newRow("3.5") << 3.5 << 4.0;
        QTest::newRow("-1.5") << -1.5 << -2.0;
        QTest::newRow("-2.5") << -2.5 << -2.0;
        QTest::newRow("0.7") << 0.7 << 1.0;
        QTest::newRow("-0.7") << -0.7 << -1.0;
        QTest::newRow("just below a half") << 0.49999999999999994 << 0.0;
        QTest::newRow("just above a tie") << 2.5000000000000004 << 3.0;
        QTest::newRow("carry") << 999.5 << 1000.0;
        QTest::newRow("large") << 1e20 << 1e20;
        QTest::newRow("zero") << 0.0 << 0.0;
    }

    void roundHalfEven()
    {
        QFETCH(double, value);
        QFETCH(double, expected);
        const double rounded = RoundHalfEven(value);
        QVERIFY2(rounded == expected, qPrintable(exact(rounded)));
    }

    void roundHalfEvenKeepsTheSignOfZero()
    {
        const double rounded = RoundHalfEven(-0.5);
        QVERIFY(rounded == 0);
        QVERIFY(std::signbit(rounded));
        QCOMPARE(GeneralNumberText(rounded), QStringLiteral("0"));
        QVERIFY(std::signbit(RoundHalfEven(-0.0001, 2)));
        QVERIFY(!std::signbit(RoundHalfEven(0.5)));
    }

    void roundHalfEvenAtDecimals_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<double>("expected");
        QTest::newRow("nothing to round") << 0.48 << 2 << 0.48;
        QTest::newRow("axis step") << 0.48 << 1 << 0.5;
        QTest::newRow("written tie up to even") << 2.675 << 2 << 2.68;
        QTest::newRow("written tie down to even") << 2.665 << 2 << 2.66;
        QTest::newRow("negative written tie") << -2.675 << 2 << -2.68;
        QTest::newRow("binary tie") << 0.125 << 2 << 0.12;
        QTest::newRow("binary tie up") << 0.375 << 2 << 0.38;
        QTest::newRow("1.005") << 1.005 << 2 << 1.0;
        QTest::newRow("representation error") << 0.1 + 0.2 << 1 << 0.3;
        QTest::newRow("carry into a new digit") << 9.995 << 2 << 10.0;
        QTest::newRow("no decimals") << 123.456 << 0 << 123.0;
        QTest::newRow("below the last place") << 0.0001 << 2 << 0.0;
        QTest::newRow("last place tie") << 0.005 << 2 << 0.0;
        QTest::newRow("last place tie up") << 0.015 << 2 << 0.02;
        QTest::newRow("more places than digits") << 0.1 << 20 << 0.1;
        QTest::newRow("negative places count as none") << 1234.5 << -1 << 1234.0;
        QTest::newRow("negative places, odd") << 1.5 << -2 << 2.0;
        QTest::newRow("large value") << 123456789.125 << 2 << 123456789.12;
    }

    void roundHalfEvenAtDecimals()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(double, expected);
        const double rounded = RoundHalfEven(value, decimals);
        QVERIFY2(rounded == expected, qPrintable(exact(rounded)));
    }

    void roundHalfEvenPassesNonFiniteValues()
    {
        QVERIFY(std::isnan(RoundHalfEven(std::numeric_limits<double>::quiet_NaN(), 2)));
        QVERIFY(RoundHalfEven(std::numeric_limits<double>::infinity()) == std::numeric_limits<double>::infinity());
    }

    void roundToInt32()
    {
        QCOMPARE(RoundToInt32(2.5), 2);
        QCOMPARE(RoundToInt32(-2.5), -2);
        QCOMPARE(RoundToInt32(-3.5), -4);
        QCOMPARE(RoundToInt32(2147483647.4), 2147483647);
        QCOMPARE(RoundToInt32(-2147483648.5), std::numeric_limits<qint32>::min());
        QCOMPARE(ErrorNumberOf([] { RoundToInt32(2147483647.5); }), ErrorNumber::Overflow);
        QCOMPARE(ErrorNumberOf([] { RoundToInt32(-2147483649.0); }), ErrorNumber::Overflow);
        QCOMPARE(ErrorNumberOf([] { RoundToInt32(std::numeric_limits<double>::quiet_NaN()); }), ErrorNumber::Overflow);
        QCOMPARE(ErrorNumberOf([] { RoundToInt32(std::numeric_limits<double>::infinity()); }), ErrorNumber::Overflow);
    }

    void isDate_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QDate>("date");
        QTest::newRow("short") << QVariant(QStringLiteral("3/7/2024")) << kMarch7;
        QTest::newRow("two digits") << QVariant(QStringLiteral("03/07/2024")) << kMarch7;
        QTest::newRow("mixed") << QVariant(QStringLiteral("3/07/2024")) << kMarch7;
        QTest::newRow("blanks around") << QVariant(QStringLiteral(" 03/07/2024 ")) << kMarch7;
        QTest::newRow("month first") << QVariant(QStringLiteral("07/03/2024")) << QDate(2024, 7, 3);
        QTest::newRow("leap day") << QVariant(QStringLiteral("02/29/2024")) << QDate(2024, 2, 29);
        QTest::newRow("date value") << QVariant(kMarch7) << kMarch7;
        QTest::newRow("date and time") << QVariant(QDateTime(kMarch7, QTime(23, 59))) << kMarch7;
        QTest::newRow("no such month") << QVariant(QStringLiteral("13/45/2024")) << QDate();
        QTest::newRow("no such day") << QVariant(QStringLiteral("02/30/2024")) << QDate();
        QTest::newRow("no leap day") << QVariant(QStringLiteral("02/29/2023")) << QDate();
        QTest::newRow("month 0") << QVariant(QStringLiteral("0/7/2024")) << QDate();
        QTest::newRow("day 0") << QVariant(QStringLiteral("3/0/2024")) << QDate();
        QTest::newRow("year 0") << QVariant(QStringLiteral("3/7/0000")) << QDate();
        QTest::newRow("empty") << QVariant(QString()) << QDate();
        QTest::newRow("empty mask") << QVariant(QStringLiteral("__/__/____")) << QDate();
        QTest::newRow("two-digit year") << QVariant(QStringLiteral("1/2/24")) << QDate();
        QTest::newRow("three-digit month") << QVariant(QStringLiteral("003/07/2024")) << QDate();
        QTest::newRow("iso") << QVariant(QStringLiteral("2024-03-07")) << QDate();
        QTest::newRow("trailing text") << QVariant(QStringLiteral("3/7/2024x")) << QDate();
        QTest::newRow("null") << QVariant() << QDate();
        QTest::newRow("null date") << nullOf(QMetaType::QDate) << QDate();
        QTest::newRow("invalid date value") << QVariant(QDate()) << QDate();
        QTest::newRow("number") << QVariant(20240307) << QDate();
    }

    void isDate()
    {
        QFETCH(QVariant, value);
        QFETCH(QDate, date);
        QCOMPARE(IsDate(value), date.isValid());
        QCOMPARE(ToDate(value), date);
    }

    void formatMonthDayYear()
    {
        QCOMPARE(FormatMonthDayYear(kMarch7), QStringLiteral("03/07/2024"));
        QCOMPARE(FormatMonthDayYear(QDate(1999, 12, 31)), QStringLiteral("12/31/1999"));
        QCOMPARE(FormatMonthDayYear(QDate(812, 1, 2)), QStringLiteral("01/02/0812"));
        QCOMPARE(FormatMonthDayYear(QDate()), QString());
        // The program's own form, whatever the locale.
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(FormatMonthDayYear(kMarch7), QStringLiteral("03/07/2024"));
    }

    void formatLongDate()
    {
        QCOMPARE(FormatLongDate(kMarch7), QStringLiteral("Thursday, March 7, 2024"));
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(FormatLongDate(kMarch7), QStringLiteral("Donnerstag, 7. M\u00e4rz 2024"));
    }

    void isNumeric_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("numeric");
        QTest::addColumn<double>("number");
        QTest::newRow("int") << QVariant(5) << true << 5.0;
        QTest::newRow("zero") << QVariant(0.0) << true << 0.0;
        QTest::newRow("true") << QVariant(true) << true << -1.0;
        QTest::newRow("false") << QVariant(false) << true << 0.0;
        QTest::newRow("text") << QVariant(QStringLiteral("12")) << true << 12.0;
        QTest::newRow("blanks around") << QVariant(QStringLiteral(" 12 ")) << true << 12.0;
        QTest::newRow("grouped") << QVariant(QStringLiteral("1,234.5")) << true << 1234.5;
        QTest::newRow("negative") << QVariant(QStringLiteral("-0.25")) << true << -0.25;
        QTest::newRow("exponent") << QVariant(QStringLiteral("1E5")) << true << 100000.0;
        QTest::newRow("no leading zero") << QVariant(QStringLiteral(".5")) << true << 0.5;
        QTest::newRow("empty") << QVariant(QString()) << false << 0.0;
        QTest::newRow("blanks") << QVariant(QStringLiteral("  ")) << false << 0.0;
        QTest::newRow("null") << QVariant() << false << 0.0;
        QTest::newRow("null field") << nullOf(QMetaType::Double) << false << 0.0;
        QTest::newRow("date") << QVariant(kMarch7) << false << 0.0;
        QTest::newRow("date text") << QVariant(QStringLiteral("03/07/2024")) << false << 0.0;
        QTest::newRow("abc") << QVariant(QStringLiteral("abc")) << false << 0.0;
        QTest::newRow("trailing text") << QVariant(QStringLiteral("12abc")) << false << 0.0;
        QTest::newRow("inf") << QVariant(QStringLiteral("inf")) << false << 0.0;
        QTest::newRow("nan") << QVariant(QStringLiteral("nan")) << false << 0.0;
        QTest::newRow("beyond a double") << QVariant(QStringLiteral("1e400")) << false << 0.0;
        QTest::newRow("misplaced groups") << QVariant(QStringLiteral("1,23,4")) << false << 0.0;
    }

    void isNumeric()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, numeric);
        QFETCH(double, number);
        QCOMPARE(IsNumeric(value), numeric);
        QVERIFY2(ToDouble(value) == number, qPrintable(exact(ToDouble(value))));
    }

    void numericTextsFollowTheLocale()
    {
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        QVERIFY(IsNumeric(QVariant(QStringLiteral("1.234,5"))));
        QCOMPARE(ToDouble(QVariant(QStringLiteral("1.234,5"))), 1234.5);
        QCOMPARE(ToDouble(QVariant(QStringLiteral("0,25"))), 0.25);
        QCOMPARE(WholeNumberOfZeroPrefixed(QVariant(QStringLiteral("2,5"))), 2);
    }

    void formatNumber_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("text");
        QTest::newRow("grouping") << 1234.5 << 2 << QStringLiteral("1,234.50");
        QTest::newRow("negative with leading zero") << -0.5 << 2 << QStringLiteral("-0.50");
        QTest::newRow("half away from zero") << 0.5 << 0 << QStringLiteral("1");
        QTest::newRow("1.5") << 1.5 << 0 << QStringLiteral("2");
        QTest::newRow("2.5") << 2.5 << 0 << QStringLiteral("3");
        QTest::newRow("-2.5") << -2.5 << 0 << QStringLiteral("-3");
        QTest::newRow("written tie") << 2.675 << 2 << QStringLiteral("2.68");
        QTest::newRow("1.005") << 1.005 << 2 << QStringLiteral("1.01");
        QTest::newRow("binary tie") << 0.125 << 2 << QStringLiteral("0.13");
        QTest::newRow("millions") << 1234567.891 << 1 << QStringLiteral("1,234,567.9");
        QTest::newRow("negative grouping") << -1234.5 << 0 << QStringLiteral("-1,235");
        QTest::newRow("carry into a group") << 999.995 << 2 << QStringLiteral("1,000.00");
        QTest::newRow("padding") << 0.05 << 3 << QStringLiteral("0.050");
        QTest::newRow("zero") << 0.0 << 2 << QStringLiteral("0.00");
        QTest::newRow("negative rounding to zero") << -0.004 << 2 << QStringLiteral("0.00");
        QTest::newRow("negative decimals count as none") << 12.3 << -1 << QStringLiteral("12");
        QTest::newRow("representation error") << 0.1 + 0.2 << 2 << QStringLiteral("0.30");
    }

    void formatNumber()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(QString, text);
        QCOMPARE(FormatNumber(value, decimals), text);
    }

    void formatPlainNumber_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("text");
        QTest::newRow("no grouping") << 1234.5 << 2 << QStringLiteral("1234.50");
        QTest::newRow("millions") << 1234567.891 << 1 << QStringLiteral("1234567.9");
        QTest::newRow("negative with leading zero") << -0.5 << 2 << QStringLiteral("-0.50");
        QTest::newRow("half away from zero") << 2.5 << 0 << QStringLiteral("3");
        QTest::newRow("-2.5") << -2.5 << 0 << QStringLiteral("-3");
        QTest::newRow("written tie") << 2.675 << 2 << QStringLiteral("2.68");
        QTest::newRow("binary tie") << 0.125 << 2 << QStringLiteral("0.13");
        QTest::newRow("carry") << 999.995 << 2 << QStringLiteral("1000.00");
        QTest::newRow("zero") << 0.0 << 2 << QStringLiteral("0.00");
        QTest::newRow("negative rounding to zero") << -0.004 << 2 << QStringLiteral("0.00");
        QTest::newRow("negative decimals count as none") << 12.3 << -1 << QStringLiteral("12");
    }

    void formatPlainNumber()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(QString, text);
        QCOMPARE(FormatPlainNumber(value, decimals), text);
        // The same text in a locale of a comma for a point and a point for groups.
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(FormatPlainNumber(value, decimals), text);
    }

    void formatPlainNumberIsFormatNumberWithoutTheLocale()
    {
        // The digits FormatNumber prints in en_US, less its group separators.
        quint32 seed = 11;
        for (int i = 0; i < 3000; ++i)
        {
            seed = seed * 1103515245 + 12345;
            const int decimals = int(seed >> 16) % 7;
            seed = seed * 1103515245 + 12345;
            const qint64 scaled = qint64(seed >> 4) % 200000001 - 100000000;
            const double value = double(scaled) / std::pow(10.0, decimals + 1);
            QCOMPARE(FormatPlainNumber(value, decimals), FormatNumber(value, decimals).remove(QLatin1Char(',')));
        }
    }

    void formatNumberUsesTheLocaleAndAlwaysGroups()
    {
        {
            LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
            QCOMPARE(FormatNumber(1234.5, 2), QStringLiteral("1.234,50"));
        }
        QLocale plain(QLocale::English, QLocale::UnitedStates);
        plain.setNumberOptions(QLocale::OmitGroupSeparator);
        LocaleScope ungrouped(plain);
        QCOMPARE(FormatNumber(1234.5, 2), QStringLiteral("1,234.50"));
    }

    void formatNumberWritesWhatTheLocaleWrites()
    {
        // Values of up to six decimals in locales of different points, minus
        // signs, groups and digits, against the locale's own text of them.
        const QLocale locales[] = {QLocale::c(),
                                   QLocale(QLocale::English, QLocale::UnitedStates),
                                   QLocale(QLocale::German, QLocale::Germany),
                                   QLocale(QLocale::French, QLocale::France),
                                   QLocale(QLocale::Swedish, QLocale::Sweden),
                                   QLocale(QLocale::Arabic, QLocale::Egypt)};
        for (const QLocale& locale : locales)
        {
            LocaleScope scope(locale);
            QLocale grouped(locale);
            grouped.setNumberOptions(grouped.numberOptions() & ~QLocale::OmitGroupSeparator);
            quint32 seed = 7;
            for (int i = 0; i < 3000; ++i)
            {
                seed = seed * 1103515245 + 12345;
                const int decimals = int(seed >> 16) % 7;
                seed = seed * 1103515245 + 12345;
                const qint64 scaled = qint64(seed >> 8) % 2000001 - 1000000;
                const double value = double(scaled) / std::pow(10.0, decimals);
                QCOMPARE(FormatNumber(value, decimals), grouped.toString(value, 'f', decimals));
            }
        }
    }

    void generalNumberText_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("representation error") << 0.1 + 0.2 << QStringLiteral("0.3");
        QTest::newRow("small") << 1e-7 << QStringLiteral("1E-07");
        QTest::newRow("large") << 123456789012345678.0 << QStringLiteral("1.23456789012346E+17");
        QTest::newRow("fraction") << 1234.5 << QStringLiteral("1234.5");
        QTest::newRow("negative") << -2.0 << QStringLiteral("-2");
        QTest::newRow("zero") << 0.0 << QStringLiteral("0");
        QTest::newRow("negative zero") << -0.0 << QStringLiteral("0");
        QTest::newRow("third") << 1.0 / 3 << QStringLiteral("0.333333333333333");
        QTest::newRow("two thirds") << 2.0 / 3 << QStringLiteral("0.666666666666667");
        QTest::newRow("1e15") << 1e15 << QStringLiteral("1E+15");
        QTest::newRow("fifteen digits") << 999999999999999.0 << QStringLiteral("999999999999999");
        QTest::newRow("100000") << 100000.0 << QStringLiteral("100000");
        QTest::newRow("1e-4") << 0.0001 << QStringLiteral("0.0001");
        QTest::newRow("1e-5") << 0.00001 << QStringLiteral("1E-05");
        QTest::newRow("three-digit exponent") << 1e100 << QStringLiteral("1E+100");
        QTest::newRow("negative exponent form") << -1.5e-10 << QStringLiteral("-1.5E-10");
        QTest::newRow("percent") << 0.0312 * 100 << QStringLiteral("3.12");
    }

    void generalNumberText()
    {
        QFETCH(double, value);
        QFETCH(QString, text);
        QCOMPARE(GeneralNumberText(value), text);
    }

    void generalNumberTextUsesTheLocaleDecimalPoint()
    {
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(GeneralNumberText(1234.5), QStringLiteral("1234,5"));
        QCOMPARE(GeneralNumberText(-1.5e-10), QStringLiteral("-1,5E-10"));
    }

    void textOf_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("null") << QVariant() << QString();
        QTest::newRow("null field") << nullOf(QMetaType::QString) << QString();
        QTest::newRow("null number") << nullOf(QMetaType::Double) << QString();
        QTest::newRow("text") << QVariant(QStringLiteral(" abc ")) << QStringLiteral(" abc ");
        QTest::newRow("int") << QVariant(42) << QStringLiteral("42");
        QTest::newRow("long") << QVariant(qint64(-7)) << QStringLiteral("-7");
        QTest::newRow("double") << QVariant(0.1 + 0.2) << QStringLiteral("0.3");
        QTest::newRow("double exponent") << QVariant(1e-7) << QStringLiteral("1E-07");
        QTest::newRow("float") << QVariant(0.1f) << QStringLiteral("0.1");
        QTest::newRow("true") << QVariant(true) << QStringLiteral("True");
        QTest::newRow("false") << QVariant(false) << QStringLiteral("False");
        QTest::newRow("date") << QVariant(kMarch7) << QStringLiteral("03/07/2024");
        QTest::newRow("midnight") << QVariant(QDateTime(kMarch7, QTime(0, 0))) << QStringLiteral("03/07/2024");
        QTest::newRow("date and time") << QVariant(QDateTime(kMarch7, QTime(14, 5, 9)))
                                       << QStringLiteral("03/07/2024 14:05:09");
    }

    void textOf()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        QCOMPARE(TextOf(value), text);
    }
};

CALVEX_TEST(TestVbConversions)
#include "TestVbConversions.moc"
