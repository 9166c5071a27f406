#include "platform/VbConversions.h"

#include "platform/RuntimeError.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace
{
[[noreturn]] void raise(qint32 number)
{
    const QString description =
        number == ErrorNumber::Overflow ? QStringLiteral("Overflow") : QStringLiteral("Type mismatch");
    throw RuntimeError(number, QCoreApplication::applicationName(), description);
}

// The number held by a number value; a true boolean is -1, as it has always been.
double numberOf(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? -1.0 : 0.0;
    return value.toDouble();
}

bool isText(const QVariant& value)
{
    return !value.isNull() && value.typeId() == QMetaType::QString;
}

enum class TextNumber
{
    Number,
    Overflow,
    NotNumber
};

// Reads a text as a number of the system locale: blanks around it and group
// separators are allowed; "inf" and "nan" are not numbers.
TextNumber readNumberText(const QString& text, double* number)
{
    bool ok = false;
    const double read = QLocale().toDouble(text.trimmed(), &ok);
    if (ok && std::isfinite(read))
    {
        *number = read;
        return TextNumber::Number;
    }
    // The locale reports a well-formed number beyond the range of a double as infinity.
    return !ok && std::isinf(read) ? TextNumber::Overflow : TextNumber::NotNumber;
}

// The number of a number value or of a numeric text; false when there is none.
bool readNumber(const QVariant& value, double* number)
{
    if (IsNumberValue(value))
    {
        *number = numberOf(value);
        return true;
    }
    return isText(value) && readNumberText(value.toString(), number) == TextNumber::Number;
}

qint32 wholeNumberOfText(const QString& text)
{
    double number = 0;
    switch (readNumberText(text, &number))
    {
    case TextNumber::Number:
        return RoundToInt32(number);
    case TextNumber::Overflow:
        raise(ErrorNumber::Overflow);
    case TextNumber::NotNumber:
        break;
    }
    raise(ErrorNumber::TypeMismatch);
}

enum class Tie
{
    ToEven,
    AwayFromZero
};

// The signs of the current default locale that a number's text takes.
struct NumberSymbols
{
    QLocale locale;
    QString point;
    QString minus;
    bool plainDigits = false; // the digits are 0 to 9
};

// Read again only when the default locale changes.
const NumberSymbols& CurrentNumberSymbols()
{
    thread_local NumberSymbols symbols{QLocale::c(), QStringLiteral("."), QStringLiteral("-"), true};
    const QLocale locale;
    if (locale != symbols.locale)
        symbols = NumberSymbols{locale, locale.decimalPoint(), locale.negativeSign(),
                                locale.zeroDigit() == QLatin1String("0")};
    return symbols;
}

// Rounds at the given decimal places on the shortest decimal text of the value
// (the text that reads back as the same double), so that a value written as a
// tie, such as 2.675, is rounded as the tie it was meant to be.
double roundDecimal(double value, int decimals, Tie tie)
{
    if (!std::isfinite(value) || value == 0)
        return value;
    decimals = std::max(decimals, 0);

    // "d.ddde+xx": the significant digits without trailing zeros and the exponent of the first one.
    char text[40];
    const auto written = std::to_chars(text, text + sizeof text, std::fabs(value), std::chars_format::scientific);
    const std::string scientific(text, written.ptr);
    const size_t exponentAt = scientific.find('e');
    std::string digits = scientific.substr(0, exponentAt);
    if (digits.size() > 1)
        digits.erase(1, 1); // the decimal point
    const qint64 exponent = std::stoll(scientific.substr(exponentAt + 1));

    const qint64 kept = exponent + 1 + decimals; // digits left of the rounding place
    if (kept >= qint64(digits.size()))
        return value;
    if (kept < 0)
        return std::copysign(0.0, value);

    std::string whole = digits.substr(0, size_t(kept));
    const char first = digits[size_t(kept)];
    bool up = first > '5';
    if (first == '5')
    {
        const bool beyondHalf = qint64(digits.size()) > kept + 1; // the text has no trailing zeros
        const bool lastOdd = !whole.empty() && (whole.back() - '0') % 2 == 1;
        up = beyondHalf || tie == Tie::AwayFromZero || lastOdd;
    }
    if (up)
    {
        auto digit = whole.rbegin();
        for (; digit != whole.rend() && *digit == '9'; ++digit)
            *digit = '0';
        if (digit == whole.rend())
            whole.insert(whole.begin(), '1');
        else
            ++*digit;
    }
    if (whole.empty())
        return std::copysign(0.0, value);

    // The nearest double to whole / 10^decimals.
    const std::string rounded = whole + 'e' + std::to_string(-decimals);
    double result = 0;
    std::from_chars(rounded.data(), rounded.data() + rounded.size(), result);
    return std::copysign(result, value);
}

QString generalText(double value, int significantDigits)
{
    if (value == 0)
        value = 0; // no "-0"
    char text[40];
    const auto written = std::to_chars(text, text + sizeof text, value, std::chars_format::general, significantDigits);
    QString general = QString::fromLatin1(text, written.ptr - text);
    general.replace(QLatin1Char('e'), QLatin1Char('E'));
    general.replace(QLatin1Char('.'), QLocale().decimalPoint());
    return general;
}

// Reads the ASCII digits of text from position at, at least minDigits and at
// most maxDigits of them; -1 when there are fewer.
int readDigits(QStringView text, qsizetype& at, int minDigits, int maxDigits)
{
    int value = 0;
    int digits = 0;
    while (digits < maxDigits && at < text.size() && text[at] >= QLatin1Char('0') && text[at] <= QLatin1Char('9'))
    {
        value = value * 10 + (text[at].unicode() - '0');
        ++at;
        ++digits;
    }
    return digits >= minDigits ? value : -1;
}

bool skipSlash(QStringView text, qsizetype& at)
{
    if (at >= text.size() || text[at] != QLatin1Char('/'))
        return false;
    ++at;
    return true;
}

// "m/d/yyyy" with one or two digits for month and day, blanks around it allowed.
QDate monthFirstDate(const QString& text)
{
    const QStringView date = QStringView(text).trimmed();
    qsizetype at = 0;
    const int month = readDigits(date, at, 1, 2);
    if (month < 0 || !skipSlash(date, at))
        return {};
    const int day = readDigits(date, at, 1, 2);
    if (day < 0 || !skipSlash(date, at))
        return {};
    const int year = readDigits(date, at, 4, 4);
    if (year < 0 || at != date.size())
        return {};
    return QDate(year, month, day);
}

} // namespace

