#pragma once

#include <QDate>
#include <QString>
#include <QVariant>

// Conversions with the rules the program's texts and numbers have always
// followed. Number and date texts use the system locale (QLocale()), except
// the month-first "mm/dd/yyyy" texts, which are the program's own.
//
// A null value is an invalid QVariant or a typed null (what a database gives
// for an empty field). Conversion errors are RuntimeError 13 (type mismatch)
// and 6 (overflow).

// A value held as a number (integers, floating point, booleans), not null.
bool IsNumberValue(const QVariant& value);
// A value held as a date (QDate or QDateTime), not null.
bool IsDateValue(const QVariant& value);

// "0" & value converted to a 32-bit whole number: null, "" and blanks read as
// 0, "12" as 12, " 7 " as 7 (blanks around the value are dropped first), "2.5"
// as 2 (half to even). Text that is no number raises 13; so does a negative
// value ("0-5"), a date and a boolean ("0True"). A number beyond 32 bits
// raises 6.
qint32 WholeNumberOfZeroPrefixed(const QVariant& value);

// A value converted to a 32-bit whole number, half to even (CLng): numbers and
// numeric texts; True is -1. Null, "", dates and other texts raise 13; a
// number beyond 32 bits raises 6.
qint32 ToWholeNumber(const QVariant& value);

// Rounds half to even: 0.5 -> 0, 1.5 -> 2, 2.5 -> 2, -0.5 -> -0.
double RoundHalfEven(double value);
// Rounds half to even at the given number of decimal places (Round(x, n));
// negative places count as 0. A double is taken as the shortest decimal text
// that reads back as it, so Round(2.675, 2) is 2.68 (a tie, 8 being even) and
// Round(2.665, 2) is 2.66, although the binary values lie just below those
// ties. Round(0.125, 2) is 0.12.
double RoundHalfEven(double value, int decimals);
// Half to even into a 32-bit integer; beyond its range raises 6 (overflow).
qint32 RoundToInt32(double value);

// True for month-first date texts "M/d/yyyy" and "mm/dd/yyyy" naming a real
// day (blanks around allowed; "13/45/2024", "02/30/2024", "1/2/24" and the
// empty mask "__/__/____" are refused), and for date values.
bool IsDate(const QVariant& value);
// The date of a month-first text or a date value; invalid QDate when it is none.
QDate ToDate(const QVariant& value);

// "mm/dd/yyyy": two-digit month and day, four-digit year ("" for an invalid date).
QString FormatMonthDayYear(const QDate& date);
// The system's long date form.
QString FormatLongDate(const QDate& date);

// True for numbers, and for texts that read as a number in the system locale
// (group separators and blanks around it allowed; "", null, dates, "inf" and
// numbers beyond the range of a double are not numeric).
bool IsNumeric(const QVariant& value);
// The number of a numeric value or text (0 when it is none); True is -1.
double ToDouble(const QVariant& value);

// The number with the given decimals (negative counts as 0), a leading zero, a
// minus sign (never parentheses) and digit grouping with the locale's
// separator, even where the locale would omit it: 1234.5 -> "1,234.50" and
// -0.5 -> "-0.50" in en_US. Halves round away from zero, as
// number formats always have (unlike Round): 0.5 -> "1", 2.5 -> "3",
// 2.675 -> "2.68" at two places. A result of zero has no minus sign.
QString FormatNumber(double value, int decimals);

// The number as FormatNumber rounds it (the given decimals, halves away from
// zero, no minus sign on zero), written for other programs rather than for
// people: a point, a "-" and no digit grouping, whatever the locale:
// 1234.5 -> "1234.50", -0.5 -> "-0.50" at two places.
QString FormatPlainNumber(double value, int decimals);

// The general text of a number: the shortest form with up to 15 significant
// digits, as a classic BASIC prints a double: 0.1 + 0.2 -> "0.3",
// 1e-7 -> "1E-07", 123456789012345678 -> "1.23456789012346E+17". The exponent
// form is used when the decimal exponent is below -4 or 15 and above; the
// decimal point is the locale's.
QString GeneralNumberText(double value);

// A value turned into text the null-safe way (value & ""): null gives "",
// a date "mm/dd/yyyy" (a date and time adds " HH:mm:ss" unless it is
// midnight), a double its general text (a float's with 7 digits), a boolean
// "True" or "False", anything else its plain text.
QString TextOf(const QVariant& value);