bool IsNumberValue(const QVariant& value)
{
    if (value.isNull())
        return false;
    switch (value.typeId())
    {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

bool IsDateValue(const QVariant& value)
{
    return !value.isNull() && (value.typeId() == QMetaType::QDate || value.typeId() == QMetaType::QDateTime);
}

qint32 WholeNumberOfZeroPrefixed(const QVariant& value)
{
    return wholeNumberOfText(QLatin1Char('0') + TextOf(value).trimmed());
}

qint32 ToWholeNumber(const QVariant& value)
{
    if (IsNumberValue(value))
        return RoundToInt32(numberOf(value));
    if (isText(value))
        return wholeNumberOfText(value.toString());
    raise(ErrorNumber::TypeMismatch);
}

double RoundHalfEven(double value)
{
    return roundDecimal(value, 0, Tie::ToEven);
}

double RoundHalfEven(double value, int decimals)
{
    return roundDecimal(value, decimals, Tie::ToEven);
}

qint32 RoundToInt32(double value)
{
    const double rounded = RoundHalfEven(value);
    if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0)) // NaN fails both
        raise(ErrorNumber::Overflow);
    return qint32(rounded);
}

bool IsDate(const QVariant& value)
{
    return ToDate(value).isValid();
}

QDate ToDate(const QVariant& value)
{
    if (IsDateValue(value))
        return value.typeId() == QMetaType::QDate ? value.toDate() : value.toDateTime().date();
    if (isText(value))
        return monthFirstDate(value.toString());
    return {};
}

QString FormatMonthDayYear(const QDate& date)
{
    if (!date.isValid())
        return {};
    const QLatin1Char zero('0');
    return QStringLiteral("%1/%2/%3")
        .arg(date.month(), 2, 10, zero)
        .arg(date.day(), 2, 10, zero)
        .arg(date.year(), 4, 10, zero);
}

QString FormatLongDate(const QDate& date)
{
    return QLocale().toString(date, QLocale::LongFormat);
}

bool IsNumeric(const QVariant& value)
{
    double number = 0;
    return readNumber(value, &number);
}

double ToDouble(const QVariant& value)
{
    double number = 0;
    return readNumber(value, &number) ? number : 0;
}

QString FormatNumber(double value, int decimals)
{
    decimals = std::max(decimals, 0);
    double rounded = roundDecimal(value, decimals, Tie::AwayFromZero);
    if (rounded == 0)
        rounded = 0; // no "-0.00"

    // Below a thousand there is nothing to group, and in a locale of the
    // digits 0 to 9 the text is the plain digits with the locale's point and
    // minus sign: written straight, it costs a fraction of the locale's own
    // conversion, which a table of many values would pay for every cell.
    constexpr int MostDirectDecimals = 15;
    if (std::fabs(rounded) < 1000 && decimals <= MostDirectDecimals)
    {
        const NumberSymbols& symbols = CurrentNumberSymbols();
        if (symbols.plainDigits)
        {
            char digits[32];
            const auto written =
                std::to_chars(digits, digits + sizeof digits, std::fabs(rounded), std::chars_format::fixed, decimals);
            if (written.ec == std::errc())
            {
                QString text;
                text.reserve(qsizetype(written.ptr - digits) + symbols.minus.size() + symbols.point.size());
                if (rounded < 0)
                    text += symbols.minus;
                for (const char* digit = digits; digit != written.ptr; ++digit)
                {
                    if (*digit == '.')
                        text += symbols.point;
                    else
                        text += QLatin1Char(*digit);
                }
                return text;
            }
        }
    }
    QLocale locale;
    locale.setNumberOptions(locale.numberOptions() & ~QLocale::OmitGroupSeparator);
    return locale.toString(rounded, 'f', decimals);
}

QString FormatPlainNumber(double value, int decimals)
{
    decimals = std::max(decimals, 0);
    double rounded = roundDecimal(value, decimals, Tie::AwayFromZero);
    if (rounded == 0)
        rounded = 0; // no "-0.00"
    return QLocale::c().toString(rounded, 'f', decimals);
}

QString GeneralNumberText(double value)
{
    return generalText(value, 15);
}

QString TextOf(const QVariant& value)
{
    if (value.isNull())
        return {};
    switch (value.typeId())
    {
    case QMetaType::QDate:
        return FormatMonthDayYear(value.toDate());
    case QMetaType::QDateTime: {
        const QDateTime moment = value.toDateTime();
        const QString date = FormatMonthDayYear(moment.date());
        if (moment.time() == QTime(0, 0))
            return date;
        return date + QLatin1Char(' ') + moment.time().toString(QStringLiteral("HH:mm:ss"));
    }
    case QMetaType::Double:
        return GeneralNumberText(value.toDouble());
    case QMetaType::Float:
        return generalText(double(value.toFloat()), 7);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    default:
        return value.toString();
    }
}
